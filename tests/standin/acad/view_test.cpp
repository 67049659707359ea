#include <cmath>

#include "acedads.h"
#include "acgs.h"
#include "host_test.h"

namespace {

class ViewTest : public HostTest {
protected:
  ViewTest() { mDescriptor.addRequirement(AcGsKernelDescriptor::k3DDrawing); }

  AcGsView* obtain() const { return acgsObtainAcGsView(host::variable("cvport"), mDescriptor); }
  static void move(int number, const AcGeMatrix3d& m) {
    AcDbObjectPointer<AcDbEntity>(host::entityId(number), AcDb::kForWrite)->transformBy(m);
  }

  AcGsKernelDescriptor mDescriptor;
};

TEST_F(ViewTest, LivesInMemoryUntilStored) {
  EXPECT_EQ(acgsObtainAcGsView(2, AcGsKernelDescriptor()), nullptr);
  obtain()->setView({1, 2, 3}, {4, 5, 6}, {0, 0, 1}, 8, 4, AcGsView::kPerspective);
  obtain()->zoom(2);
  AcGsView* const viewP = obtain();
  EXPECT_EQ(viewP->fieldWidth(), 4);
  host::setViewValid(false);
  EXPECT_FALSE(acgsSetViewParameters(2, viewP, true, true, false));
  EXPECT_EQ(host::storedView().position.z, 100);
  host::setViewValid(true);
  EXPECT_TRUE(acgsSetViewParameters(2, viewP, true, true, false));
  EXPECT_EQ(host::storedView().position.x, 1);
  EXPECT_TRUE(host::storedView().perspective);
}

TEST_F(ViewTest, CountsNaN) {
  obtain()->setView({1, 2, 3}, {4, 5, 6}, {0, 0, 1}, 8, 4);
  EXPECT_EQ(host::viewCounts().nonFiniteCalls, 0);
  obtain()->setView({1, 2, 3}, {4, 5, 6}, {0, 0, std::nan("")}, 8, 4);
  EXPECT_TRUE(std::isnan(host::view().up.z));
  obtain()->zoom(0);
  addPoint(0, 0, 0);
  move(1, AcGeMatrix3d::translation({std::nan(""), 0, 0}));
  host::setLayout(true);
  AcDbObjectPointer<AcDbViewport> viewport(acedActiveViewportId(), AcDb::kForWrite);
  EXPECT_EQ(viewport->setViewHeight(std::nan("")), Acad::eInvalidInput);
  EXPECT_EQ(viewport->setViewCenter({0, std::nan("")}), Acad::eInvalidInput);
  EXPECT_EQ(host::viewCounts().nonFiniteCalls, 5);
}

TEST_F(ViewTest, FramesTellWhatMoved) {
  for (int i = 0; i < 3; ++i)
    addPoint(i, 0, 0);
  const AcGeMatrix3d turn = AcGeMatrix3d::rotation(1, AcGeVector3d::kZAxis);
  const AcGeMatrix3d shift = AcGeMatrix3d::translation({1, 2, 3});
  move(1, turn); // nobody looks yet
  std::vector<host::Frame> frames;
  host::setFrameSink([&frames](const host::Frame& frame) { frames.push_back(frame); });
  move(3, turn);
  move(1, shift);
  move(3, shift);
  obtain()->update();
  obtain()->update();
  ASSERT_EQ(frames.size(), 2u);
  ASSERT_EQ(frames[0].moved.size(), 2u);
  EXPECT_EQ(frames[0].moved[0].entity, 1);
  EXPECT_TRUE(frames[0].moved[0].transform == shift);
  EXPECT_EQ(frames[0].moved[1].entity, 3);
  EXPECT_TRUE(frames[0].moved[1].transform == shift * turn);
  EXPECT_TRUE(frames[1].moved.empty());
}

} // namespace
