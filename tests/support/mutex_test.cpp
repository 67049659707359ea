#include "mutex.h"

#include <cerrno>
#include <cstring>
#include <iostream>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "semaphore_faults.h"
#include "stream_capture.h"
#include "util.h"

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

void take(Mutex& mutex) {
  EXPECT_EQ(0, mutex.lock());
}

void giveBack(Mutex& mutex) {
  EXPECT_EQ(0, mutex.unlock());
}

TEST(MutexTest, KeepsThreadsApartAcrossFunctions) {
  Mutex mutex("Name");
  constexpr int kThreads = 4, kRounds = 5000;
  int isInside = 0, collisions = 0, rounds = 0; // plain on purpose: the lock is all that guards them
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < kRounds; ++round) {
        take(mutex);
        collisions += isInside++;
        ++rounds;
        --isInside;
        giveBack(mutex);
      }
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(0, collisions);
  EXPECT_EQ(kThreads * kRounds, rounds);
}

TEST(MutexTest, EachFailureIsReportedAndAWaitThatASignalEndsGoesOn) {
  rig::StreamCapture out(std::cout);
  rig::StreamCapture err(std::cerr);
  semaphore_faults::order(semaphore_faults::Init, ENOSYS, 1);
  semaphore_faults::order(semaphore_faults::Destroy, EBUSY, 1);
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
  semaphore_faults::order(semaphore_faults::Wait, EINVAL, 1);
  EXPECT_EQ(-1, mutex.lock());
  EXPECT_EQ("Mutex::lock(): **** Error locking semaphore '" + ownName() + "' by thread " + threadText() +
                "! **** " + errorTail(EINVAL),
            out.take());
  semaphore_faults::order(semaphore_faults::Wait, EINTR, 2);
  EXPECT_EQ(0, mutex.lock()); // it was free all the time
  semaphore_faults::order(semaphore_faults::Post, EOVERFLOW, 1);
  EXPECT_EQ(-1, mutex.unlock());
  EXPECT_EQ("Mutex::unlock(): **** Error unlocking semaphore '" + ownName() + "' by thread " + threadText() +
                "'! **** " + errorTail(EOVERFLOW),
            err.take());
  EXPECT_EQ(0, mutex.unlock());
  EXPECT_EQ("", out.take());
  // A name at the limit has no terminator, and is cut.
  Mutex longName("0123456789abcdefghijklmnopqrstuvwxyz");
  semaphore_faults::order(semaphore_faults::Wait, EINVAL, 1);
  EXPECT_EQ(-1, longName.lock());
  EXPECT_NE(std::string::npos, out.take().find("semaphore '0123456789abcdefghijklmnopqrstuv' by"));
}

} // namespace
