#include "sleep_mutex.h"

#include <algorithm>
#include <iostream>
#include <string>

#include "util.h"

namespace {

constexpr std::int32_t kDelay = 50;      // milliseconds
constexpr std::int32_t kTimeOut = 10000; // milliseconds

} // namespace

SleepMutex::SleepMutex(const char* name)
    : mDelay(kDelay), mTimeOut(kTimeOut), mMaxTries(kTimeOut / kDelay), mName{}, mIsLocked(false) {
  std::string(name).copy(mName, sizeof mName);
  report("SleepMutex(): '", "' constructed by thread ", ".");
}

SleepMutex::~SleepMutex() {
  report("~SleepMutex(): '", "' destructed by thread ", ".");
}

int SleepMutex::lock() {
  if (!mIsLocked.exchange(true))
    return 0;
  for (std::int32_t i = 0; i < mMaxTries; ++i) {
    Util::sleep(static_cast<std::uint32_t>(mDelay));
    if (!mIsLocked.exchange(true))
      return 0;
  }
  report("lock(): '", "' forced to unlock due to timeout, called by thread ", "!");
  mIsLocked = true; // its holder may have released it meanwhile
  return 0;
}

int SleepMutex::unlock() {
  mIsLocked = false;
  Util::sleep(static_cast<std::uint32_t>(mDelay));
  return 0;
}

/// Writes one line, composed first, so that lines of several threads don't mix.
void SleepMutex::report(const char* operation, const char* event, const char* end) const {
  const std::string name(mName, std::find(mName, mName + sizeof mName, '\0'));
  std::cout << "SleepMutex::" + std::string(operation) + name + event + std::to_string(Util::getThreadId()) +
                   end + '\n'
            << std::flush;
}
