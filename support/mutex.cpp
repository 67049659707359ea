#include "mutex.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <sstream>
#include <string>

#include "util.h"

namespace {

/// Writes one line, composed first, so that lines of several threads don't mix.
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

std::string Mutex::nameText() const {
  return std::string(mName, std::find(mName, mName + sizeof mName, '\0'));
}

Mutex::Mutex(const char* name) : mName{} {
  (std::string(name) + "_" + std::to_string(Util::getProcessId())).copy(mName, sizeof mName);
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
           "Mutex::~Mutex(): Semaphore '" + nameText() + "' (OS X ID not available) of thread " +
               threadText() + " could not be destroyed!",
           error);
  }
}

int Mutex::lock() {
  const int result = sem_wait(&mSem);
  if (result != 0) {
    const int error = errno;
    report(std::cout,
           "Mutex::lock(): **** Error locking semaphore '" + nameText() + "' by thread " + threadText() +
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
           "Mutex::unlock(): **** Error unlocking semaphore '" + nameText() + "' by thread " + threadText() +
               "'! **** ",
           error);
  }
  return result;
}
