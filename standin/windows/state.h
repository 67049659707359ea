#ifndef OV_STANDIN_WINDOWS_STATE_H
#define OV_STANDIN_WINDOWS_STATE_H

#include "desktop.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
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

/// The messages of one thread.
struct Queue {
  std::deque<MSG> posted;
  bool isQuitting = false;
  int exitCode = 0;
  std::condition_variable arrived; ///< a message, or a change of the clock
};

struct State {
  std::mutex mutex;

  // Windows by number, and for each parent (0 for the top level) its children, topmost first.
  std::map<unsigned long, Window> windows;
  std::map<unsigned long, std::vector<unsigned long>> children;
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

  std::map<DWORD, std::shared_ptr<Queue>> queues;
  std::vector<Timer> timers; ///< in the order in which they were armed
  UINT_PTR lastTimerId = 0;

  std::vector<MessageBox> boxes;
  std::function<int(const MessageBox&)> boxAnswer;
  std::vector<BeepRecord> beeps;
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
/// Wakes all threads that wait for a message, so that they look at clock and queue again.
void wakeAll(State& s);
/// A window's record, or null.
Window* find(State& s, HWND window);

} // namespace desktop::detail

#endif
