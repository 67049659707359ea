// The pump: what comes between the passes of a tick, ticks on the timer, and what a failure of the host
// costs. The model's random sequences hold everything else.

#include "call_log.h"
#include "engine_rig.h"

#ifndef _WIN32
#include "desktop.h"
#endif

using Lines = std::vector<std::string>;

namespace {

using Pump = EngineTest;

TEST_F(Pump, ServesKeysAndSamplesBetweenPasses) {
  plugin().mScrollTreeAndList = false; // whatever is under the pointer
  proxy().mMenuEntries = {"A"};
  proxy().mMaxContMoveTime = 0xFFFFFFFF; // milliseconds; below zero if it were signed
  std::vector<double> places;
  host::setFrameSink([&](const host::Frame& frame) {
    places.push_back(frame.view.position.x);
    if (places.size() == 2)
      plugin().mPendingKey = 0;
    if (places.size() == 3) {
      EXPECT_EQ(host::queueLength(), 2) << "the cancel and the macro";
      setSample(-2000, 0, 0);
    }
    if (places.size() == 5)
      setSample(0, 0, 0);
  });
  setSample(1000, 0, 0); // a level, which acts until another one comes
  proxy().doTransform();
  host::setFrameSink(nullptr);
  EXPECT_EQ(places, (std::vector<double>{-5, -10, -15, -5, 5}));
  const Lines records = takeRecords();
  EXPECT_EQ(std::count(records.begin(), records.end(), "INF Cap moving."), 1);
  EXPECT_EQ(records.back(), "TRC Cap released.");
  EXPECT_FALSE(proxy().mCapIsMoving);
}

TEST_F(Pump, FailureSkipsItsStep) {
  plugin().mScrollTreeAndList = false;
  struct Case {
    const char* operation;
    int n; // of its calls; it throws
    Lines records;
  };
  const std::string x = "INF Move x-Direction, value: 0.05", y = "INF Move y-Direction, value: 0.05";
  const std::string z = "INF Move z-Direction, value: 0.05", turn = "DBG Rotate Axis: 0.1(0)";
  const Case cases[] = {
      {"setView", 1, {x, "ERR Error move3D()", y, z, turn}},
      {"zoom", 1, {x, y, z, "ERR Error moveXYZ()", turn}},
      {"setView", 3, {x, y, z, turn, "ERR Error rotate()"}},
      {"update", 1, {x, y, z, turn, "ERR Error handleCapIsDeflectedIn3DMode()"}},
      {"none", 1, {x, y, z, turn}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.operation);
    host::setView({});
    call_log::throwAt(c.operation, c.n);
    EXPECT_TRUE(pass(1000, 1000, 1000, 1000));
    call_log::clear();
    Lines expected = c.records;
    expected.push_back("INF Cap moving."); // in any case
    EXPECT_EQ(takeRecords(), expected);
    release();
    takeRecords();
  }
}

TEST_F(Pump, TickNeedsAnEngine) {
  AutoCadProxy* const engineP = gAutoCadProxyP;
  ASSERT_EQ(engineP, &proxy());
  gAutoCadProxyP = nullptr;
  call_log::startRecording();
  TimerProc(nullptr, 0, 0, 0);
  gAutoCadProxyP = engineP;
  EXPECT_EQ(call_log::stopRecording(), Lines{});
}

#ifndef _WIN32 // needs the manual clock

TEST_F(Pump, TicksFasterWhileTheCapMoves) {
  desktop::setTickStep(60);
  TimerProc(nullptr, 0, 0, 0);
  UINT before = 100;
  for (const auto& [sample, interval] : {std::pair<int, UINT>{0, 100}, {1, 10}, {1, 10}, {0, 100}}) {
    setSample(sample, 0, 0);
    desktop::runTimers(before);
    ASSERT_EQ(desktop::activeTimers().size(), 1u);
    EXPECT_EQ(desktop::activeTimers()[0].interval, interval);
    EXPECT_EQ(desktop::activeTimers()[0].id, proxy().mTimerId);
    before = interval;
  }
}

#endif

} // namespace
