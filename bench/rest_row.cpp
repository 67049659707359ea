// What the plug-in costs while nothing happens.

#include "bench.h"

#include <ctime>

#include "message_loop.h"
#include "surroundings.h"

namespace bench {

namespace {

constexpr char kWhat[] = "CPU at rest, plug-in loaded";
constexpr UINT kSpan = 5000;       // milliseconds of rest that are measured
constexpr double kMostShare = 0.3; // percent of a core

/// Returns the percentage of a core that this process takes in a span of its message loop.
double shareAtRest() {
  const std::clock_t start = std::clock();
  rig::runLoop(kSpan);
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC / (kSpan * 1e-3) * 100;
}

Result rest() {
  stopEngine();
  showHost();
  const double without = shareAtRest();
  plugin();
  setSample(0, 0, 0, 0, 0, 0);
  TimerProc(nullptr, 0, 0, 0); // arms the engine's timer again: showHost() has dropped it
  const double with = shareAtRest();
  return {kWhat, "the same process without it", "%", with, without, with - without, kMostShare, true};
}

} // namespace

void addRestRow() {
  add(kWhat, rest);
}

} // namespace bench
