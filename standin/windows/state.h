#ifndef OV_STANDIN_WINDOWS_STATE_H
#define OV_STANDIN_WINDOWS_STATE_H

#include "desktop.h"

#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>

/// What the calls and the desktop share. Internal to this library.
namespace desktop::detail {

struct Timer {
  UINT_PTR id = 0;
  DWORD threadId = 0;
  UINT interval = 0;    ///< milliseconds
  std::int64_t due = 0; ///< on the clock of clockNow()
  TIMERPROC procedure = nullptr;
};

struct State {
  std::mutex mutex;

  std::map<unsigned long, Window> windows; ///< by number; siblings topmost first
  unsigned long lastNumber = 0;
  POINT pointer{0, 0};

  bool isClockHeld = false;
  std::int64_t heldTime = 0;   ///< milliseconds, while held
  std::int64_t clockSkew = 0;  ///< from the system's clock to ours, while running
  std::int64_t tickOffset = 0; ///< from our clock to the tick count
  DWORD tickStep = 0;
  DWORD watchedThread = 0; ///< 0 for none
  std::optional<SYSTEMTIME> systemTime;
  std::vector<SleepRecord> sleeps;

  std::map<DWORD, int> quits;      ///< threads whose loop is to end, and their exit codes
  std::condition_variable changed; ///< for who waits for a message: the clock, or all of the desktop
  std::vector<Timer> timers;       ///< in the order in which they were armed
  UINT_PTR lastTimerId = 0;

  std::vector<MessageBox> boxes;
  std::function<int(const MessageBox&)> boxAnswer;
  std::optional<std::wstring> modulePath;
};

/// The one state. Lives until the process is gone: other threads may still be in a call while it ends.
State& state();

// All below want the state's lock to be held.

/// Our clock: milliseconds that never run backwards and that the tests may hold.
std::int64_t clockNow(const State& s);
DWORD ticksNow(const State& s);
/// Moves the held clock and wakes who waits for it.
void setHeldTime(State& s, std::int64_t time);
/// A window's record, or null.
Window* find(State& s, HWND window);

} // namespace desktop::detail

#endif
