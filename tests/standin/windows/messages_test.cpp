#include "desktop_test.h"

#include <atomic>
#include <ctime>
#include <thread>

using testing::ElementsAre;

namespace {

struct Tick {
  UINT_PTR id;
  DWORD ticks;
  DWORD thread;
};

// Timer callbacks get no context of their own.
std::vector<Tick> gTicks;

void CALLBACK noteTick(HWND, UINT, UINT_PTR id, DWORD ticks) {
  gTicks.push_back({id, ticks, GetCurrentThreadId()});
}

void CALLBACK slowTick(HWND window, UINT message, UINT_PTR id, DWORD ticks) {
  noteTick(window, message, id, ticks);
  Sleep(50);
}

void CALLBACK quitTick(HWND, UINT, UINT_PTR, DWORD) {
  PostQuitMessage(3);
}

std::vector<UINT_PTR> tickIds() {
  std::vector<UINT_PTR> ids;
  for (const Tick& tick : gTicks)
    ids.push_back(tick.id);
  return ids;
}

/// Processor time that this thread has used, in nanoseconds.
std::int64_t threadTime() {
  timespec used{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
  return static_cast<std::int64_t>(used.tv_sec) * 1000000000 + used.tv_nsec;
}

class Messages : public DesktopTest {
protected:
  Messages() {
    desktop::holdClock();
    desktop::setTickCount(0);
    gTicks.clear();
  }
};

} // namespace

TEST_F(Messages, TimerRepeatsAtItsIntervalAndWaitsAsOneMessage) {
  call_log::startRecording();
  const UINT_PTR id = SetTimer(nullptr, 0, 100, noteTick);
  EXPECT_EQ(desktop::runTimers(99), 0);
  EXPECT_EQ(desktop::runTimers(1), 1);
  EXPECT_EQ(desktop::runTimers(250), 2);
  EXPECT_THAT(tickIds(), ElementsAre(id, id, id));
  EXPECT_EQ(gTicks[2].ticks, 300u);
  desktop::advanceClock(1000); // however long nobody asks
  EXPECT_EQ(desktop::runMessages(), 1);
  EXPECT_EQ(desktop::runMessages(), 0);
  EXPECT_EQ(desktop::runTimers(99), 0) << "the next one is due an interval after the delivery";
  EXPECT_EQ(desktop::runTimers(1), 1);
  EXPECT_TRUE(KillTimer(nullptr, id));
  EXPECT_EQ(desktop::runTimers(1000), 0);
  EXPECT_FALSE(KillTimer(nullptr, id));
  const std::string kill = "KillTimer " + std::to_string(id);
  EXPECT_THAT(call_log::stopRecording(), ElementsAre("SetTimer 100", kill, kill));

  desktop::reset();
  desktop::holdClock();
  const UINT_PTR next = SetTimer(nullptr, 0, 1, slowTick); // at least 10 ms
  EXPECT_NE(next, id) << "no number is used again";
  EXPECT_EQ(desktop::runTimers(9), 0);
  EXPECT_EQ(desktop::runTimers(1), 1) << "a slow callback doesn't keep the loop for ever";
  call_log::failAt("SetTimer", 1);
  call_log::failAt("KillTimer", 1);
  EXPECT_EQ(SetTimer(nullptr, 0, 100, noteTick), 0u);
  EXPECT_FALSE(KillTimer(nullptr, next));
  EXPECT_EQ(SetTimer(desktop::addWindow({}), 1, 10, noteTick), 0u) << "windows have no timers";
  EXPECT_EQ(desktop::activeTimers().size(), 1u);
}

TEST_F(Messages, TimersFireInTheOrderInWhichTheyFallDue) {
  const UINT_PTR late = SetTimer(nullptr, 0, 40, noteTick);
  const UINT_PTR early = SetTimer(nullptr, 0, 30, noteTick);
  desktop::runTimers(40);
  desktop::advanceClock(80); // both wait now, early since 60 and late since 80
  desktop::runMessages();
  EXPECT_THAT(tickIds(), ElementsAre(early, late, early, late));
}

TEST_F(Messages, KillTakesAwayAMessageThatIsUnderWay) {
  const UINT_PTR id = SetTimer(nullptr, 0, 10, noteTick);
  desktop::advanceClock(20);
  MSG message{};
  ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
  EXPECT_EQ(message.wParam, id);
  EXPECT_EQ(message.time, 20u);
  KillTimer(nullptr, id);
  DispatchMessageW(&message);
  EXPECT_TRUE(gTicks.empty());

  const UINT_PTR second = SetTimer(nullptr, 0, 10, noteTick);
  desktop::advanceClock(20);
  KillTimer(nullptr, second);
  EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
}

TEST_F(Messages, TimersBelongToTheirThread) {
  const UINT_PTR own = SetTimer(nullptr, 0, 10, noteTick);
  std::thread([own] {
    EXPECT_FALSE(KillTimer(nullptr, own));
    SetTimer(nullptr, 0, 10, noteTick);
    EXPECT_EQ(desktop::activeTimers().size(), 2u);
    desktop::advanceClock(10);
    EXPECT_EQ(desktop::runMessages(), 1);
    EXPECT_EQ(gTicks.back().thread, GetCurrentThreadId());
  }).join();
  // The other thread's timer went with it; ours is still waiting.
  EXPECT_EQ(desktop::activeTimers().size(), 1u);
  EXPECT_EQ(desktop::runMessages(), 1);
  EXPECT_EQ(gTicks.back().id, own);
}

TEST_F(Messages, PostedComeBeforeQuitAndQuitBeforeTimers) {
  const UINT_PTR timer = SetTimer(nullptr, 0, 10, noteTick);
  desktop::advanceClock(10);
  ASSERT_TRUE(PostThreadMessageW(GetCurrentThreadId(), WM_APP + 1, 11, -12));
  MSG message{};
  EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_TIMER, WM_TIMER, PM_NOREMOVE));
  EXPECT_EQ(message.message, static_cast<UINT>(WM_TIMER));
  PostQuitMessage(5);
  EXPECT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE));
  EXPECT_EQ(message.lParam, -12);
  const std::pair<int, WPARAM> expected[] = {{WM_APP + 1, 11}, {WM_QUIT, 5}, {WM_TIMER, timer}};
  for (const auto& [kind, wParam] : expected) {
    EXPECT_EQ(GetMessageW(&message, nullptr, 0, 0), kind == WM_QUIT ? 0 : 1);
    EXPECT_EQ(message.message, static_cast<UINT>(kind));
    EXPECT_EQ(message.wParam, wParam);
  }
}

TEST_F(Messages, WaitingThreadIsWokenByPostsAndByTheHeldClock) {
  std::atomic<DWORD> waiting{0};
  std::vector<UINT> got;
  std::thread thread([&] {
    SetTimer(nullptr, 0, 1000, nullptr);
    waiting = GetCurrentThreadId();
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
      got.push_back(message.message);
      if (message.message == static_cast<UINT>(WM_TIMER))
        PostQuitMessage(0);
      else
        waiting = 0;
    }
  });
  while (waiting == 0)
    std::this_thread::yield();
  EXPECT_TRUE(PostThreadMessageW(waiting, WM_APP, 0, 0));
  while (waiting != 0)
    std::this_thread::yield();
  desktop::advanceClock(1000);
  thread.join();
  EXPECT_THAT(got, ElementsAre(WM_APP, WM_TIMER));
}

TEST_F(Messages, RealClockDeliversWithoutSpinning) {
  constexpr UINT WAIT = 300;
  desktop::releaseClock();
  const DWORD start = GetTickCount();
  SetTimer(nullptr, 0, WAIT, quitTick);
  const std::int64_t before = threadTime();
  MSG message{};
  ASSERT_EQ(GetMessageW(&message, nullptr, 0, 0), 1);
  EXPECT_GE(GetTickCount() - start, WAIT);
  // A wait that spins costs the whole of it.
  EXPECT_LT(threadTime() - before, std::int64_t{WAIT} * 1000000 / 2);
  DispatchMessageW(&message);
  EXPECT_EQ(GetMessageW(&message, nullptr, 0, 0), 0);
  EXPECT_EQ(message.wParam, 3u);
}
