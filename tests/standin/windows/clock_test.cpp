#include "desktop_test.h"

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <thread>

using testing::ElementsAre;

class Clock : public DesktopTest {};

TEST_F(Clock, HeldClockMovesOnlyWhenToldAndWrapsAt32Bits) {
  EXPECT_THROW(desktop::advanceClock(1), std::logic_error);
  EXPECT_THROW(desktop::runTimers(1), std::logic_error);
  desktop::holdClock();
  desktop::setTickCount(0xFFFFFFF0u);
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
  EXPECT_EQ(GetTickCount(), 0xFFFFFFF0u);
  desktop::advanceClock(0x20);
  desktop::setTickStep(30); // after each reading
  EXPECT_EQ(GetTickCount(), 0x10u);
  EXPECT_EQ(GetTickCount(), 0x10u + 30);
  desktop::setTickStep(0);
  // Released, it goes on from where it stood, each time.
  for (int i = 0; i < 2; ++i) {
    desktop::holdClock();
    desktop::advanceClock(1800000);
    desktop::releaseClock();
  }
  const DWORD released = GetTickCount();
  EXPECT_GE(released, 3600000u + 0x10u + 60);
  Sleep(15);
  EXPECT_GE(GetTickCount() - released, 14u);
}

TEST_F(Clock, WatchedSleepsPassAtOnceMoveTheClockAndAreReported) {
  call_log::startRecording();
  Sleep(0);
  desktop::watchThisThread();
  Sleep(1);
  EXPECT_THAT(call_log::stopRecording(), ElementsAre("Sleep 1"));
  desktop::holdClock();
  desktop::setTickCount(0);
  call_log::startRecording();
  call_log::failAt("Sleep", 2);
  Sleep(100000);
  Sleep(10); // fails
  std::thread([] { Sleep(2000000); }).join();
  EXPECT_EQ(GetTickCount(), 100000u);
  Sleep(1);
  EXPECT_THAT(call_log::stopRecording(), ElementsAre("Sleep 100000", "Sleep 10", "Sleep 1"));
  const auto sleeps = desktop::sleeps();
  ASSERT_EQ(sleeps.size(), 3u);
  EXPECT_TRUE(sleeps[0].isWatched);
  EXPECT_FALSE(sleeps[1].isWatched);
  EXPECT_EQ(sleeps[1].milliseconds, 2000000u);
}

TEST_F(Clock, SystemTimeIsUtcUnlessSet) {
  // On a machine that runs in UTC, the local time would pass as well.
  setenv("TZ", "EAST-5", 1);
  tzset();
  // std::time() may lag behind this clock by a tick, and so tell the second before.
  const auto secondsNow = [] {
    return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  };
  const std::time_t before = secondsNow();
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
  EXPECT_LE(told, secondsNow());
  EXPECT_EQ(now.wDayOfWeek, parts.tm_wday);
  EXPECT_LT(now.wMilliseconds, 1000);
  unsetenv("TZ");
  tzset();

  desktop::setSystemTime(SYSTEMTIME{2019, 3, 2, 5, 9, 5, 3, 7});
  GetSystemTime(&now);
  EXPECT_EQ(now.wHour, 9);
  EXPECT_EQ(now.wMilliseconds, 7);
}
