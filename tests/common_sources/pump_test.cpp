// The pump: what one pass does with keys and cap, how passes follow each other in a tick, and ticks each
// other.

#include <algorithm>
#include <limits>

#include "call_log.h"
#include "engine_rig.h"

#ifndef _WIN32
#include "desktop.h"
#endif

using Lines = std::vector<std::string>;

namespace {

constexpr int kViewTopCode = 0x2000B;

constexpr std::uint32_t kEndless = 0xFFFFFFFF; // milliseconds; below zero if it were signed

class Pump : public EngineTest {
protected:
  void SetUp() override {
    EngineTest::SetUp();
    plugin().mScrollTreeAndList = false; // whatever lies under the pointer
    mTimeBox = proxy().mMaxContMoveTime;
  }
  void TearDown() override {
    proxy().mMaxContMoveTime = mTimeBox;
    proxy().mUseInt3dIntrfce = false;
    EngineTest::TearDown();
  }

  /// The calls of an action that tell the order of things: what is typed, and which variable is read first.
  template <class Action> Lines milestones(const Action& action) {
    call_log::startRecording();
    action();
    Lines found;
    for (const std::string& call : call_log::stopRecording()) {
      if (call.compare(0, 4, "send") == 0 || call == "acedGetVar tilemode" || call == "update")
        found.push_back(call);
    }
    return found;
  }

  std::uint32_t mTimeBox = 0;
};

TEST_F(Pump, RotationCodesAreThreeDigits) {
  struct Case {
    std::int32_t code;
    int rotMode;
    bool keepHorizon, hover;
  };
  // Digits that name no mode, and more of them than three. The traces hold the codes that devices send.
  for (const Case& c : {Case{5, 0, false, false}, Case{93, 3, true, false}, Case{119, 0, true, true},
                        Case{1203, 3, false, true}, Case{-1, 0, false, false},
                        Case{std::numeric_limits<std::int32_t>::min(), 0, false, false}}) {
    proxy().setRotMode(c.keepHorizon ? 2 : 112); // everything the other way round
    proxy().setRotMode(c.code);
    EXPECT_EQ(proxy().mRotMode, c.rotMode) << c.code;
    EXPECT_EQ(proxy().mKeepHorizon, c.keepHorizon) << c.code;
    EXPECT_EQ(proxy().mHoverMode, c.hover) << c.code;
  }
}

TEST_F(Pump, ModeNamesComeFromTheMenuFilesTable) {
  EXPECT_EQ(plugin().getModeName(), "Unknown");
  proxy().mModes = {"Start", "Layout"};
  proxy().mViewMode = 1;
  EXPECT_EQ(plugin().getModeName(), "Unknown"); // the file isn't loaded
  proxy().mMenuIsLoaded = true;
  for (const auto& [mode, name] :
       std::vector<std::pair<int, const char*>>{{1, "Layout"}, {2, "Unknown"}, {-1, "Unknown"}}) {
    proxy().mViewMode = mode;
    EXPECT_EQ(plugin().getModeName(), name);
  }
}

TEST_F(Pump, WithNothingToBeHadFromTheHostTheModeStays) {
  for (const bool isLayout : {true, false}) {
    host::setLayout(isLayout);
    const std::int32_t mode = proxy().retrieveMode();
    host::setLayout(!isLayout);
    call_log::failAt("acedGetVar", 1, 2);
    EXPECT_EQ(proxy().retrieveMode(), mode);
    call_log::clear();
  }
}

TEST_F(Pump, SlotsBelowZeroAreEmptyAndTheHostsOwnInterfaceEndsTheTick) {
  plugin().mPendingKey = -2;
  plugin().mPendingSpecial = -5;
  proxy().mMaxContMoveTime = kEndless;
  proxy().mUseInt3dIntrfce = true;
  setSample(1000, 0, 0);
  EXPECT_EQ(milestones([this] { proxy().doTransform(); }), Lines{});
  EXPECT_EQ(plugin().mPendingKey, -2);
  EXPECT_EQ(plugin().mPendingSpecial, -5);
  EXPECT_FALSE(proxy().mCapIsMoving);
}

TEST_F(Pump, KeysAndNewSamplesAreServedInTheMiddleOfAMovement) {
  proxy().mMenuEntries = {"A"};
  proxy().mMaxContMoveTime = kEndless;
  std::vector<double> places;
  host::setFrameSink([&](const host::Frame& frame) {
    places.push_back(frame.view.position.x);
    if (places.size() == 2)
      plugin().mPendingKey = 0;
    if (places.size() == 3)
      setSample(-2000, 0, 0);
    if (places.size() == 5)
      setSample(0, 0, 0);
  });
  setSample(1000, 0, 0); // a level, which acts until another one comes
  const Lines seen = milestones([this] { proxy().doTransform(); });
  EXPECT_EQ(places, (std::vector<double>{-5, -10, -15, -5, 5}));
  EXPECT_EQ((Lines{seen.begin() + 3, seen.begin() + 7}),
            (Lines{"update", "sendStringToExecute \"\\e\\e\" 1 0 1", "sendStringToExecute \"A\\n\" 1 0 1",
                   "acedGetVar tilemode"}));
  const Lines records = takeRecords();
  EXPECT_EQ(std::count(records.begin(), records.end(), "INF Cap moving."), 1);
  EXPECT_EQ(records.back(), "TRC Cap released.");
  EXPECT_FALSE(proxy().mCapIsMoving);
}

TEST_F(Pump, KeyWhoseActionThrowsIsTriedAgain) {
  proxy().mMenuEntries = {"A;B"};
  plugin().mPendingKey = 0;
  plugin().mPendingSpecial = kViewTopCode;
  call_log::throwAt("sendStringToExecute", 2);
  EXPECT_EQ(milestones([this] { proxy().handleDeviceKeys(); }),
            (Lines{"sendStringToExecute \"\\e\\e\" 1 0 1", "sendStringToExecute \"A\\n\" 1 0 1"}));
  EXPECT_EQ(takeRecords(), Lines{"ERR Error handleDeviceKeys()"});
  EXPECT_EQ(plugin().mPendingKey, 0);
  EXPECT_EQ(plugin().mPendingSpecial, kViewTopCode) << "not looked at in that pass";
  // Again from its first token; this time the view's key throws.
  call_log::throwAt("sendStringToExecute", 4);
  EXPECT_EQ(milestones([this] { proxy().handleDeviceKeys(); }).size(), 4u);
  EXPECT_EQ(plugin().mPendingKey, -1);
  EXPECT_EQ(plugin().mPendingSpecial, kViewTopCode);
  call_log::clear();
  EXPECT_EQ(milestones([this] { proxy().handleDeviceKeys(); }),
            Lines{"sendStringToExecute \"'_-VIEW _TOP \" 0 0 1"});
  EXPECT_EQ(plugin().mPendingSpecial, 0);
  EXPECT_EQ(takeRecords(), Lines{"ERR Error handleDeviceKeys()"});
}

TEST_F(Pump, PassThatThrowsDoesNotEndTheTick) {
  proxy().mMaxContMoveTime = kEndless;
  call_log::throwAt("acedGetVar", 1, 2);
  EXPECT_EQ(milestones([this] { proxy().doTransform(); }),
            (Lines{"acedGetVar tilemode", "acedGetVar tilemode", "acedGetVar tilemode"}));
  EXPECT_EQ(takeRecords(), (Lines{"ERR Error doTransform()", "ERR Error doTransform()"}));
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

#ifndef _WIN32 // the clock in hand

TEST_F(Pump, TickLastsForTheTimeBoxAndNoLonger) {
  ASSERT_EQ(proxy().mMaxContMoveTime, 500u);
  // The clock moves by a millisecond with each look at it, and each pass looks once.
  for (const DWORD start : {DWORD{1000}, DWORD{0xFFFFFFF0}, DWORD{0x7FFFFFF0}}) {
    SCOPED_TRACE(start);
    desktop::setTickCount(start); // wraps on the way
    const auto before = host::viewCounts().updates;
    setSample(1, 0, 0);
    proxy().doTransform();
    EXPECT_EQ(host::viewCounts().updates - before, 500);
    EXPECT_TRUE(proxy().mCapIsMoving) << "no time ends a movement";
    release();
  }
  // A pass that has begun is completed: the time is taken before it, and looked at behind it.
  desktop::setTickStep(499);
  setSample(1, 0, 0);
  const auto before = host::viewCounts().updates;
  proxy().doTransform();
  EXPECT_EQ(host::viewCounts().updates - before, 2);
  release();
}

TEST_F(Pump, TicksAreFastWhileTheCapMoves) {
  desktop::setTickStep(60);
  TimerProc(nullptr, 0, 0, 0);
  const auto intervals = [] {
    std::vector<UINT> found;
    for (const desktop::TimerRecord& timer : desktop::activeTimers())
      found.push_back(timer.interval);
    return found;
  };
  EXPECT_EQ(intervals(), std::vector<UINT>{100});
  EXPECT_EQ(proxy().mTimerId, desktop::activeTimers()[0].id);
  setSample(1, 0, 0);
  desktop::runTimers(100);
  EXPECT_EQ(intervals(), std::vector<UINT>{10}) << "one timer at a time";
  desktop::runTimers(10);
  EXPECT_EQ(intervals(), std::vector<UINT>{10});
  setSample(0, 0, 0);
  desktop::runTimers(10);
  EXPECT_EQ(intervals(), std::vector<UINT>{100});

  desktop::setTickStep(0);
  const auto ticks = [this](DWORD milliseconds) {
    return milestones([milliseconds] { desktop::runTimers(milliseconds); }).size();
  };
  EXPECT_EQ(ticks(1000), 10u);
}

TEST_F(Pump, TickArmsNoTimerOnceThePumpIsToStop) {
  proxy().mIsPumpRunning = false;
  EXPECT_EQ(milestones([] { TimerProc(nullptr, 0, 0, 0); }), Lines{"acedGetVar tilemode"})
      << "still worked off";
  proxy().mIsPumpRunning = true;
  EXPECT_TRUE(desktop::activeTimers().empty());
}

TEST_F(Pump, ThrowInTheTickItselfStopsThePump) {
  for (const char* const operation : {"KillTimer", "SetTimer"}) {
    TimerProc(nullptr, 0, 0, 0);
    ASSERT_EQ(desktop::activeTimers().size(), 1u);
    takeRecords();
    call_log::throwAt(operation, 1);
    desktop::runTimers(100);
    call_log::clear();
    EXPECT_EQ(takeRecords(), Lines{"ERR Error TimerProc()"});
  }
  EXPECT_TRUE(desktop::activeTimers().empty());
}

#endif

} // namespace
