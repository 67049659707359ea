#include <cmath>
#include <limits>

#include "acdocman.h"
#include "acedads.h"
#include "host_test.h"

namespace {

class Objects : public HostTest {
protected:
  const AcDbObjectId mLine = addLine({0, 0, 0}, {1, 0, 0});
};

TEST_F(Objects, ManyMayReadButOneMayWrite) {
  AcDbEntity* first = nullptr;
  AcDbEntity* second = nullptr;
  AcDbEntity* writer = nullptr;
  ASSERT_EQ(acdbOpenObject(first, mLine), Acad::eOk);
  ASSERT_EQ(acdbOpenObject(second, mLine, AcDb::kForRead), Acad::eOk);
  EXPECT_EQ(acdbOpenObject(writer, mLine, AcDb::kForWrite), Acad::eWasOpenForRead);
  EXPECT_EQ(host::held().openForRead, 2);
  first->close();
  second->close();
  ASSERT_EQ(acdbOpenObject(writer, mLine, AcDb::kForWrite), Acad::eOk);
  EXPECT_EQ(host::held().openForWrite, 1);
  for (const AcDb::OpenMode mode : {AcDb::kForRead, AcDb::kForWrite})
    EXPECT_EQ(acdbOpenObject(first, mLine, mode), Acad::eWasOpenForWrite);
  EXPECT_EQ(first, nullptr);
  EXPECT_EQ(writer->close(), Acad::eOk);
  EXPECT_EQ(writer->close(), Acad::eNotOpen);
  EXPECT_EQ(host::held().openForRead + host::held().openForWrite, 0);
}

TEST_F(Objects, OpensOnlyWhatIsOfTheClassAndInThisDrawing) {
  const AcDbObjectId circle =
      host::add(std::make_unique<AcDbCircle>(AcGePoint3d(5, 0, 0), AcGeVector3d::kZAxis, 1));
  AcDbLine* lineP = nullptr;
  ASSERT_EQ(acdbOpenObject(lineP, mLine), Acad::eOk);
  EXPECT_EQ(lineP->endPoint().x, 1);
  lineP->close();
  EXPECT_EQ(acdbOpenObject(lineP, circle), Acad::eNotThatKindOfClass);
  EXPECT_EQ(lineP, nullptr);
  EXPECT_EQ(acdbOpenObject(lineP, AcDbObjectId::kNull), Acad::eNullObjectId);
  EXPECT_EQ(acdbOpenObject(lineP, AcDbObjectId(12345678)), Acad::eUnknownObjectId);
  host::setCannotBeOpened(mLine);
  EXPECT_EQ(acdbOpenObject(lineP, mLine), Acad::eCannotBeOpened);
  host::reset();
  addLine({0, 0, 0}, {1, 0, 0});
  EXPECT_EQ(acdbOpenObject(lineP, mLine), Acad::eUnknownObjectId); // same place, another drawing
  EXPECT_EQ(host::held().openForRead, 0);
}

TEST_F(Objects, WorkNeedsTheRightOpeningAndMarkedObjectsRefuse) {
  AcDbEntity* entityP = nullptr;
  const AcGeMatrix3d shift = AcGeMatrix3d::translation({1, 0, 0});
  ASSERT_EQ(acdbOpenObject(entityP, mLine), Acad::eOk);
  EXPECT_EQ(entityP->transformBy(shift), Acad::eNotOpenForWrite);
  entityP->close();
  AcDbExtents box({1, 2, 3}, {4, 5, 6});
  EXPECT_EQ(entityP->getGeomExtents(box), Acad::eNotOpen);
  host::setHasNoExtents(mLine);
  host::setRefusesTransform(mLine);
  ASSERT_EQ(acdbOpenObject(entityP, mLine, AcDb::kForWrite), Acad::eOk);
  EXPECT_EQ(host::writesWithoutLock(), 1);
  EXPECT_EQ(entityP->getGeomExtents(box), Acad::eInvalidExtents);
  EXPECT_EQ(box.minPoint().y, 2);
  EXPECT_EQ(entityP->transformBy(shift), Acad::eOnLockedLayer);
  EXPECT_EQ(host::extents().minPoint().x, 0);
  entityP->close();
  AcApDocument* const documentP = acDocManagerPtr()->curDocument();
  ASSERT_EQ(acDocManagerPtr()->lockDocument(documentP, AcAp::kWrite, nullptr, nullptr, true), Acad::eOk);
  AcDbObjectPointer<AcDbLine>(mLine, AcDb::kForWrite).close();
  EXPECT_EQ(host::writesWithoutLock(), 1);
  EXPECT_EQ(acDocManagerPtr()->unlockDocument(documentP), Acad::eOk);
  EXPECT_EQ(acDocManagerPtr()->unlockDocument(documentP), Acad::eNotLocked);
}

TEST_F(Objects, SystemVariablesCompareWithoutCase) {
  resbuf value{};
  value.resval.rint = 99;
  for (const wchar_t* const name : {L"nosuch", L"tilemod", L"tilemodes"})
    EXPECT_EQ(acedGetVar(name, &value), RTERROR);
  EXPECT_EQ(value.resval.rint, 99);
  host::setVariable("CvPort", 7);
  EXPECT_EQ(acedGetVar(L"cvport", &value), RTNORM);
  EXPECT_EQ(value.resval.rint, 7);
}

TEST_F(Objects, TheLayoutsViewportTakesOnlyWhatItCanShow) {
  EXPECT_TRUE(acedActiveViewportId().isNull()); // the model tab has no such viewport
  host::setLayout(true);
  AcDbViewport* viewportP = nullptr;
  ASSERT_EQ(acdbOpenObject(viewportP, acedActiveViewportId(), AcDb::kForRead), Acad::eOk);
  EXPECT_EQ(viewportP->setViewCenter({1, 1}), Acad::eNotOpenForWrite);
  EXPECT_EQ(viewportP->setViewHeight(1), Acad::eNotOpenForWrite);
  viewportP->close();
  ASSERT_EQ(acdbOpenObject(viewportP, acedActiveViewportId(), AcDb::kForWrite), Acad::eOk);
  EXPECT_EQ(viewportP->setViewHeight(0), Acad::eInvalidInput);
  EXPECT_EQ(host::viewCounts().nonFiniteCalls, 0);
  EXPECT_EQ(viewportP->setViewHeight(std::nan("")), Acad::eInvalidInput);
  EXPECT_EQ(viewportP->setViewCenter({0, std::numeric_limits<double>::infinity()}), Acad::eInvalidInput);
  EXPECT_EQ(host::viewCounts().nonFiniteCalls, 2);
  EXPECT_EQ(viewportP->setViewHeight(50), Acad::eOk);
  EXPECT_EQ(viewportP->setViewCenter({3, 4}), Acad::eOk);
  viewportP->close();
  EXPECT_EQ(host::layout().viewHeight, 50);
  EXPECT_EQ(host::layout().centre.x, 3);
}

} // namespace
