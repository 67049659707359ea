// What the plug-in costs while nothing happens.

#include "bench.h"

#include <chrono>
#include <ctime>

#include <windows.h>

#include "surroundings.h"

namespace bench {

namespace {

constexpr UINT kSpan = 5000;       // milliseconds of rest that are measured
constexpr double kMostShare = 0.3; // percent of a core

double processSeconds() {
  timespec used = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
  return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

void CALLBACK endSpan(HWND, UINT, UINT_PTR id, DWORD) {
  KillTimer(nullptr, id);
  PostQuitMessage(0);
}

/// Percent of a core that this process takes in a span of its message loop.
double shareAtRest() {
  SetTimer(nullptr, 0, kSpan, endSpan);
  const double start = processSeconds();
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0)
    DispatchMessageW(&message);
  return (processSeconds() - start) / (kSpan * 1e-3) * 100;
}

Result rest() {
  stopEngine();
  showHost();
  const double without = shareAtRest();
  plugin();
  setSample(0, 0, 0, 0, 0, 0);
  TimerProc(nullptr, 0, 0, 0); // arms the engine's timer again: the desktop was made anew behind it
  const double with = shareAtRest();
  return {"CPU at rest, plug-in loaded",
          "the same process without it",
          "%",
          with,
          without,
          with - without,
          kMostShare,
          true};
}

} // namespace

void addRestRow() {
  add("CPU at rest, plug-in loaded", rest);
}

} // namespace bench
