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
  UINT interval = 0;    // milliseconds
  std::int64_t due = 0; // on the clock of clockNow()
  TIMERPROC procedure = nullptr;
};

/// What desktop::reset() restores.
struct Records {
  std::map<unsigned long, Window> windows; // by number; siblings topmost first
  unsigned long lastNumber = 0;
  POINT pointer{0, 0};

  std::int64_t tickOffset = 0; // from our clock to the tick count
  DWORD tickStep = 0;
  std::function<DWORD()> tickSource;
  DWORD watchedThread = 0; // 0 for none
  std::optional<SYSTEMTIME> systemTime;
  std::vector<SleepRecord> sleeps;

  std::vector<Timer> timers; // in the order in which they were armed

  std::function<int(const MessageBox&)> boxAnswer;
  std::optional<std::wstring> modulePath;
};

struct State : Records {
  std::mutex mutex;
  std::condition_variable changed; // the clock or the timers changed; wakes GetMessageW

  bool isClockHeld = false;
  std::int64_t heldTime = 0;  // milliseconds, while held
  std::int64_t clockSkew = 0; // from the system's clock to ours, while running
  UINT_PTR lastTimerId = 0;   // not reset: a callback that is about to kill its timer must not kill a new one
};

/// Returns the one state. Never destroyed: other threads may still be in a call while the process ends.
State& state();

/// The state, locked for as long as this object lives.
class Locked {
public:
  Locked() : mLock(state().mutex) {}
  State& operator*() const { return state(); }
  State* operator->() const { return &state(); }

private:
  std::lock_guard<std::mutex> mLock;
};

// Call the operations below with the state's lock held.

/// Returns the time of our clock in milliseconds. It never runs backwards, and tests may hold it.
std::int64_t clockNow(const State& s);
DWORD ticksNow(const State& s);
/// Sets the held clock and wakes the threads that wait for it. Throws std::logic_error if it isn't held.
void setHeldTime(State& s, std::int64_t time);
/// Returns a window's record, null if there is no such window.
Window* find(State& s, HWND window);

} // namespace desktop::detail

#endif
