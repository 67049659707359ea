#ifndef USAGE_H
#define USAGE_H

#include <cstdint>
#include <filesystem>
#include <iterator>

#include <malloc.h>

#include "desktop.h"

/// What this process uses.
struct Usage {
  std::ptrdiff_t threads = count("/proc/self/task");
  std::ptrdiff_t descriptors = count("/proc/self/fd");
  std::ptrdiff_t timers = static_cast<std::ptrdiff_t>(desktop::activeTimers().size());
  std::int64_t heap = static_cast<std::int64_t>(mallinfo2().uordblks + mallinfo2().hblkhd); // bytes

  /// Returns whether no more is used than before, except for memory that queues and buffers keep.
  bool isBackTo(const Usage& before) const {
    constexpr std::int64_t kHeapRoom = 256 * 1024;
    return threads == before.threads && descriptors <= before.descriptors && timers == before.timers &&
           heap <= before.heap + kHeapRoom;
  }

private:
  static std::ptrdiff_t count(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), {});
  }
};

#endif
