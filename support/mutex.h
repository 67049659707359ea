#ifndef MUTEX_H
#define MUTEX_H

#include <atomic>
#include <cstdint>

#include <semaphore.h>

/// A lock on a semaphore of count one. It may be taken in one function and given back in another.
///
/// It doesn't nest: a second lock() on a thread that holds it waits for ever. Failures of the semaphore are
/// reported on the standard streams, since the log itself stands on this lock, and handed to the caller.
class Mutex {
public:
  /// name  for messages; together with the process id it has to stay below 32 characters
  explicit Mutex(const char* name);
  ~Mutex();
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  /// Waits until the lock is free and takes it. Gives 0, or what sem_wait gave; the lock isn't held then.
  int lock();
  /// Gives the lock back. Gives 0, or what sem_post gave.
  int unlock();

private:
  sem_t mSem;
  char mName[32]; // no terminator guaranteed at the limit
};

/// A lock that polls and, after a time-out, takes the lock by force, so that a holder that never gives it
/// back stalls the others for ten seconds at most. It reports its life on standard output.
class SleepMutex {
public:
  explicit SleepMutex(const char* name);
  ~SleepMutex();
  SleepMutex(const SleepMutex&) = delete;
  SleepMutex& operator=(const SleepMutex&) = delete;

  /// Takes the lock, at the latest after mTimeOut milliseconds. Always gives 0.
  int lock();
  /// Gives the lock back and sleeps mDelay milliseconds, so that a waiting thread gets its turn. Always gives
  /// 0.
  int unlock();

  std::int32_t mDelay;    // poll period, milliseconds
  std::int32_t mTimeOut;  // longest wait, milliseconds
  std::int32_t mMaxTries; // mTimeOut / mDelay
  char mName[32];
  // Test and setting are one exchange, so that of two threads that find the lock free only one gets it.
  std::atomic<bool> mIsLocked;
};

#endif
