#ifndef MESSAGE_LOOP_H
#define MESSAGE_LOOP_H

#include <chrono>

#include <arxHeaders.h>

/// For tests that let the plug-in run in real time.
namespace rig {

inline double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

inline bool gIsLoopOver = false;

inline void CALLBACK endLoop(HWND, UINT, UINT_PTR id, DWORD) {
  KillTimer(nullptr, id);
  gIsLoopOver = true;
}

/// The host's message loop for some milliseconds, asleep while there is nothing to do. On the main thread.
inline void runLoop(UINT milliseconds) {
  gIsLoopOver = false;
  SetTimer(nullptr, 0, milliseconds, endLoop);
  MSG message;
  while (!gIsLoopOver && GetMessageW(&message, nullptr, 0, 0) > 0)
    DispatchMessageW(&message);
}

} // namespace rig

#endif
