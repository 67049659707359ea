// The pump: what comes between the passes of a tick. The model's random sequences cover everything else.

#include "call_log.h"
#include "engine_rig.h"

using Lines = std::vector<std::string>;

namespace {

using Pump = EngineTest;

TEST_F(Pump, ServesKeysAndSamplesBetweenPasses) {
  plugin().mScrollTreeAndList = false; // something may be under the pointer
  proxy().mMenuEntries = {"A"};
  proxy().mMaxContMoveTime = 0xFFFFFFFF; // milliseconds; below zero if it were signed
  std::vector<double> places;
  host::setFrameSink([&](const host::Frame& frame) {
    places.push_back(frame.view.position.x);
    if (places.size() == 2)
      plugin().mPendingKey = 0;
    if (places.size() == 3) {
      EXPECT_EQ(host::runQueue(), 2) << "the cancel and the macro";
      setSample(-2000, 0, 0);
    }
    if (places.size() == 5)
      setSample(0, 0, 0);
  });
  setSample(1000, 0, 0); // acts until the next sample
  proxy().doTransform();
  host::setFrameSink(nullptr);
  EXPECT_EQ(places, (std::vector<double>{-5, -10, -15, -5, 5}));
  const Lines records = takeRecords();
  EXPECT_EQ(std::count(records.begin(), records.end(), "INF Cap moving."), 1);
  EXPECT_EQ(records.back(), "TRC Cap released.");
  EXPECT_FALSE(proxy().mCapIsMoving);
}

TEST_F(Pump, TickNeedsAnEngine) {
  AutoCadProxy* const engineP = gAutoCadProxyP;
  ASSERT_EQ(engineP, &proxy());
  {
    auto olderP = std::make_unique<AutoCadProxy>(&plugin());
    const AutoCadProxy newer(&plugin());
    olderP.reset(); // doesn't clear the pointer to the newer one
    EXPECT_EQ(gAutoCadProxyP, &newer);
  }
  call_log::startRecording();
  TimerProc(nullptr, 0, 0, 0);
  gAutoCadProxyP = engineP;
  EXPECT_EQ(call_log::stopRecording(), Lines{});
}

} // namespace
