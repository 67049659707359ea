// The link to the device daemon: the order of its calls, the state after each failure, the effect of each event, when
// the mode is sent; and how the engine starts and stops with its threads.

#include <algorithm>
#include <chrono>
#include <functional>
#include <limits>
#include <set>
#include <thread>
#include <utility>

#include "call_log.h"
#include "daemon_proxy.h"
#include "engine_rig.h"
#include "event_codes.h"
#include "logging.h"

#ifndef _WIN32
#include "desktop.h"
#endif

using Lines = std::vector<std::string>;
using rig::Record;

namespace {

bool waitFor(const std::function<bool()>& isDone) {
  for (int i = 0; i < 1000 && !isDone(); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  return isDone();
}

/// The link without the watch, so that only the test checks and mends it. The reading thread waits in
/// ovFetchEvent, and has announced "Unknown".
class DaemonLink : public EngineTest {
protected:
  void SetUp() override {
    EngineTest::SetUp();
    plugin().mIsToWatchConnection = false;
    ASSERT_TRUE(waitFor([] { return !plugin().mIsConnWatchRunning; }));
    fake_devlink::reset();
    ASSERT_TRUE(link().connect());
    event(kAnnounceModeEvent);
    // Twice if the reading thread saw the link come back before that event.
    ASSERT_EQ(takeModes().back(), "Unknown") << "there is no menu file yet";
    takeLinkCalls();
    takeLinkRecords();
  }

  DaemonProxy& link() { return *plugin().mDaemonProxyP; }
  void event(std::int32_t code, const std::array<short, 6>& axes = {}) {
    fake_devlink::pushMotion(axes, code);
    ASSERT_TRUE(fake_devlink::waitUntilTaken());
  }
  std::array<int, 6> sample() {
    OvAutoCad& p = plugin();
    return {p.mCapX, p.mCapY, p.mCapZ, p.mCapA, p.mCapB, p.mCapC};
  }
  /// Sets the modes as a menu file does. The reading thread waits in ovFetchEvent meanwhile.
  void setModes(const Lines& names) {
    proxy().mModes = names;
    proxy().mMenuIsLoaded = true;
  }
  /// Returns how often a mode was sent to the daemon, with success or not.
  static int announcements() { return fake_devlink::state()->counts["ovSetApplMode"]; }
  static Lines takeModes() { return std::exchange(fake_devlink::state()->modes, {}); }
  static Lines takeLinkCalls() { return std::exchange(fake_devlink::state()->calls, {}); }
  /// Returns the records of all threads since the last call.
  Lines takeLinkRecords() {
    Lines found;
    for (const Record& record : rig::allRecords(mLogMark))
      found.push_back(record.type + " " + record.text);
    mLogMark = rig::logSize();
    return found;
  }

  std::size_t mLogMark = 0;
};

TEST_F(DaemonLink, ConnectStopsAtTheFirstFailure) {
  const Lines all = {"ovConnect acad", "ovGetDevInfo 0", "ovGetDevInfo 1", "ovGetAdvancedSettings 0"};
  const std::string first = "INF devIdx: 0:Orvaner fake", second = "INF devIdx: 1:Orvaner fake";
  struct Case {
    const char* function; // that fails, null for none
    int skip;
    int calls; // of all
    Lines records;
    int rotMode; // the one before if there is no connection
  };
  const Case cases[] = {
      {"ovConnect", 0, 1, {"ERR Error in ovConnect()!"}, 3},
      {"ovGetDevNum", 0, 1, {"ERR Error in ovGetDevNum()!"}, 3},
      {"ovGetDevInfo", 0, 2, {"ERR Error in ovGetDevInfo()!"}, 3},
      {"ovGetDevInfo", 1, 3, {first, "ERR Error in ovGetDevInfo()!"}, 3},
      {"ovGetAdvancedSettings", 0, 4, {first, second, "ERR Error in ovGetAdvancedSettings()!"}, 0},
      {nullptr, 0, 4, {first, second}, 2},
  };
  fake_devlink::state()->deviceCount = 2;
  fake_devlink::state()->rotation = 112;
  fake_devlink::state()->zoomAllAfterView = true;
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "case " << &c - cases);
    proxy().setRotMode(113);
    proxy().mZoomAllAfterView = true;
    if (c.function)
      fake_devlink::fail(c.function, {1, c.skip});
    const bool isConnected = c.rotMode != 3;
    EXPECT_EQ(link().connect(), isConnected);
    EXPECT_EQ(link().mIsConnected, isConnected);
    EXPECT_EQ(link().mIsToSendMode, isConnected);
    EXPECT_EQ(takeLinkCalls(), Lines(all.begin(), all.begin() + c.calls));
    Lines expected = c.records;
    expected.insert(expected.begin(), "TRC Checking connection ...");
    EXPECT_EQ(takeLinkRecords(), expected);
    EXPECT_EQ(proxy().mRotMode, c.rotMode);
    EXPECT_EQ(proxy().mKeepHorizon && proxy().mHoverMode && proxy().mZoomAllAfterView, c.rotMode != 0);
    EXPECT_EQ(proxy().mKeepHorizon || proxy().mHoverMode || proxy().mZoomAllAfterView, c.rotMode != 0);
    // The link stays open, so the next check finds it alive without connecting.
    EXPECT_TRUE(link().checkConnection());
    EXPECT_TRUE(link().mIsConnected);
    EXPECT_EQ(takeLinkCalls(), Lines{});
  }
  fake_devlink::state()->deviceCount = 0; // no failure
  fake_devlink::state()->zoomAllAfterView = false;
  EXPECT_TRUE(link().connect());
  EXPECT_FALSE(proxy().mZoomAllAfterView);
  EXPECT_EQ(takeLinkCalls(), (Lines{all.front(), all.back()}));
}

TEST_F(DaemonLink, DeadLinkIsClosed) {
  fake_devlink::fail("ovGetDevNum");
  EXPECT_FALSE(link().checkConnection());
  EXPECT_FALSE(link().mIsConnected);
  EXPECT_EQ(takeLinkCalls(), Lines{"ovDisconnect"});
  EXPECT_EQ(takeLinkRecords(), Lines{"ERR Error in ovGetDevNum()!"});
  fake_devlink::fail("ovDisconnect");
  EXPECT_FALSE(link().checkConnection()) << "the link is down by now";
  EXPECT_EQ(takeLinkRecords(), (Lines{"ERR Error in ovGetDevNum()!", "ERR Error in ovDisconnect()!"}));
}

TEST_F(DaemonLink, EachEventHasOneEffect) {
  std::vector<std::int32_t> codes = {-1, std::numeric_limits<std::int32_t>::min(), 0, 0x30009, 0x7FFFFFFF};
  for (std::int32_t code = 0x1FFFF; code <= 0x20030; ++code)
    codes.push_back(code);
  const std::set<std::int32_t> viewCodes = {0x20009, 0x2000A, 0x2000B, 0x2000C, 0x20016, 0x20017, 0x20018};
  const std::array<int, 6> axes = {1, -2, 3, -32768, 32767, -6};
  for (const std::int32_t code : codes) {
    SCOPED_TRACE(testing::Message() << "code " << std::hex << code);
    setSample(0, 0, 0);
    plugin().mPendingKey = -1;
    plugin().mPendingSpecial = 0;
    proxy().setRotMode(0);
    fake_devlink::state()->rotation = 12;
    fake_devlink::state()->zoomAllAfterView = true;
    proxy().mZoomAllAfterView = false;
    takeLinkRecords();
    const int announced = announcements();
    event(code, {1, -2, 3, -32768, 32767, -6});
    EXPECT_EQ(sample(), (code < 0 ? axes : std::array<int, 6>()));
    EXPECT_EQ(plugin().mPendingKey, code >= 0x20020 ? code - 0x20020 : -1);
    EXPECT_EQ(plugin().mPendingSpecial, viewCodes.count(code) != 0 ? code : 0);
    const bool isRotation = code == 0x20001 || code == 0x20002;
    EXPECT_EQ(proxy().mRotMode, isRotation ? 2 : 0);
    EXPECT_EQ(proxy().mZoomAllAfterView, isRotation);
    EXPECT_EQ(announcements() - announced, code == 0x20013 ? 1 : 0);
    EXPECT_EQ(takeLinkRecords(),
              code < 0 ? Lines{} : Lines{"DBG event: " + std::to_string(code) + ", APPL_FUNC_START: 131104"});
  }
}

TEST_F(DaemonLink, DaemonHearsEachNewMode) {
  struct Case {
    std::function<void()> before;
    int refusals; // of the daemon, from now on
    std::int32_t event;
    int tries;
    Lines modes; // announced with success
  };
  const auto nothing = [] {};
  const auto connect = [this] { link().connect(); };
  const auto mode = [](int number) { return [number] { proxy().mViewMode = number; }; };
  const auto modes = [this](const Lines& names) { return [this, names] { setModes(names); }; };
  const Case cases[] = {
      {modes({"Start", "Layout", "Model"}), 0, -1, 1, {"Start"}}, // a motion event serves
      {nothing, 0, -1, 0, {}},
      {mode(2), 0, 0x20003, 1, {"Model"}}, // so does an event without effect
      {nothing, 0, kAnnounceModeEvent, 1, {"Model"}},
      {connect, 0, -1, 1, {"Model"}}, // it may be a new daemon
      {nothing, 0, -1, 0, {}},
      // A failed announcement is repeated, also one that the daemon has asked for.
      {mode(1), 2, -1, 1, {}},
      {nothing, 0, -1, 1, {}},
      {nothing, 0, -1, 1, {"Layout"}},
      {nothing, 1, kAnnounceModeEvent, 1, {}},
      {nothing, 0, -1, 1, {"Layout"}},
      // After a new connection a name that was sent before is tried once.
      {connect, 1, -1, 1, {}},
      {nothing, 0, -1, 0, {}},
      {modes({"Start"}), 0, -1, 1, {"Unknown"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "case " << &c - cases);
    c.before();
    if (c.refusals > 0)
      fake_devlink::fail("ovSetApplMode", {c.refusals});
    const int tries = announcements();
    event(c.event);
    EXPECT_EQ(announcements() - tries, c.tries);
    EXPECT_EQ(takeModes(), c.modes);
  }
  EXPECT_FALSE(link().mIsToSendMode);
}

TEST_F(DaemonLink, FailedFetchStillSendsTheMode) {
  setModes({"Start"});
  setSample(1, 2, 3);
  takeModes();
  fake_devlink::fail("ovSetApplMode");
  fake_devlink::fail("ovFetchEvent"); // the call after the event's
  takeLinkRecords();
  event(0);
  EXPECT_EQ(takeModes(), Lines{"Start"});
  EXPECT_EQ(takeLinkRecords(), Lines{"DBG event: 0, APPL_FUNC_START: 131104"});
  EXPECT_EQ(sample(), (std::array<int, 6>{1, 2, 3, 0, 0, 0}));
}

// ---- the watch, and the engine's start and end ----

/// Returns the main thread's records of the engine's start and end, with the source file in front.
Lines lifeRecords(std::size_t from) {
  const std::vector<Record> all = rig::allRecords(from);
  const auto main = std::find_if(all.begin(), all.end(),
                                 [](const Record& record) { return record.file == " ov_auto_cad.cpp"; });
  Lines found;
  for (const Record& record : all)
    if (main != all.end() && record.thread == main->thread &&
        (record.type == "CRT" || record.file == "daemon_proxy.cpp"))
      found.push_back(record.file + ": " + record.text);
  return found;
}

TEST_F(EngineTest, StartsAndStopsInOrder) {
  restart();
  std::size_t mark = rig::logSize();
  fake_devlink::fail("ovDisconnect");
  stop(); // with the reading thread waiting for an event
  EXPECT_EQ(lifeRecords(mark),
            (Lines{" ov_auto_cad.cpp: Destructing ...", "daemon_proxy.cpp: Destructing ...",
                   "daemon_proxy.cpp: Error in ovDisConnect()!", "daemon_proxy.cpp: Destructed.",
                   "*o_cad_proxy.cpp: Destructing ...", "*o_cad_proxy.cpp: Destructed.",
                   " ov_auto_cad.cpp: Destructed.", "    settings.cpp: Destructed."}));
  EXPECT_EQ(fake_devlink::state()->calls.back(), "ovDisconnect");
  EXPECT_EQ(gAutoCadProxyP, nullptr);
#ifndef _WIN32
  EXPECT_TRUE(desktop::activeTimers().empty());
#endif

  mark = rig::logSize();
  restart();
  EXPECT_EQ(plugin().mPendingKey, -1);
  EXPECT_EQ(plugin().mPendingSpecial, 0);
  EXPECT_EQ(proxy().mViewMode, 0);
  EXPECT_EQ(gAutoCadProxyP, &proxy());
  ASSERT_TRUE(waitFor([] { return plugin().mDaemonProxyP->mIsReading && plugin().mIsConnWatchRunning; }));
  EXPECT_TRUE(plugin().mDaemonProxyP->mIsConnected);
  EXPECT_EQ(lifeRecords(mark),
            (Lines{"    settings.cpp: Constructing ...", "    settings.cpp: Constructed.",
                   "*o_cad_proxy.cpp: Constructing ...", "*o_cad_proxy.cpp: AutoCadProxy constructed.",
                   "daemon_proxy.cpp: Constructing ...", "daemon_proxy.cpp: Checking connection ...",
                   "daemon_proxy.cpp: devIdx: 0:Orvaner fake", "daemon_proxy.cpp: Constructed.",
                   " ov_auto_cad.cpp: Constructed."}));
  EXPECT_EQ(fake_devlink::state()->calls,
            (Lines{"ovConnect acad", "ovGetDevInfo 0", "ovGetAdvancedSettings 0"}));
#ifndef _WIN32
  ASSERT_EQ(desktop::activeTimers().size(), 1u);
  EXPECT_EQ(desktop::activeTimers()[0].interval, 100u);
  EXPECT_EQ(desktop::activeTimers()[0].id, proxy().mTimerId);
  for (const desktop::SleepRecord& sleep : desktop::sleeps())
    EXPECT_TRUE(sleep.milliseconds == 2000 || (sleep.isWatched && sleep.milliseconds == 200))
        << sleep.milliseconds;
  fake_devlink::fail("ovGetDevNum", {1000000, 0, true}); // the watch sleeps between its looks all the same
  const auto looks = [] { return fake_devlink::state()->counts["ovGetDevNum"]; };
  const int looksBefore = looks();
  const std::size_t sleepsBefore = desktop::sleeps().size();
  EXPECT_TRUE(waitFor([&] { return looks() > looksBefore + 5; }));
  const auto looked = static_cast<std::size_t>(looks() - looksBefore);
  EXPECT_LE(looked, desktop::sleeps().size() - sleepsBefore + 1);
  fake_devlink::reset();
#endif
}

TEST_F(EngineTest, LogUsesTheUsersParameters) {
  const char* const keys[] = {"logToFile", "logToCnsl", "warning", "creation", "trace",
                              "devcom",    "intcom",    "info",    "debug",    "tmp"};
  for (unsigned bit = 1; bit < 16; bit *= 2) { // any two keys differ at least once
    std::vector<std::pair<std::string, std::string>> changes = {
        {"logFile", "other.txt"}, {"maxSize", "77"}, {"fileToLog", "none.cpp"}};
    for (unsigned i = 0; i < std::size(keys); ++i)
      changes.emplace_back(keys[i], (i & bit) != 0 ? "on" : "off");
    restart(changes);
    EXPECT_EQ(plugin().mLogPars.mIsTmp, (9 & bit) != 0);
    EXPECT_EQ(gLogging.dump(0), plugin().mLogPars.dump(0));
  }
}

} // namespace
