#ifndef MESSAGE_LOOP_H
#define MESSAGE_LOOP_H

#include <chrono>
#include <functional>

#include <arxHeaders.h>

#include "host.h"

/// For tests that let the plug-in run in real time.
namespace rig {

inline double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

inline bool gIsLoopOver = false;

/// Runs the host's message loop for some milliseconds, which sleeps while there is nothing to do. Then runs what was
/// typed meanwhile. On the main thread.
inline void runLoop(UINT milliseconds) {
  gIsLoopOver = false;
  SetTimer(nullptr, 0, milliseconds, [](HWND, UINT, UINT_PTR id, DWORD) {
    KillTimer(nullptr, id);
    gIsLoopOver = true;
  });
  MSG message;
  while (!gIsLoopOver && GetMessageW(&message, nullptr, 0, 0) > 0)
    DispatchMessageW(&message);
  host::runQueue();
}

/// Runs the loop until something holds. Returns the seconds it took, or -1 after the longest time.
inline double loopUntil(double longest, const std::function<bool()>& holds) {
  const auto start = std::chrono::steady_clock::now();
  while (secondsSince(start) < longest) {
    if (holds())
      return secondsSince(start);
    runLoop(10);
  }
  return -1;
}

} // namespace rig

#endif
