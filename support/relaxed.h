#ifndef RELAXED_H
#define RELAXED_H

#include <atomic>

/// A field that several threads read and write, each access whole, with no order between fields.
///
/// Reads and writes like a plain T. Relaxed order is enough: the fields that use it are levels and flags that
/// are polled, and no reader infers from one of them anything about another.
template <class T> class Relaxed {
public:
  Relaxed() : mValue(T()) {}
  Relaxed(T value) : mValue(value) {}
  Relaxed(const Relaxed&) = delete;
  Relaxed& operator=(const Relaxed&) = delete;

  operator T() const { return mValue.load(std::memory_order_relaxed); }
  T operator=(T value) {
    mValue.store(value, std::memory_order_relaxed);
    return value;
  }

private:
  std::atomic<T> mValue;
};

#endif
