// Sessions in which the n-th allocation of the plug-in fails, alone or with all that follow until it is
// unloaded, for each n: on the main thread, and on the reading thread and the connection watch.
//
// The host survives, everything is given back to it, and the settings file is complete. A later session, with memory,
// ends as the first one did.

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <limits>
#include <new>
#include <regex>
#include <thread>

#include "event_codes.h"
#include "session.h"
#include "trial.h"

namespace {

#ifdef _WIN32
constexpr int kEvery = 50; // step of n; sleeps take real time there
#else
constexpr int kEvery = 7;
#endif
constexpr std::int64_t kNever = (std::numeric_limits<std::int64_t>::max)();

const std::regex kSecondRecord(R"(\d\d:\d\d:\d\d\.\d{3}\|)");

std::atomic<std::int64_t> gNth{0}; // of each thread; 0: allocations aren't counted
std::atomic<bool> gIsForGood{false};
std::atomic<bool> gIsOfMainThread{false};
std::atomic<int> gFailed{0};
thread_local bool tIsMainThread = false;
thread_local std::int64_t tCount = 0;

bool mustFail() {
  const std::int64_t nth = gNth;
  if (nth == 0 || tIsMainThread != gIsOfMainThread || call_log::currentCode() != call_log::Code::PlugIn)
    return false;
  const std::int64_t count = ++tCount;
  return count == nth || (gIsForGood && count > nth);
}

} // namespace

void* operator new(std::size_t size) {
  void* const p = mustFail() ? nullptr : std::malloc(size > 0 ? size : 1);
  if (p)
    return p;
  ++gFailed;
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
  return operator new(size);
}
// Inlined, free() would look to the compiler like no match for a new.
[[gnu::noinline]] void operator delete(void* p) noexcept {
  std::free(p);
}
void operator delete[](void* p) noexcept {
  operator delete(p);
}
void operator delete(void* p, std::size_t) noexcept {
  operator delete(p);
}
void operator delete[](void* p, std::size_t) noexcept {
  operator delete(p);
}

namespace {

void waitUntil(const char* what, const std::function<bool()>& holds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!holds() && std::chrono::steady_clock::now() < end)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  EXPECT_TRUE(holds()) << what;
}

/// Every path of both background threads.
void playLink(Session& session) {
  host::setMenuText("[Modes]\nStart\nA layout of the drawing\nThe model of the drawing\n");
  ASSERT_TRUE(session.load());
  fake_devlink::pushMotion({5, 0, 0, 0, 0, 0});
  for (const int code : {kRotationSettingsEvent1, kAnnounceModeEvent, APPL_FUNC_START, 0x20009})
    fake_devlink::pushEvent(code);
  EXPECT_TRUE(fake_devlink::waitUntilTaken());
  for (const bool isPresent : {false, true}) {
    fake_devlink::state()->isPresent = isPresent;
    waitUntil("the watch finds the daemon",
              [&] { return session.mApp.mOvAutoCadP->mDaemonProxyP->mIsConnected == isPresent; });
  }
  const std::int64_t nth = gNth.exchange(0); // memory is back for a moment
  const std::size_t modes = fake_devlink::state()->modes.size();
  fake_devlink::pushEvent(kAnnounceModeEvent);
  waitUntil("the mode is announced", [modes] { return fake_devlink::state()->modes.size() > modes; });
  gNth = nth;
}

class Allocations : public SessionTest {
protected:
  Allocations() { mIsLogging = true; }
  void TearDown() override {
    gNth = 0;
    SessionTest::TearDown();
  }

  void failEach(const char* what, bool isOfMainThread, const std::function<void(Session&)>& play) {
    call_log::startCounting(); // so that currentCode() is kept up to date
    const call_log::Entered standIn(call_log::Code::StandIn);
    tIsMainThread = true;
    gIsOfMainThread = isOfMainThread;
    run(kNever, false, play);
    const std::string settings = rig::home().read(rig::kSettingsFile);
    Trial trial(std::string("Each allocation of ") + what + " fails, alone and with all that follow");
    const char* const everyP = std::getenv("OV_EVERY");
    const int every = everyP ? (std::max)(1, std::atoi(everyP)) : kEvery;
    int tried = 0;
    std::int64_t nth = 1;
    for (; gFailed > 0 || nth == 1; nth += every) {
      for (const bool isForGood : {false, true}) {
        SCOPED_TRACE(testing::Message() << nth << (isForGood ? " for good" : " alone"));
        run(nth, isForGood, play);
        expectBalance("");
        EXPECT_EQ(host::historyText().find("Error in OV_"), std::string::npos);
        for (const rig::Record& record : rig::allRecords(0)) // none has an earlier one in front
          EXPECT_FALSE(std::regex_search(record.text, kSecondRecord)) << record.text;
        const std::string kept = rig::home().read(rig::kSettingsFile);
        EXPECT_TRUE(kept == settings || kept == mSettings) << kept;
        if (++tried % 20 == 0 || gFailed == 0) {
          EXPECT_EQ(cleanOutcome(), mClean);
        }
        trial.count(std::to_string(nth), !HasFailure());
        if (HasFailure())
          return; // one such report is enough
      }
    }
    EXPECT_GT(nth, 100);
    trial.detail("up to number " + std::to_string(nth - every) + ", " + std::to_string(mRefusals) +
                 " loads refused");
  }

private:
  void run(std::int64_t nth, bool isForGood, const std::function<void(Session&)>& play) {
    fake_devlink::reset();
    Session session(mIsLogging);
    mSettings = rig::home().read(rig::kSettingsFile);
    tCount = 0;
    gFailed = 0;
    gIsForGood = isForGood;
    gNth = nth;
    play(session);
    // A single failure stops the pump only while the menu file is read.
    const bool isStopToldOf = hasError("Error TimerProc()");
    EXPECT_TRUE(!session.mIsLoaded || session.isPumpRunning() || isForGood || isStopToldOf);
    if (session.mIsLoaded) {
      session.unload();
      gNth = 0;
      return;
    }
    gNth = 0;
    ++mRefusals;
    host::type(L"OV_Toggle_Scroll_Mode\n"); // not there any more
    host::runQueue();
    EXPECT_NE(host::historyText().find("Unknown command"), std::string::npos);
  }

  std::string mSettings; // as the session finds it
  int mRefusals = 0;     // of loads
};

TEST_F(Allocations, EachOfTheMainThreadFails) {
  failEach("the main thread", true, [](Session& session) { session.play(); });
}

TEST_F(Allocations, EachOfTheBackgroundThreadsFails) {
  failEach("the background threads", false, playLink);
}

} // namespace
