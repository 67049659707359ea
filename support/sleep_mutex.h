#ifndef SLEEP_MUTEX_H
#define SLEEP_MUTEX_H

#include <atomic>
#include <cstdint>

/// A lock that polls and, after a time-out, takes the lock by force, so that a holder that never releases it
/// stalls the others for ten seconds at most. It reports its life on standard output. Nothing in this plug-in
/// uses it.
class SleepMutex {
public:
  explicit SleepMutex(const char* name);
  ~SleepMutex();
  SleepMutex(const SleepMutex&) = delete;
  SleepMutex& operator=(const SleepMutex&) = delete;

  /// Takes the lock, at the latest after mTimeOut milliseconds. Always returns 0.
  int lock();
  /// Releases the lock and sleeps mDelay milliseconds, so that a waiting thread gets its turn. Always returns
  /// 0.
  int unlock();

  std::int32_t mDelay;    // poll period, milliseconds
  std::int32_t mTimeOut;  // longest wait, milliseconds
  std::int32_t mMaxTries; // mTimeOut / mDelay
  char mName[32];
  // Test and setting are one exchange, so that of two threads that find the lock free only one gets it.
  std::atomic<bool> mIsLocked;

private:
  void report(const char* operation, const char* event, const char* end) const;
};

#endif
