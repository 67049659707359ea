// Timers: a late one, or one after its end, would falsify what the pump does.

#include "desktop.h"

#include <gtest/gtest.h>

namespace {

// Timer callbacks get no context of their own.
std::vector<std::pair<UINT_PTR, DWORD>> gTicks; // timer and tick count

void CALLBACK noteTick(HWND, UINT, UINT_PTR id, DWORD ticks) {
  gTicks.emplace_back(id, ticks);
}

class MessagesTest : public testing::Test {
protected:
  MessagesTest() {
    desktop::holdClock();
    desktop::setTickCount(0);
    gTicks.clear();
  }
  ~MessagesTest() override { desktop::reset(); }
};

TEST_F(MessagesTest, TimerRepeatsAtItsInterval) {
  const UINT_PTR id = SetTimer(nullptr, 0, 100, noteTick);
  EXPECT_EQ(desktop::runTimers(99), 0);
  EXPECT_EQ(desktop::runTimers(1), 1);
  EXPECT_EQ(desktop::runTimers(250), 2);
  EXPECT_EQ(gTicks.back(), std::make_pair(id, DWORD{300}));
  desktop::advanceClock(1000); // missed ticks are delivered once
  EXPECT_EQ(desktop::runMessages(), 1);
  EXPECT_EQ(desktop::runTimers(99), 0) << "the next one is due an interval after the delivery";
  EXPECT_EQ(desktop::runTimers(1), 1);
  EXPECT_TRUE(KillTimer(nullptr, id));
  EXPECT_EQ(desktop::runTimers(1000), 0);
  EXPECT_NE(SetTimer(nullptr, 0, 100, noteTick), id) << "no number is used again";
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

} // namespace
