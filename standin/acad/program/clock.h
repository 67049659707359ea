#ifndef CLOCK_H
#define CLOCK_H

#include <chrono>

namespace program {

/// Seconds since 1970, UTC: the time that the daemon's record speaks of too.
inline double unixNow() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

} // namespace program

#endif
