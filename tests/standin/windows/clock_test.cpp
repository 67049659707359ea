#include "call_log.h"
#include "desktop.h"

#include <gmock/gmock.h>

#include <chrono>
#include <thread>

using testing::ElementsAre;

namespace {

class ClockTest : public testing::Test {
protected:
  ~ClockTest() override {
    call_log::clear();
    desktop::reset();
  }
};

TEST_F(ClockTest, HeldClockMovesWhenTold) {
  desktop::holdClock();
  desktop::setTickCount(0xFFFFFFF0u);
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
  EXPECT_EQ(GetTickCount(), 0xFFFFFFF0u);
  desktop::advanceClock(0x20);
  desktop::setTickStep(30); // after each reading
  EXPECT_EQ(GetTickCount(), 0x10u) << "wraps at 32 bits";
  EXPECT_EQ(GetTickCount(), 0x10u + 30);
  desktop::releaseClock();
  const DWORD released = GetTickCount();
  EXPECT_LT(released - 0x10u - 60, 1000u) << "goes on from where it stood";
  Sleep(15);
  EXPECT_GE(GetTickCount() - released, 14u);
}

TEST_F(ClockTest, WatchedSleepsPassAtOnce) {
  call_log::startRecording();
  Sleep(0); // nobody is watched
  desktop::holdClock();
  desktop::setTickCount(0);
  call_log::failAt("Sleep", 2);
  Sleep(100000);
  Sleep(10); // fails
  std::thread([] { Sleep(2000000); }).join();
  EXPECT_EQ(GetTickCount(), 100000u);
  EXPECT_THAT(call_log::stopRecording(), ElementsAre("Sleep 100000", "Sleep 10"));
  const auto sleeps = desktop::sleeps();
  ASSERT_EQ(sleeps.size(), 2u);
  EXPECT_TRUE(sleeps[0].isWatched);
  EXPECT_FALSE(sleeps[1].isWatched);
  EXPECT_EQ(sleeps[1].milliseconds, 2000000u);
}

} // namespace
