#include "acedads.h"
#include "host_test.h"

namespace {

class ObjectsTest : public HostTest {
protected:
  const AcDbObjectId mLine = addLine({0, 0, 0}, {1, 0, 0});
};

TEST_F(ObjectsTest, ManyReadersOrOneWriter) {
  AcDbEntity *first = nullptr, *second = nullptr, *writer = nullptr;
  ASSERT_EQ(acdbOpenObject(first, mLine), Acad::eOk);
  ASSERT_EQ(acdbOpenObject(second, mLine, AcDb::kForRead), Acad::eOk);
  EXPECT_EQ(acdbOpenObject(writer, mLine, AcDb::kForWrite), Acad::eWasOpenForRead);
  EXPECT_EQ(first->transformBy(AcGeMatrix3d::translation({1, 0, 0})), Acad::eNotOpenForWrite);
  first->close();
  second->close();
  ASSERT_EQ(acdbOpenObject(writer, mLine, AcDb::kForWrite), Acad::eOk);
  EXPECT_EQ(host::held().openForWrite, 1);
  EXPECT_EQ(host::writesWithoutLock(), 1);
  EXPECT_EQ(acdbOpenObject(first, mLine), Acad::eWasOpenForWrite);
  EXPECT_EQ(writer->close(), Acad::eOk);
  EXPECT_EQ(writer->close(), Acad::eNotOpen);
  EXPECT_EQ(host::held().openForRead + host::held().openForWrite, 0);
}

TEST_F(ObjectsTest, OpensOnlyWhatFits) {
  AcDbCircle* circleP = nullptr;
  AcDbLine* lineP = nullptr;
  EXPECT_EQ(acdbOpenObject(circleP, mLine), Acad::eNotThatKindOfClass);
  host::reset();
  addLine({0, 0, 0}, {1, 0, 0});
  EXPECT_EQ(acdbOpenObject(lineP, mLine), Acad::eUnknownObjectId) << "same place, another drawing";
}

TEST_F(ObjectsTest, SelectionSetsAreFreedOnce) {
  ads_name first, second, entity;
  const auto get = [](ads_name ss) { return acedSSGet(L"I", nullptr, nullptr, nullptr, ss); };
  EXPECT_EQ(get(first), RTERROR); // nothing is selected
  addPoint(1, 0, 0);
  host::selectNumbers({2, 1, 99});
  ASSERT_EQ(get(first), RTNORM);
  host::selectNumbers({1}); // the set stays what it was
  Adesk::Int32 length = 0;
  EXPECT_EQ(acedSSLength(first, &length), RTNORM);
  EXPECT_EQ(length, 2);
  AcDbObjectId id;
  ASSERT_EQ(acedSSName(first, 1, entity), RTNORM);
  EXPECT_EQ(acdbGetObjectId(id, entity), Acad::eOk);
  EXPECT_EQ(id, mLine);
  EXPECT_EQ(acdbGetObjectId(id, first), Acad::eUnknownObjectId) << "a set is no entity";
  EXPECT_EQ(acedSSFree(first), RTNORM);
  ASSERT_EQ(get(second), RTNORM);
  EXPECT_EQ(acedSSFree(first), RTERROR);
  EXPECT_EQ(host::held().selectionSets, 1);
}

} // namespace
