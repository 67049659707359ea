#ifndef SLEEP_WHILE_H
#define SLEEP_WHILE_H

#include <cstdint>

#include "relaxed.h"
#include "util.h"

/// Waits until another thread has cleared its flag, looking every interval milliseconds. For destructors: a
/// sleep that fails is repeated, and nothing is thrown.
inline void sleepWhile(const Relaxed<bool>& flag, std::uint32_t interval) noexcept {
  while (flag) {
    try {
      Util::sleep(interval);
    } catch (...) {
    }
  }
}

#endif
