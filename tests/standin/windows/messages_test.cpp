#include "call_log.h"
#include "desktop.h"

#include <gmock/gmock.h>

#include <ctime>
#include <thread>

using testing::ElementsAre;

namespace {

// Timer callbacks get no context of their own.
std::vector<std::pair<UINT_PTR, DWORD>> gTicks; // timer and tick count

void CALLBACK noteTick(HWND, UINT, UINT_PTR id, DWORD ticks) {
  gTicks.emplace_back(id, ticks);
}

void CALLBACK slowTick(HWND, UINT, UINT_PTR, DWORD) {
  Sleep(50);
}

void CALLBACK quitTick(HWND, UINT, UINT_PTR id, DWORD) {
  KillTimer(nullptr, id);
  PostQuitMessage(3);
}

class MessagesTest : public testing::Test {
protected:
  MessagesTest() {
    desktop::holdClock();
    desktop::setTickCount(0);
    gTicks.clear();
  }
  ~MessagesTest() override {
    call_log::clear();
    desktop::reset();
  }
};

TEST_F(MessagesTest, TimerRepeatsAtItsInterval) {
  const UINT_PTR id = SetTimer(nullptr, 0, 100, noteTick);
  EXPECT_EQ(desktop::runTimers(99), 0);
  EXPECT_EQ(desktop::runTimers(1), 1);
  EXPECT_EQ(desktop::runTimers(250), 2);
  EXPECT_EQ(gTicks.back(), std::make_pair(id, DWORD{300}));
  desktop::advanceClock(1000); // however long nobody asks
  EXPECT_EQ(desktop::runMessages(), 1);
  EXPECT_EQ(desktop::runTimers(99), 0) << "the next one is due an interval after the delivery";
  EXPECT_EQ(desktop::runTimers(1), 1);
  EXPECT_TRUE(KillTimer(nullptr, id));
  EXPECT_EQ(desktop::runTimers(1000), 0);
  const UINT_PTR slow = SetTimer(nullptr, 0, 1, slowTick); // at least 10 ms
  EXPECT_NE(slow, id) << "no number is used again";
  EXPECT_EQ(desktop::runTimers(9), 0);
  EXPECT_EQ(desktop::runTimers(1), 1) << "a slow callback doesn't keep the loop for ever";
}

TEST_F(MessagesTest, KilledTimerIsNotDispatched) {
  const UINT_PTR id = SetTimer(nullptr, 0, 10, noteTick);
  desktop::advanceClock(20);
  MSG message{};
  ASSERT_EQ(GetMessageW(&message, nullptr, 0, 0), 1);
  EXPECT_EQ(message.wParam, id);
  KillTimer(nullptr, id);
  DispatchMessageW(&message);
  EXPECT_TRUE(gTicks.empty());
}

TEST_F(MessagesTest, TimersBelongToTheirThread) {
  const UINT_PTR own = SetTimer(nullptr, 0, 10, noteTick);
  desktop::advanceClock(10);
  std::thread([own] {
    EXPECT_FALSE(KillTimer(nullptr, own));
    EXPECT_EQ(desktop::runMessages(), 0);
  }).join();
  EXPECT_EQ(desktop::runMessages(), 1);
}

TEST_F(MessagesTest, WaitingDoesNotSpin) {
  constexpr UINT kWait = 300;
  const auto threadTime = [] {
    timespec used{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) * 1000 + static_cast<double>(used.tv_nsec) * 1e-6;
  };
  desktop::releaseClock();
  const DWORD start = GetTickCount();
  SetTimer(nullptr, 0, kWait, quitTick);
  const double before = threadTime();
  MSG message{};
  ASSERT_EQ(GetMessageW(&message, nullptr, 0, 0), 1);
  EXPECT_GE(GetTickCount() - start, kWait);
  EXPECT_LT(threadTime() - before, kWait / 2); // a wait that spins costs the whole of it
  DispatchMessageW(&message);
  EXPECT_EQ(GetMessageW(&message, nullptr, 0, 0), 0);
  EXPECT_EQ(message.wParam, 3u);
}

} // namespace
