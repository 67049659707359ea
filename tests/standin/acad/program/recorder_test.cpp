#include "recorder.h"

#include "acgs.h"
#include "host.h"

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

// The plug-in's time is the time while it has control, without the display's.
TEST(RecorderTest, PlugInTimeExcludesDisplayWait) {
  host::reset();
  NoControls controls;
  program::Recorder recorder(controls);
  AcGsKernelDescriptor descriptor;
  descriptor.addRequirement(AcGsKernelDescriptor::k3DDrawing);
  AcGsView* const view = acgsObtainAcGsView(2, descriptor);
  host::setRefreshRate(1); // Hz
  recorder.handOver();
  view->update();
  view->update();
  recorder.handOver();
  std::this_thread::sleep_for(std::chrono::milliseconds(600));
  view->update();
  const std::vector<double>& times = recorder.plugInTimes();
  ASSERT_EQ(times.size(), 3u);
  EXPECT_LT(times[1], 0.9);
  EXPECT_GE(times[2], 0.6);
}

} // namespace
