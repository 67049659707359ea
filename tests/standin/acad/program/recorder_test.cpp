#include "recorder.h"

#include "acgs.h"
#include "host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {

class NoControls : public program::Controls {
public:
  const std::vector<program::ControlInfo>& infos() const override { return mInfos; }
  std::vector<program::ScrollState> states() const override { return {}; }
  void point(session::Pointer) override {}

  std::vector<program::ControlInfo> mInfos;
};

class RecorderTest : public testing::Test {
protected:
  RecorderTest() {
    host::reset();
    host::add(std::make_unique<AcDbPoint>(AcGePoint3d(10, 0, 0)));
    mRecorderP = std::make_unique<program::Recorder>(mControls);
    mDescriptor.addRequirement(AcGsKernelDescriptor::k3DDrawing);
  }

  NoControls mControls;
  std::unique_ptr<program::Recorder> mRecorderP;
  AcGsKernelDescriptor mDescriptor;
};

// Frames that come faster than anyone could see are joined, but no motion is lost.
TEST_F(RecorderTest, DenseFramesKeepTheWholeMotion) {
  for (int i = 0; i < 5000; ++i) {
    AcDbObjectPointer<AcDbEntity>(host::entityId(1), AcDb::kForWrite)
        ->transformBy(AcGeMatrix3d::translation({1, 0, 0}));
    acgsObtainAcGsView(2, mDescriptor)->update();
  }
  AcGeMatrix3d all;
  for (const program::RecordedFrame& frame : mRecorderP->frames())
    for (const program::MovedGroup& group : frame.mMoved)
      all = group.mTransform * all;
  EXPECT_NEAR(all.translation().x, 5000, 1e-9);
  EXPECT_EQ(mRecorderP->shownFrames(), 5000);
  EXPECT_LT(mRecorderP->frames().size(), 2000u);
}

// The plug-in's time is what passes in its hands, not what the display takes.
TEST_F(RecorderTest, PlugInTimeExcludesDisplayWait) {
  AcGsView* const view = acgsObtainAcGsView(2, mDescriptor);
  host::setRefreshRate(1); // Hz
  mRecorderP->handOver();
  view->update();
  view->update();
  mRecorderP->handOver();
  std::this_thread::sleep_for(std::chrono::milliseconds(600));
  view->update();
  const std::vector<double>& times = mRecorderP->plugInTimes();
  ASSERT_EQ(times.size(), 3u);
  EXPECT_LT(times[1], 0.9);
  EXPECT_GE(times[2], 0.6);
}

} // namespace
