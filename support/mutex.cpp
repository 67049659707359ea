#include "mutex.h"

#include <cerrno>
#include <cstring>
#include <iostream>
#include <sstream>
#include <string>

#include "util.h"

namespace {

constexpr std::int32_t kSleepMutexDelay = 50;      // milliseconds
constexpr std::int32_t kSleepMutexTimeOut = 10000; // milliseconds

template <std::size_t size> void storeName(char (&to)[size], const std::string& name) {
  std::memset(to, 0, size);
  std::memcpy(to, name.data(), name.size() < size ? name.size() : size);
}

template <std::size_t size> std::string nameText(const char (&name)[size]) {
  const void* const endP = std::memchr(name, 0, size);
  return std::string(name, endP ? static_cast<const char*>(endP) - name : size);
}

/// One line, made whole first, so that lines of several threads don't mix.
/// error  errno as the failed call left it, fetched before the head is made
void report(std::ostream& os, const std::string& head, int error) {
  std::ostringstream line;
  line << head << "errno = " << error << ", error: " << std::strerror(error) << '\n';
  os << line.str() << std::flush;
}

std::string threadText() {
  return std::to_string(Util::getThreadId());
}

} // namespace

Mutex::Mutex(const char* name) {
  storeName(mName, std::string(name) + "_" + std::to_string(Util::getProcessId()));
  if (sem_init(&mSem, 0, 1) != 0) {
    const int error = errno;
    report(std::cout,
           "Mutex::Mutex(): **** Error initializing semaphore by thread " + threadText() + "! **** ", error);
  }
}

Mutex::~Mutex() {
  if (sem_destroy(&mSem) != 0) {
    const int error = errno;
    report(std::cout,
           "Mutex::~Mutex(): Semaphore '" + nameText(mName) + "' (OS X ID not available) of thread " +
               threadText() + " could not be destroyed!",
           error);
  }
}

int Mutex::lock() {
  const int result = sem_wait(&mSem);
  if (result != 0) {
    const int error = errno;
    report(std::cout,
           "Mutex::lock(): **** Error locking semaphore '" + nameText(mName) + "' by thread " + threadText() +
               "! **** ",
           error);
  }
  return result;
}

int Mutex::unlock() {
  const int result = sem_post(&mSem);
  if (result != 0) {
    const int error = errno;
    report(std::cerr,
           "Mutex::unlock(): **** Error unlocking semaphore '" + nameText(mName) + "' by thread " +
               threadText() + "'! **** ",
           error);
  }
  return result;
}

SleepMutex::SleepMutex(const char* name)
    : mDelay(kSleepMutexDelay), mTimeOut(kSleepMutexTimeOut),
      mMaxTries(kSleepMutexTimeOut / kSleepMutexDelay), mIsLocked(false) {
  storeName(mName, name);
  std::cout << "SleepMutex::SleepMutex(): '" + nameText(mName) + "' constructed by thread " + threadText() +
                   ".\n"
            << std::flush;
}

SleepMutex::~SleepMutex() {
  std::cout << "SleepMutex::~SleepMutex(): '" + nameText(mName) + "' destructed by thread " + threadText() +
                   ".\n"
            << std::flush;
}

int SleepMutex::lock() {
  if (!mIsLocked.exchange(true))
    return 0;
  for (std::int32_t i = 0; i < mMaxTries; ++i) {
    Util::sleep(static_cast<std::uint32_t>(mDelay));
    if (!mIsLocked.exchange(true))
      return 0;
  }
  std::cout << "SleepMutex::lock(): '" + nameText(mName) +
                   "' forced to unlock due to timeout, called by thread " + threadText() + "!\n"
            << std::flush;
  mIsLocked = true; // its holder may have let go of it meanwhile
  return 0;
}

int SleepMutex::unlock() {
  mIsLocked = false;
  Util::sleep(static_cast<std::uint32_t>(mDelay));
  return 0;
}
