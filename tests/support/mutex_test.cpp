#include "mutex.h"
#include "sleep_mutex.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <semaphore.h>

#include "stream_capture.h"
#include "util.h"

#ifndef _WIN32
#include "desktop.h"
#endif

// The linker leads these calls through here: they fail on order, and reach the system without one.
namespace {

enum Call { Init, Destroy, Wait, Post, Count };

struct Order {
  std::atomic<int> mTimes{0};
  int mError = 0;
};

Order gOrders[Count];

/// The next times calls give -1, with this error number, and do nothing.
void order(Call call, int error, int times) {
  gOrders[call].mError = error;
  gOrders[call].mTimes = times;
}

bool isToFail(Call call) {
  if (gOrders[call].mTimes == 0)
    return false;
  --gOrders[call].mTimes;
  errno = gOrders[call].mError;
  return true;
}

} // namespace

extern "C" {
int __real_sem_init(sem_t* semaphore, int isShared, unsigned value);
int __real_sem_destroy(sem_t* semaphore);
int __real_sem_wait(sem_t* semaphore);
int __real_sem_post(sem_t* semaphore);

int __wrap_sem_init(sem_t* semaphore, int isShared, unsigned value);
int __wrap_sem_destroy(sem_t* semaphore);
int __wrap_sem_wait(sem_t* semaphore);
int __wrap_sem_post(sem_t* semaphore);

int __wrap_sem_init(sem_t* semaphore, int isShared, unsigned value) {
  return isToFail(Init) ? -1 : __real_sem_init(semaphore, isShared, value);
}
int __wrap_sem_destroy(sem_t* semaphore) {
  return isToFail(Destroy) ? -1 : __real_sem_destroy(semaphore);
}
int __wrap_sem_wait(sem_t* semaphore) {
  return isToFail(Wait) ? -1 : __real_sem_wait(semaphore);
}
int __wrap_sem_post(sem_t* semaphore) {
  return isToFail(Post) ? -1 : __real_sem_post(semaphore);
}
}

namespace {

/// What stands behind the names in each report of a failure.
std::string errorTail(int error) {
  return "errno = " + std::to_string(error) + ", error: " + std::strerror(error) + "\n";
}

std::string threadText() {
  return std::to_string(Util::getThreadId());
}

std::string ownName() {
  return "Name_" + std::to_string(Util::getProcessId());
}

TEST(MutexTest, KeepsThreadsApartAcrossFunctions) {
  Mutex mutex("Name");
  constexpr int kThreads = 4, kRounds = 5000;
  int isInside = 0, collisions = 0, rounds = 0; // plain on purpose: the lock is all that guards them
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < kRounds; ++round) {
        EXPECT_EQ(0, mutex.lock());
        collisions += isInside++;
        ++rounds;
        --isInside;
        EXPECT_EQ(0, mutex.unlock());
      }
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(0, collisions);
  EXPECT_EQ(kThreads * kRounds, rounds);
}

TEST(MutexTest, ReportsEachFailure) {
  rig::StreamCapture out(std::cout);
  rig::StreamCapture err(std::cerr);
  order(Init, ENOSYS, 1);
  order(Destroy, EBUSY, 1);
  {
    Mutex mutex("Name");
    EXPECT_EQ("Mutex::Mutex(): **** Error initializing semaphore by thread " + threadText() + "! **** " +
                  errorTail(ENOSYS),
              out.take());
  }
  EXPECT_EQ("Mutex::~Mutex(): Semaphore '" + ownName() + "' (OS X ID not available) of thread " +
                threadText() + " could not be destroyed!" + errorTail(EBUSY),
            out.take());
  Mutex mutex("Name");
  order(Wait, EINVAL, 1);
  EXPECT_EQ(-1, mutex.lock());
  EXPECT_EQ("Mutex::lock(): **** Error locking semaphore '" + ownName() + "' by thread " + threadText() +
                "! **** " + errorTail(EINVAL),
            out.take());
  EXPECT_EQ(0, mutex.lock());
  order(Post, EOVERFLOW, 1);
  EXPECT_EQ(-1, mutex.unlock());
  EXPECT_EQ("Mutex::unlock(): **** Error unlocking semaphore '" + ownName() + "' by thread " + threadText() +
                "'! **** " + errorTail(EOVERFLOW),
            err.take());
  EXPECT_EQ(0, mutex.unlock());
  EXPECT_EQ("", out.take());
  // A name at the limit has no terminator, and is cut.
  Mutex longName("0123456789abcdefghijklmnopqrstuvwxyz");
  order(Wait, EINVAL, 1);
  EXPECT_EQ(-1, longName.lock());
  EXPECT_NE(std::string::npos, out.take().find("semaphore '0123456789abcdefghijklmnopqrstuv' by"));
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
