#ifndef MUTEX_H
#define MUTEX_H

#include <string>

#include <semaphore.h>

/// A lock on a semaphore of count one. It may be taken in one function and released in another.
///
/// It doesn't nest: a second lock() on a thread that holds it waits for ever. Failures of the semaphore are
/// returned, and reported on the standard streams, since the log itself uses this lock.
class Mutex {
public:
  /// name  for messages; together with the process id it has to stay below 32 characters
  explicit Mutex(const char* name);
  ~Mutex();
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  /// Waits until the lock is free and takes it. Returns 0, or sem_wait's failure; the lock isn't held then.
  int lock();
  /// Releases the lock. Returns 0, or sem_post's failure.
  int unlock();

private:
  std::string nameText() const;

  sem_t mSem;
  char mName[32]; // no terminator guaranteed at the limit
};

#endif
