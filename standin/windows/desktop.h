#ifndef OV_STANDIN_DESKTOP_H
#define OV_STANDIN_DESKTOP_H

#include "windows.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

/// Sets up and inspects the desktop that windows.h acts on. For programs and tests.
///
/// All operations may be called from any thread. None reports to call_log.h.
namespace desktop {

// ---- Windows ----------------------------------------------------------------------------------------------

/// One scroll bar. Its position stays within min and max - page + 1.
struct ScrollBar {
  int min = 0;
  int max = 0;
  UINT page = 0;
  int position = 0;
};

struct SentMessage {
  UINT message = 0;
  WPARAM wParam = 0;
  LPARAM lParam = 0;
};

/// One window. A scroll message moves the position of its bar by one line. A wheel message is only counted:
/// each window class reacts to the wheel in its own way.
struct Window {
  std::wstring className;
  RECT rect{}; // screen coordinates
  HWND parent = nullptr;
  bool isVisible = true;
  std::optional<ScrollBar> vertical;
  std::optional<ScrollBar> horizontal;

  // Filled by the desktop.
  std::vector<SentMessage> sent;
  int wheelNotches = 0; // sum of the wheel's turns in notches of 120, positive away from the user
};

/// Adds a window below its siblings: the first one added is the topmost.
HWND addWindow(const Window& window);
/// Removes a window and all its descendants. Their handles are not used again.
void removeWindow(HWND window);
/// Calls the function with a window's record. It must not call back into the desktop. Does nothing if there
/// is no such window.
void changeWindow(HWND window, const std::function<void(Window&)>& change);
/// Returns a copy of a window's record, an empty one if there is no such window.
Window window(HWND window);
/// Returns the number of a window in the journal of calls, 0 for null.
unsigned long number(HWND window);

/// Returns the rectangle with that corner and size.
RECT rectangle(int left, int top, int width, int height);

// ---- Clock ------------------------------------------------------------------------------------------------

/// Stops the clock and makes the calling thread the watched one. Time then changes only by advanceClock(),
/// the tick step and the sleeps of the watched thread, which advance the clock, return at once and are
/// reported to call_log.h. Sleeps of other threads last one real millisecond, whatever their argument, and
/// don't change the clock. A sleep that has begun before ends now. sleeps() lists all since.
void holdClock();
/// Lets the clock run again from the held time.
void releaseClock();
/// Advances the held clock; throws std::logic_error if it isn't held. Timers fall due, and threads that wait in GetMessageW receive them.
void advanceClock(DWORD milliseconds);
/// Sets the time by which each GetTickCount advances the held clock, so that loops that wait for time to pass
/// end.
void setTickStep(DWORD milliseconds);
/// Sets what GetTickCount returns now. Timers are not affected.
void setTickCount(DWORD ticks);
/// Makes GetTickCount return what the function says, which is called on the thread that asks; an empty one ends
/// that. Timers are not affected.
void setTickSource(std::function<DWORD()> source);
/// Sets the time that GetSystemTime writes; without a value, the real time again.
void setSystemTime(const std::optional<SYSTEMTIME>& time);

struct SleepRecord {
  bool isWatched = false; // on the watched thread
  DWORD milliseconds = 0;
};
/// Returns the sleeps since holdClock(), in order.
std::vector<SleepRecord> sleeps();

// ---- Messages and timers ----------------------------------------------------------------------------------

struct TimerRecord {
  UINT_PTR id = 0;
  UINT interval = 0; // milliseconds
};
/// Returns the armed timers of all threads, in the order in which they were armed.
std::vector<TimerRecord> activeTimers();

/// Dispatches the pending timer messages of the calling thread without waiting. Returns their number.
int runMessages();
/// Advances the held clock by that time, and at each due time dispatches the messages of the calling thread.
/// Returns their number. Time by which a callback advances the clock counts.
int runTimers(DWORD milliseconds);

// ---- Message boxes, module names --------------------------------------------------------------------------

struct MessageBox {
  HWND owner = nullptr;
  std::wstring caption;
  std::wstring text;
  UINT type = 0;
};
/// Sets the function that is shown the message boxes and answers them, on their threads. Empty: IDOK.
void setMessageBoxAnswer(std::function<int(const MessageBox&)> answer);

/// Sets the path that GetModuleFileNameW returns for every module; without a value, the real one again.
void setModulePath(const std::optional<std::wstring>& path);

// -----------------------------------------------------------------------------------------------------------

/// Restores the initial state: no windows, timers, messages and records, a running clock, no watched thread.
/// Loaded modules stay.
void reset();

} // namespace desktop

#endif
