#include <gtest/gtest.h>

#include <chrono>
#include <cmath>

#include "acedads.h"
#include "acgs.h"
#include "host.h"

namespace {

class View : public testing::Test {
protected:
  View() {
    host::reset();
    mDescriptor.addRequirement(AcGsKernelDescriptor::k3DDrawing);
  }
  ~View() override { host::reset(); }

  AcGsView* obtain() const { return acgsObtainAcGsView(host::variable("cvport"), mDescriptor); }
  static AcDbEntity* openForWrite(int number) {
    AcDbEntity* entityP = nullptr;
    acdbOpenObject(entityP, host::entityId(number), AcDb::kForWrite);
    return entityP;
  }
  static void move(int number, const AcGeMatrix3d& m) {
    AcDbEntity* const entityP = openForWrite(number);
    ASSERT_NE(entityP, nullptr);
    entityP->transformBy(m);
    entityP->close();
  }

  AcGsKernelDescriptor mDescriptor;
};

TEST_F(View, LivesInMemoryUntilItIsWrittenToTheDrawing) {
  EXPECT_EQ(acgsObtainAcGsView(3, mDescriptor), nullptr);
  EXPECT_EQ(acgsObtainAcGsView(2, AcGsKernelDescriptor()), nullptr);
  AcGsView* viewP = obtain();
  ASSERT_NE(viewP, nullptr);
  EXPECT_EQ(viewP->position().z, 100);
  EXPECT_EQ(viewP->fieldWidth(), 40);
  viewP->setView({1, 2, 3}, {4, 5, 6}, {0, 0, 1}, 8, 4, AcGsView::kPerspective);
  viewP->zoom(2);
  viewP = obtain();
  EXPECT_EQ(viewP->target().y, 5);
  EXPECT_EQ(viewP->upVector().z, 1);
  EXPECT_TRUE(viewP->isPerspective());
  EXPECT_EQ(viewP->fieldWidth(), 4);
  EXPECT_EQ(viewP->fieldHeight(), 2);
  EXPECT_EQ(host::storedView().position.z, 100);
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
  EXPECT_EQ(host::viewCounts().nonFiniteCalls, 0);
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
    host::add(std::make_unique<AcDbPoint>(AcGePoint3d(i, 0, 0)));
  move(1, AcGeMatrix3d::translation({9, 0, 0})); // nobody looks yet
  std::vector<host::Frame> frames;
  host::setFrameSink([&frames](const host::Frame& frame) { frames.push_back(frame); });
  host::setRefusesTransform(host::entityId(2));
  const AcGeMatrix3d turn = AcGeMatrix3d::rotation(1, AcGeVector3d::kZAxis);
  const AcGeMatrix3d shift = AcGeMatrix3d::translation({1, 2, 3});
  move(3, turn);
  move(2, shift);
  move(1, shift);
  move(3, shift);
  obtain()->update();
  obtain()->update();
  move(3, turn);
  obtain()->update();
  ASSERT_EQ(frames.size(), 3u);
  EXPECT_FALSE(frames[0].is2d);
  EXPECT_EQ(frames[0].view.position.z, 100);
  ASSERT_EQ(frames[0].moved.size(), 2u);
  EXPECT_EQ(frames[0].moved[0].entity, 3);
  EXPECT_TRUE(frames[0].moved[0].transform == shift * turn);
  EXPECT_EQ(frames[0].moved[1].entity, 1);
  EXPECT_TRUE(frames[0].moved[1].transform == shift);
  EXPECT_TRUE(frames[1].moved.empty());
  ASSERT_EQ(frames[2].moved.size(), 1u);
  EXPECT_TRUE(frames[2].moved[0].transform == turn);
  EXPECT_EQ(host::viewCounts().updates, 3);
}

TEST_F(View, ALayoutShowsItselfAndRedrawnEntitiesWaitForTheLoop) {
  host::add(std::make_unique<AcDbPoint>(AcGePoint3d(0, 0, 0)));
  host::setLayout(true);
  std::vector<host::Frame> frames;
  host::setFrameSink([&frames](const host::Frame& frame) { frames.push_back(frame); });
  {
    AcDbObjectPointer<AcDbViewport> viewport(acedActiveViewportId(), AcDb::kForWrite);
    viewport->setViewHeight(80);
    viewport->updateDisplay();
  }
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_TRUE(frames[0].is2d);
  EXPECT_EQ(frames[0].layout.viewHeight, 80);
  move(1, AcGeMatrix3d::translation({1, 0, 0}));
  host::showPending();
  EXPECT_EQ(frames.size(), 1u);
  host::selectAll();
  ads_name ss, name;
  ASSERT_EQ(acedSSGet(L"I", nullptr, nullptr, nullptr, ss), RTNORM);
  acedSSName(ss, 0, name);
  acedSSFree(ss);
  EXPECT_EQ(acedRedraw(name, 1), RTNORM);
  EXPECT_EQ(frames.size(), 1u);
  host::showPending();
  host::showPending();
  ASSERT_EQ(frames.size(), 2u);
  EXPECT_TRUE(frames[1].is2d);
  EXPECT_EQ(frames[1].moved.size(), 1u);
}

TEST_F(View, ADisplayLimitsTheFrames) {
  using Clock = std::chrono::steady_clock;
  constexpr double kHz = 100;
  host::setRefreshRate(kHz);
  AcGsView* const viewP = obtain();
  viewP->update();
  const auto start = Clock::now();
  for (int i = 0; i < 5; ++i)
    viewP->update();
  // Each of them had to wait for a refresh of its own. The first may have come early within its period.
  EXPECT_GE(std::chrono::duration<double>(Clock::now() - start).count(), 4 / kHz);
}

} // namespace
