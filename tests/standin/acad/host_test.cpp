// The counts that tests of the plug-in rely on.

#include <cmath>

#include "acedads.h"
#include "acgs.h"
#include "host_test.h"

namespace {

TEST_F(HostTest, CountsOpenObjects) {
  const AcDbObjectId line = addLine({0, 0, 0}, {1, 0, 0});
  AcDbEntity *first = nullptr, *second = nullptr, *writer = nullptr;
  ASSERT_EQ(acdbOpenObject(first, line), Acad::eOk);
  ASSERT_EQ(acdbOpenObject(second, line, AcDb::kForRead), Acad::eOk);
  EXPECT_EQ(acdbOpenObject(writer, line, AcDb::kForWrite), Acad::eWasOpenForRead);
  EXPECT_EQ(first->transformBy(AcGeMatrix3d::translation({1, 0, 0})), Acad::eNotOpenForWrite);
  EXPECT_EQ(host::held().openForRead, 2);
  first->close();
  second->close();
  ASSERT_EQ(acdbOpenObject(writer, line, AcDb::kForWrite), Acad::eOk);
  EXPECT_EQ(host::held().openForWrite, 1);
  EXPECT_EQ(acdbOpenObject(first, line), Acad::eWasOpenForWrite);
  EXPECT_EQ(writer->close(), Acad::eOk);
  EXPECT_EQ(writer->close(), Acad::eNotOpen);
  EXPECT_EQ(host::held().openForRead + host::held().openForWrite, 0);
}

TEST_F(HostTest, CountsSelectionSets) {
  const AcDbObjectId line = addLine({0, 0, 0}, {1, 0, 0});
  ads_name first, second, entity;
  const auto get = [](ads_name ss) { return acedSSGet(L"I", nullptr, nullptr, nullptr, ss); };
  EXPECT_EQ(get(first), RTERROR); // nothing is selected
  host::selectNumbers({1, 99});
  ASSERT_EQ(get(first), RTNORM);
  host::selectNumbers({}); // the set stays what it was
  ASSERT_EQ(acedSSName(first, 0, entity), RTNORM);
  EXPECT_EQ(AcDbObjectId(entity[0]), line);
  EXPECT_EQ(acedSSFree(first), RTNORM);
  EXPECT_EQ(acedSSFree(first), RTERROR) << "freed twice";
  host::selectNumbers({1});
  ASSERT_EQ(get(second), RTNORM);
  EXPECT_EQ(host::held().selectionSets, 1);
}

TEST_F(HostTest, CountsNaN) {
  AcGsKernelDescriptor descriptor;
  descriptor.addRequirement(AcGsKernelDescriptor::k3DDrawing);
  AcGsView* const viewP = acgsObtainAcGsView(host::variable("cvport"), descriptor);
  viewP->setView({1, 2, 3}, {4, 5, 6}, {0, 0, 1}, 8, 4);
  EXPECT_EQ(host::nonFiniteCalls(), 0);
  viewP->setView({1, 2, 3}, {4, 5, 6}, {0, 0, std::nan("")}, 8, 4);
  viewP->zoom(0);
  addPoint(0, 0, 0);
  AcDbObjectPointer<AcDbEntity>(host::entity(1)->objectId(), AcDb::kForWrite)
      ->transformBy(AcGeMatrix3d::translation({std::nan(""), 0, 0}));
  host::setLayout(true);
  AcDbObjectPointer<AcDbViewport> viewport(acedActiveViewportId(), AcDb::kForWrite);
  EXPECT_EQ(viewport->setViewHeight(std::nan("")), Acad::eInvalidInput);
  EXPECT_EQ(viewport->setViewCenter({0, std::nan("")}), Acad::eInvalidInput);
  EXPECT_EQ(host::nonFiniteCalls(), 5);
}

} // namespace
