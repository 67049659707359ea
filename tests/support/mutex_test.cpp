#include <atomic>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <thread>

#include <gtest/gtest.h>

#include "mutex.h"
#include "sleep_mutex.h"
#include "stream_capture.h"
#include "util.h"

#ifndef _WIN32
#include "desktop.h"
#endif

// The linker redirects these calls of the system to here. With an error number set, the next one fails with it.
static std::atomic<int> gNextError;

static bool isToFail() {
  errno = gNextError.exchange(0);
  return errno != 0;
}

extern "C" {
int __real_sem_init(sem_t*, int, unsigned);
int __real_sem_destroy(sem_t*);
int __real_sem_wait(sem_t*);
int __real_sem_post(sem_t*);
int __wrap_sem_init(sem_t* semaphore, int isShared, unsigned value) {
  return isToFail() ? -1 : __real_sem_init(semaphore, isShared, value);
}
int __wrap_sem_destroy(sem_t* semaphore) {
  return isToFail() ? -1 : __real_sem_destroy(semaphore);
}
int __wrap_sem_wait(sem_t* semaphore) {
  return isToFail() ? -1 : __real_sem_wait(semaphore);
}
int __wrap_sem_post(sem_t* semaphore) {
  return isToFail() ? -1 : __real_sem_post(semaphore);
}
}

namespace {

template <class Lock> void expectExclusive(Lock& lock) {
  std::atomic<int> arrived{0}, inside{0}, collisions{0};
  const auto race = [&] {
    for (int round = 1; round <= 200; ++round) {
      ++arrived;
      while (arrived < 2 * round) // both try at the same time
        ;
      EXPECT_EQ(0, lock.lock());
      collisions += inside++;
      std::this_thread::yield();
      --inside;
      EXPECT_EQ(0, lock.unlock());
    }
  };
  std::thread other(race);
  race();
  other.join();
  EXPECT_EQ(0, collisions);
}

TEST(MutexTest, AdmitsOneThread) {
  Mutex mutex("Name");
  expectExclusive(mutex);
  rig::StreamCapture out(std::cout);
  SleepMutex sleepMutex("Name");
  sleepMutex.mDelay = 0;
  sleepMutex.mMaxTries = 1 << 30; // no lock by force
  expectExclusive(sleepMutex);
}

TEST(MutexTest, ReportsEachFailure) {
  const std::string thread = std::to_string(Util::getThreadId());
  const auto tail = [](int error) {
    return "errno = " + std::to_string(error) + ", error: " + std::strerror(error) + '\n';
  };
  // The name has no terminator at its limit.
  const std::string given(28, 'n'), name = (given + '_' + std::to_string(Util::getProcessId())).substr(0, 32);
  rig::StreamCapture out(std::cout), err(std::cerr);
  {
    gNextError = ENOSYS;
    Mutex mutex(given.c_str());
    gNextError = EINVAL;
    EXPECT_EQ(-1, mutex.lock());
    gNextError = EOVERFLOW;
    EXPECT_EQ(-1, mutex.unlock());
    gNextError = EBUSY;
  }
  EXPECT_EQ("Mutex::Mutex(): **** Error initializing semaphore by thread " + thread + "! **** " +
                tail(ENOSYS) + "Mutex::lock(): **** Error locking semaphore '" + name + "' by thread " +
                thread + "! **** " + tail(EINVAL) + "Mutex::~Mutex(): Semaphore '" + name +
                "' (OS X ID not available) of thread " + thread + " could not be destroyed!" + tail(EBUSY),
            out.take());
  EXPECT_EQ("Mutex::unlock(): **** Error unlocking semaphore '" + name + "' by thread " + thread +
                "'! **** " + tail(EOVERFLOW),
            err.take());
}

#ifndef _WIN32

TEST(SleepMutexTest, TimeoutTakesLockByForce) {
  desktop::holdClock();
  rig::StreamCapture out(std::cout);
  SleepMutex mutex("Name");
  EXPECT_EQ(0, mutex.lock());
  EXPECT_EQ("SleepMutex::SleepMutex(): 'Name' constructed by thread " + std::to_string(Util::getThreadId()) +
                ".\n",
            out.take());
  EXPECT_EQ(0, mutex.lock());
  EXPECT_EQ(200u, desktop::sleeps().size());
  EXPECT_EQ("SleepMutex::lock(): 'Name' forced to unlock due to timeout, called by thread " +
                std::to_string(Util::getThreadId()) + "!\n",
            out.take());
  EXPECT_EQ(0, mutex.unlock());
  EXPECT_FALSE(mutex.mIsLocked);
  ASSERT_EQ(201u, desktop::sleeps().size()) << "the others get their turn";
  EXPECT_EQ(50u, desktop::sleeps().back().milliseconds);
  desktop::reset();
}

#endif

} // namespace
