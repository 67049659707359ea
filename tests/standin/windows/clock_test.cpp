#include "calls.h"
#include "desktop.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <ctime>
#include <thread>

using testing::ElementsAre;

class Clock : public testing::Test {
protected:
  void SetUp() override { desktop::reset(); }
  void TearDown() override {
    calls::clear();
    desktop::reset();
  }
};

TEST_F(Clock, HeldClockMovesOnlyWhenTold) {
  desktop::holdClock();
  desktop::setTickCount(5000);
  EXPECT_EQ(GetTickCount(), 5000u);
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
  EXPECT_EQ(GetTickCount(), 5000u);
  desktop::advanceClock(70);
  EXPECT_EQ(GetTickCount(), 5070u);
}

TEST_F(Clock, TickCountWrapsAt32Bits) {
  desktop::holdClock();
  desktop::setTickCount(0xFFFFFFF0u);
  const DWORD before = GetTickCount();
  desktop::advanceClock(0x20);
  EXPECT_EQ(GetTickCount(), 0x10u);
  EXPECT_EQ(GetTickCount() - before, 0x20u);
}

TEST_F(Clock, TickStepMovesTheClockAfterEachReading) {
  desktop::holdClock();
  desktop::setTickCount(100);
  desktop::setTickStep(30);
  EXPECT_EQ(GetTickCount(), 100u);
  EXPECT_EQ(GetTickCount(), 130u);
  desktop::setTickStep(0);
  EXPECT_EQ(GetTickCount(), 160u);
  EXPECT_EQ(GetTickCount(), 160u);
}

TEST_F(Clock, ReleasedClockGoesOnFromWhereItStood) {
  desktop::holdClock();
  desktop::setTickCount(1000);
  desktop::advanceClock(3600000);
  desktop::releaseClock();
  const DWORD released = GetTickCount();
  EXPECT_GE(released, 3601000u);
  Sleep(15);
  EXPECT_GE(GetTickCount() - released, 14u);
}

TEST_F(Clock, WatchedSleepsPassAtOnceAndMoveTheClockOthersDoNot) {
  desktop::holdClock();
  desktop::setTickCount(0);
  Sleep(100000);
  EXPECT_EQ(GetTickCount(), 100000u);
  std::thread([] { Sleep(2000000); }).join();
  EXPECT_EQ(GetTickCount(), 100000u);
  Sleep(1);
  const auto sleeps = desktop::sleeps();
  ASSERT_EQ(sleeps.size(), 3u);
  EXPECT_TRUE(sleeps[0].isWatched);
  EXPECT_EQ(sleeps[0].milliseconds, 100000u);
  EXPECT_FALSE(sleeps[1].isWatched);
  EXPECT_EQ(sleeps[1].milliseconds, 2000000u);
  EXPECT_EQ(sleeps[2].milliseconds, 1u);
}

TEST_F(Clock, OnlySleepsOfTheWatchedThreadAreReported) {
  calls::startRecording();
  Sleep(0);
  EXPECT_THAT(calls::recorded(), ElementsAre());
  desktop::watchThisThread();
  Sleep(1);
  std::thread([] { Sleep(2); }).join();
  EXPECT_THAT(calls::stopRecording(), ElementsAre("Sleep 1"));
}

TEST_F(Clock, SleepThatFailsNeitherSleepsNorMovesTheClock) {
  desktop::holdClock();
  desktop::setTickCount(0);
  calls::failAt("Sleep", 2);
  Sleep(10);
  Sleep(10);
  Sleep(10);
  EXPECT_EQ(GetTickCount(), 20u);
  calls::throwAt("Sleep", 1);
  EXPECT_THROW(Sleep(10), calls::InjectedFault);
}

TEST_F(Clock, SystemTimeIsUtcUnlessSet) {
  // On a machine that runs in UTC, the local time would pass as well.
  setenv("TZ", "EAST-5", 1);
  tzset();
  const std::time_t before = std::time(nullptr);
  SYSTEMTIME now{};
  GetSystemTime(&now);
  std::tm parts{};
  parts.tm_year = now.wYear - 1900;
  parts.tm_mon = now.wMonth - 1;
  parts.tm_mday = now.wDay;
  parts.tm_hour = now.wHour;
  parts.tm_min = now.wMinute;
  parts.tm_sec = now.wSecond;
  const std::time_t told = timegm(&parts);
  EXPECT_GE(told, before);
  EXPECT_LE(told, std::time(nullptr));
  EXPECT_EQ(now.wDayOfWeek, parts.tm_wday);
  EXPECT_LT(now.wMilliseconds, 1000);
  unsetenv("TZ");
  tzset();

  desktop::setSystemTime(SYSTEMTIME{2019, 3, 2, 5, 9, 5, 3, 7});
  GetSystemTime(&now);
  EXPECT_EQ(now.wHour, 9);
  EXPECT_EQ(now.wMilliseconds, 7);
}

TEST_F(Clock, MovingAClockThatRunsIsAnError) {
  EXPECT_THROW(desktop::advanceClock(1), std::logic_error);
  EXPECT_THROW(desktop::runTimers(1), std::logic_error);
}
