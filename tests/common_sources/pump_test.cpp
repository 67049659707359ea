// The pump: what one pass does with keys and cap, how passes follow each other in a tick, and ticks each
// other.

#include <algorithm>
#include <limits>

#include "calls.h"
#include "engine_rig.h"
#include "event_codes.h"

#ifndef _WIN32
#include "desktop.h"
#endif

using Lines = std::vector<std::string>;

namespace {

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
    calls::startRecording();
    action();
    Lines found;
    for (const std::string& call : calls::stopRecording()) {
      if (call.compare(0, 4, "send") == 0 || call == "acedGetVar tilemode" || call == "update")
        found.push_back(call);
    }
    return found;
  }

  std::uint32_t mTimeBox = 0;
};

TEST_F(Pump, DeflectionIsAnyOneAxisAboveTheThreshold) {
  struct Case {
    int threshold;
    int value;
    bool isDeflected;
  };
  const Case cases[] = {
      {0, 0, false},          {0, 1, true},          {0, -1, true},   {50, 50, false},
      {50, -50, false},       {50, 51, true},        {50, -51, true}, {32767, 32767, false},
      {32767, -32767, false}, {32767, -32768, true}, // its absolute value needs more than 16 bits
      {0x1000A, 10, false},   {0x1000A, 11, true},   // the low 16 bits count
      {0xFFFF, 0, true},                             // ... with a sign
  };
  for (const Case& c : cases) {
    for (std::size_t axis = 0; axis < 6; ++axis) {
      SCOPED_TRACE(testing::Message() << c.value << " on axis " << axis << ", threshold " << c.threshold);
      int v[6] = {};
      v[axis] = c.value;
      plugin().mMinThreshold = c.threshold;
      EXPECT_EQ(pass(v[0], v[1], v[2], v[3], v[4], v[5]), c.isDeflected);
      EXPECT_EQ(proxy().mCapIsMoving, c.isDeflected);
      plugin().mMinThreshold = 0;
      release();
    }
  }
  plugin().mMinThreshold = 50;
  EXPECT_FALSE(pass(50, 50, 50, 50, 50, 50)) << "it isn't the length of a vector";
}

TEST_F(Pump, RotationCodesAreThreeDigits) {
  struct Case {
    std::int32_t code;
    int rotMode;
    bool keepHorizon;
    bool hover;
  };
  for (const Case& c :
       {Case{0, 0, false, false}, Case{1, 1, false, false}, Case{2, 2, false, false},
        Case{3, 3, false, false}, Case{4, 2, false, true}, Case{10, 0, true, false}, Case{13, 3, true, false},
        Case{14, 2, true, true}, Case{93, 3, true, false}, Case{100, 0, false, true},
        Case{103, 3, false, true}, Case{112, 2, true, true}, Case{1203, 3, false, true},
        // Digits that name no mode.
        Case{5, 0, false, false}, Case{119, 0, true, true}, Case{-1, 0, false, false},
        Case{std::numeric_limits<std::int32_t>::min(), 0, false, false}}) {
    proxy().setRotMode(c.code == 0 ? 113 : 0); // everything the other way round
    proxy().setRotMode(c.code);
    EXPECT_EQ(proxy().mRotMode, c.rotMode) << c.code;
    EXPECT_EQ(proxy().mKeepHorizon, c.keepHorizon) << c.code;
    EXPECT_EQ(proxy().mHoverMode, c.hover) << c.code;
  }
}

TEST_F(Pump, ModeNamesComeFromTheMenuFilesTable) {
  EXPECT_EQ(plugin().getModeName(), "Unknown");
  proxy().mModes.publish({"Start", "Layout"});
  const std::pair<int, const char*> cases[] = {{0, "Start"}, {1, "Layout"}, {2, "Unknown"}, {-1, "Unknown"}};
  for (const auto& [mode, name] : cases) {
    proxy().mViewMode = mode;
    EXPECT_EQ(plugin().getModeName(), name) << mode;
  }
}

TEST_F(Pump, WithNothingToBeHadFromTheHostTheModeStays) {
  for (const bool isLayout : {true, false}) {
    host::setLayout(isLayout);
    const std::int32_t mode = proxy().retrieveMode();
    host::setLayout(!isLayout);
    calls::failAt("acedGetVar", 1, 2);
    EXPECT_EQ(proxy().retrieveMode(), mode);
    calls::clear();
  }
}

TEST_F(Pump, APassServesTheKeyThenTheViewKeyThenTheCap) {
  const Lines key = {"sendStringToExecute \"\\e\\e\" 1 0 1", "sendStringToExecute \"A\\n\" 1 0 1"};
  const std::string view = "sendStringToExecute \"'_-VIEW _TOP \" 0 0 1", mode = "acedGetVar tilemode";
  struct Case {
    int key, special;
    std::uint32_t timeBox;
    bool isHostsOwn; // the host's own interface serves the cap
    Lines expected;
  };
  const Case cases[] = {
      {0, kViewTopEvent, 500, false, {key[0], key[1], view, mode}},
      {-1, 0, 500, false, {mode}}, // at rest one pass, and nothing more to do in it
      {-2, -5, 500, false, {mode}},
      {0, kViewTopEvent, 0, false, {}}, // no time, no pass
      {0, kViewTopEvent, kEndless, true, {key[0], key[1], view}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "case " << &c - cases);
    proxy().mMenuEntries = {"A"};
    plugin().mPendingKey = c.key;
    plugin().mPendingSpecial = c.special;
    proxy().mMaxContMoveTime = c.timeBox;
    proxy().mUseInt3dIntrfce = c.isHostsOwn;
    setSample(c.isHostsOwn || c.timeBox == 0 ? 1000 : 0, 0, 0);
    EXPECT_EQ(milestones([this] { proxy().doTransform(); }), c.expected);
    EXPECT_EQ(plugin().mPendingKey, c.timeBox != 0 && c.key == 0 ? -1 : c.key);
    EXPECT_EQ(plugin().mPendingSpecial, c.timeBox != 0 && c.special > 0 ? 0 : c.special);
    EXPECT_FALSE(proxy().mCapIsMoving);
  }
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
  plugin().mPendingSpecial = kViewTopEvent;
  calls::throwAt("sendStringToExecute", 2);
  EXPECT_EQ(milestones([this] { proxy().handleDeviceKeys(); }),
            (Lines{"sendStringToExecute \"\\e\\e\" 1 0 1", "sendStringToExecute \"A\\n\" 1 0 1"}));
  EXPECT_EQ(takeRecords(), Lines{"ERR Error handleDeviceKeys()"});
  EXPECT_EQ(plugin().mPendingKey, 0);
  EXPECT_EQ(plugin().mPendingSpecial, kViewTopEvent) << "not looked at in that pass";
  // Again from its first token; this time the view's key throws.
  calls::throwAt("sendStringToExecute", 4);
  EXPECT_EQ(milestones([this] { proxy().handleDeviceKeys(); }).size(), 4u);
  EXPECT_EQ(plugin().mPendingKey, -1);
  EXPECT_EQ(plugin().mPendingSpecial, kViewTopEvent);
  calls::clear();
  EXPECT_EQ(milestones([this] { proxy().handleDeviceKeys(); }),
            Lines{"sendStringToExecute \"'_-VIEW _TOP \" 0 0 1"});
  EXPECT_EQ(plugin().mPendingSpecial, 0);
  EXPECT_EQ(takeRecords(), Lines{"ERR Error handleDeviceKeys()"});
}

TEST_F(Pump, PassThatThrowsDoesNotEndTheTick) {
  proxy().mMaxContMoveTime = kEndless;
  calls::throwAt("acedGetVar", 1, 2);
  EXPECT_EQ(milestones([this] { proxy().doTransform(); }),
            (Lines{"acedGetVar tilemode", "acedGetVar tilemode", "acedGetVar tilemode"}));
  EXPECT_EQ(takeRecords(), (Lines{"ERR Error doTransform()", "ERR Error doTransform()"}));
}

TEST_F(Pump, TickNeedsAnEngineAndNoArguments) {
  AutoCadProxy* const engineP = gAutoCadProxyP;
  ASSERT_EQ(engineP, &proxy());
  gAutoCadProxyP = nullptr;
  calls::startRecording();
  TimerProc(nullptr, 0, 0, 0);
  gAutoCadProxyP = engineP;
  EXPECT_EQ(calls::stopRecording(), Lines{});
  plugin().mPendingSpecial = kZoomAllEvent;
  TimerProc(nullptr, 77, 12345, 0xFFFFFFFF);
  EXPECT_EQ(plugin().mPendingSpecial, 0);
  EXPECT_NE(proxy().mTimerId, 0u) << "armed again";
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
  const auto intervals = [] {
    std::vector<UINT> found;
    for (const desktop::TimerRecord& timer : desktop::activeTimers())
      found.push_back(timer.interval);
    return found;
  };
  calls::startRecording();
  TimerProc(nullptr, 0, 0, 0);
  const Lines tick = calls::stopRecording();
  EXPECT_EQ(tick.front().substr(0, 9), "KillTimer") << "disarmed before anything else";
  EXPECT_EQ(tick.back(), "SetTimer 100");
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
    calls::throwAt(operation, 1);
    desktop::runTimers(100);
    calls::clear();
    EXPECT_EQ(takeRecords(), Lines{"ERR Error TimerProc()"});
  }
  EXPECT_TRUE(desktop::activeTimers().empty());
}

#endif

} // namespace
