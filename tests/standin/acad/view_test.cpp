#include <chrono>
#include <cmath>

#include "acedads.h"
#include "acgs.h"
#include "host_test.h"

namespace {

class View : public HostTest {
protected:
  View() { mDescriptor.addRequirement(AcGsKernelDescriptor::k3DDrawing); }

  void watch() {
    host::setFrameSink([this](const host::Frame& frame) { mFrames.push_back(frame); });
  }
  AcGsView* obtain() const { return acgsObtainAcGsView(host::variable("cvport"), mDescriptor); }
  static void move(int number, const AcGeMatrix3d& m) {
    const AcDbObjectPointer<AcDbEntity> entity(host::entityId(number), AcDb::kForWrite);
    ASSERT_EQ(entity.openStatus(), Acad::eOk);
    entity->transformBy(m);
  }

  AcGsKernelDescriptor mDescriptor;
  std::vector<host::Frame> mFrames;
};

TEST_F(View, LivesInMemoryUntilItIsWrittenToTheDrawing) {
  EXPECT_EQ(acgsObtainAcGsView(3, mDescriptor), nullptr);
  EXPECT_EQ(acgsObtainAcGsView(2, AcGsKernelDescriptor()), nullptr);
  AcGsView* viewP = obtain();
  ASSERT_NE(viewP, nullptr);
  viewP->setView({1, 2, 3}, {4, 5, 6}, {0, 0, 1}, 8, 4, AcGsView::kPerspective);
  viewP->zoom(2);
  viewP = obtain();
  EXPECT_EQ(viewP->target().y, 5);
  EXPECT_EQ(viewP->upVector().z, 1);
  EXPECT_EQ(viewP->fieldWidth(), 4);
  EXPECT_EQ(viewP->fieldHeight(), 2);
  EXPECT_FALSE(acgsSetViewParameters(5, viewP, true, true, false));
  EXPECT_FALSE(acgsSetViewParameters(2, nullptr, true, true, false));
  host::setViewValid(false);
  EXPECT_FALSE(viewP->isValid());
  EXPECT_FALSE(acgsSetViewParameters(2, viewP, true, true, false));
  EXPECT_EQ(host::storedView().position.z, 100);
  host::setViewValid(true);
  EXPECT_TRUE(acgsSetViewParameters(2, viewP, true, true, false));
  EXPECT_EQ(host::storedView().position.x, 1);
  EXPECT_EQ(host::storedView().fieldHeight, 2);
  EXPECT_TRUE(host::storedView().perspective);
  EXPECT_EQ(host::viewCounts().storedViews, 1);
}

TEST_F(View, AZoomEndsWhereNumbersEndAndComesBack) {
  AcGsView* const viewP = obtain();
  for (const double factor : {1.2, 0.8}) {
    for (int i = 0; i < 20000; ++i)
      viewP->zoom(factor);
    const double end = viewP->fieldWidth();
    EXPECT_TRUE(std::isfinite(end) && end > 0);
    EXPECT_NEAR(end / viewP->fieldHeight(), 4, 0.01);
    viewP->zoom(1 / factor);
    EXPECT_NEAR(viewP->fieldWidth() / end, factor, 0.01);
  }
}

TEST_F(View, KeepsAndCountsNumbersThatAreNone) {
  AcGsView* const viewP = obtain();
  viewP->setView({1, 2, 3}, {4, 5, 6}, {0, 0, 1}, 8, 4);
  EXPECT_EQ(host::viewCounts().nonFiniteCalls, 0);
  viewP->setView({1, 2, 3}, {4, 5, 6}, {0, 0, std::nan("")}, 8, 4);
  EXPECT_TRUE(std::isnan(host::view().up.z));
  viewP->zoom(0);
  EXPECT_EQ(host::viewCounts().nonFiniteCalls, 2);
}

TEST_F(View, FramesTellWhatMovedSinceTheOneBefore) {
  for (int i = 0; i < 3; ++i)
    addPoint(i, 0, 0);
  host::setRefusesTransform(host::entityId(2));
  const AcGeMatrix3d turn = AcGeMatrix3d::rotation(1, AcGeVector3d::kZAxis);
  const AcGeMatrix3d shift = AcGeMatrix3d::translation({1, 2, 3});
  move(1, turn); // nobody looks yet
  watch();
  move(3, turn);
  move(2, shift);
  move(1, shift);
  move(3, shift);
  obtain()->update();
  obtain()->update();
  move(3, turn);
  obtain()->update();
  ASSERT_EQ(mFrames.size(), 3u);
  EXPECT_EQ(mFrames[0].view.position.z, 100);
  ASSERT_EQ(mFrames[0].moved.size(), 2u);
  EXPECT_EQ(mFrames[0].moved[0].entity, 3);
  EXPECT_TRUE(mFrames[0].moved[0].transform == shift * turn);
  EXPECT_EQ(mFrames[0].moved[1].entity, 1);
  EXPECT_TRUE(mFrames[0].moved[1].transform == shift);
  EXPECT_TRUE(mFrames[1].moved.empty());
  ASSERT_EQ(mFrames[2].moved.size(), 1u);
  EXPECT_TRUE(mFrames[2].moved[0].transform == turn);
  EXPECT_EQ(host::viewCounts().updates, 3);
}

TEST_F(View, ALayoutShowsItselfAndRedrawnEntitiesWaitForTheLoop) {
  addPoint(0, 0, 0);
  host::setLayout(true);
  watch();
  AcDbObjectPointer<AcDbViewport> viewport(acedActiveViewportId(), AcDb::kForWrite);
  viewport->setViewHeight(80);
  viewport->updateDisplay();
  viewport.close();
  ASSERT_EQ(mFrames.size(), 1u);
  EXPECT_TRUE(mFrames[0].is2d);
  EXPECT_EQ(mFrames[0].layout.viewHeight, 80);
  move(1, AcGeMatrix3d::translation({1, 0, 0}));
  host::showPending();
  host::selectAll();
  ads_name ss, name;
  ASSERT_EQ(acedSSGet(L"I", nullptr, nullptr, nullptr, ss), RTNORM);
  acedSSName(ss, 0, name);
  EXPECT_EQ(acedRedraw(name, 1), RTNORM);
  EXPECT_EQ(mFrames.size(), 1u);
  host::showPending();
  host::showPending();
  ASSERT_EQ(mFrames.size(), 2u);
  EXPECT_EQ(mFrames[1].moved.size(), 1u);
}

TEST_F(View, ADisplayLimitsTheFrames) {
  using Clock = std::chrono::steady_clock;
  constexpr double kHz = 100;
  host::setRefreshRate(kHz);
  obtain()->update();
  const auto start = Clock::now();
  for (int i = 0; i < 5; ++i)
    obtain()->update();
  // Each of them had to wait for a refresh of its own. The first may have come early within its period.
  EXPECT_GE(std::chrono::duration<double>(Clock::now() - start).count(), 4 / kHz);
}

} // namespace
