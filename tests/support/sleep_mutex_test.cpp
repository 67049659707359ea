#include "mutex.h"

#include <atomic>
#include <iostream>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "stream_capture.h"
#include "util.h"

#ifndef _WIN32
#include "desktop.h"
#endif

namespace {

std::string threadText() {
  return std::to_string(Util::getThreadId());
}

TEST(SleepMutexTest, ReportsItsLife) {
  rig::StreamCapture out(std::cout);
  auto mutexP = std::make_unique<SleepMutex>("Name");
  EXPECT_EQ("SleepMutex::SleepMutex(): 'Name' constructed by thread " + threadText() + ".\n", out.take());
  EXPECT_EQ(50, mutexP->mDelay);
  EXPECT_EQ(10000, mutexP->mTimeOut);
  EXPECT_EQ(200, mutexP->mMaxTries);
  mutexP.reset();
  EXPECT_EQ("SleepMutex::~SleepMutex(): 'Name' destructed by thread " + threadText() + ".\n", out.take());
}

TEST(SleepMutexTest, OfTwoThreadsThatFindItFreeOneGetsIt) {
  rig::StreamCapture out(std::cout);
  SleepMutex mutex("Name");
  mutex.mDelay = 0;
  mutex.mMaxTries = 1 << 30; // no lock by force here
  constexpr int kRounds = 2000;
  std::atomic<int> arrived{0};
  std::atomic<int> inside{0};
  std::atomic<int> collisions{0};
  const auto race = [&] {
    for (int round = 1; round <= kRounds; ++round) {
      ++arrived;
      while (arrived < 2 * round) // both set out together
        std::this_thread::yield();
      EXPECT_EQ(0, mutex.lock());
      collisions += inside++ != 0;
      std::this_thread::yield();
      --inside;
      EXPECT_EQ(0, mutex.unlock());
    }
  };
  std::thread other(race);
  race();
  other.join();
  EXPECT_EQ(0, collisions);
}

#ifndef _WIN32

TEST(SleepMutexTest, TakesTheLockByForceAfterItsTimeOut) {
  desktop::holdClock();
  rig::StreamCapture out(std::cout);
  SleepMutex mutex("Name");
  EXPECT_EQ(0, mutex.lock());
  EXPECT_TRUE(desktop::sleeps().empty()) << "a free lock costs no sleep";
  out.take();
  const std::uint32_t start = Util::getTickCount();
  EXPECT_EQ(0, mutex.lock());
  EXPECT_EQ(10000u, Util::getTickCount() - start);
  EXPECT_EQ(200u, desktop::sleeps().size());
  EXPECT_EQ("SleepMutex::lock(): 'Name' forced to unlock due to timeout, called by thread " + threadText() +
                "!\n",
            out.take());
  EXPECT_TRUE(mutex.mIsLocked);
  EXPECT_EQ(0, mutex.unlock()); // and sleeps after that
  EXPECT_FALSE(mutex.mIsLocked);
  ASSERT_EQ(201u, desktop::sleeps().size());
  EXPECT_EQ(50u, desktop::sleeps().back().milliseconds);
  desktop::reset();
}

#endif

} // namespace
