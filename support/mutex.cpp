#include "mutex.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <sstream>
#include <string>

#include "util.h"

namespace {

/// Writes one line, composed first, so that lines of several threads don't mix. Without memory, nothing.
/// makeHead  composes the line up to the error, which errno holds now
template <class MakeHead> void report(std::ostream& os, const MakeHead& makeHead) noexcept {
  const int error = errno;
  try {
    std::ostringstream line;
    line << makeHead() << "errno = " << error << ", error: " << std::strerror(error) << '\n';
    os << line.str() << std::flush;
  } catch (...) {
  }
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
    report(std::cout, [&] {
      return "Mutex::Mutex(): **** Error initializing semaphore by thread " + threadText() + "! **** ";
    });
  }
}

Mutex::~Mutex() {
  if (sem_destroy(&mSem) != 0) {
    report(std::cout, [&] {
      return "Mutex::~Mutex(): Semaphore '" + nameText() + "' (OS X ID not available) of thread " +
             threadText() + " could not be destroyed!";
    });
  }
}

int Mutex::lock() {
  const int result = sem_wait(&mSem);
  if (result != 0) {
    report(std::cout, [&] {
      return "Mutex::lock(): **** Error locking semaphore '" + nameText() + "' by thread " + threadText() +
             "! **** ";
    });
  }
  return result;
}

int Mutex::unlock() {
  const int result = sem_post(&mSem);
  if (result != 0) {
    report(std::cerr, [&] {
      return "Mutex::unlock(): **** Error unlocking semaphore '" + nameText() + "' by thread " +
             threadText() + "'! **** ";
    });
  }
  return result;
}
