#ifndef OV_STANDIN_DESKTOP_H
#define OV_STANDIN_DESKTOP_H

#include "windows.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

/// The far side of windows.h: what a program sets up for the plug-in to find, and a test looks at afterwards.
///
/// Everything here may be called from any thread. Nothing here reports to call_log.h.
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

/// One window. A scroll message moves the position of its bar by one line; a wheel message is counted and
/// moves nothing, since what a wheel does is the window's own affair.
struct Window {
  std::wstring className;
  RECT rect{}; ///< screen coordinates
  HWND parent = nullptr;
  bool isVisible = true;
  std::optional<ScrollBar> vertical;
  std::optional<ScrollBar> horizontal;

  // What became of it; filled by the desktop.
  std::vector<SentMessage> sent;
  int wheelNotches =
      0;           ///< sum of the wheel's turns, a notch of 120 counting one, positive away from the user
  int updates = 0; ///< calls of UpdateWindow
};

/// Adds a window behind its siblings: the first one added is the topmost.
HWND addWindow(const Window& window);
/// Removes a window and all below it in the tree; their handles are not given out again.
void removeWindow(HWND window);
/// Lets the function change a window's record. It must not call back into the desktop. Nothing for no window.
void changeWindow(HWND window, const std::function<void(Window&)>& change);
/// A copy of a window's record; an empty one if there is no such window.
Window window(HWND window);
/// The number that stands for a window in the journal of calls; 0 for null.
unsigned long number(HWND window);

/// Rectangle from a corner and a size.
RECT rectangle(int left, int top, int width, int height);

// ---- Clock ------------------------------------------------------------------------------------------------

/// Stops the clock and watches this thread, whose sleeps are reported to call_log.h from now on: time changes
/// only by advanceClock(), the tick step and the sleeps of the watched thread, which return at
/// once and advance the clock. Sleeps of other threads last one real millisecond, however long they were meant
/// to be, and leave the clock alone. All are noted in sleeps(). A sleep that has begun before ends now.
void holdClock();
/// Lets the clock run again from its present time.
void releaseClock();
/// Moves the held clock on. Timers fall due, and threads that wait in GetMessageW get them.
void advanceClock(DWORD milliseconds);
/// The held clock moves on by itself so much after each GetTickCount; lets loops end that wait for time to
/// pass.
void setTickStep(DWORD milliseconds);
/// Sets what GetTickCount gives now; timers don't mind.
void setTickCount(DWORD ticks);
/// Sets what GetSystemTime gives until further notice; without a value, the real time again.
void setSystemTime(const std::optional<SYSTEMTIME>& time);

struct SleepRecord {
  bool isWatched = false; ///< on the watched thread
  DWORD milliseconds = 0;
};
/// The sleeps since holdClock(), in order.
std::vector<SleepRecord> sleeps();

// ---- Messages and timers ----------------------------------------------------------------------------------

struct TimerRecord {
  UINT_PTR id = 0;
  UINT interval = 0; ///< milliseconds
};
/// The timers that are armed, of all threads, in the order in which they were armed.
std::vector<TimerRecord> activeTimers();

/// Dispatches what lies ready for the calling thread, without waiting; gives the number of messages. WM_QUIT
/// stays where it is.
int runMessages();
/// Lets the held clock pass that many milliseconds, stopping at each due time to dispatch what lies ready for
/// the calling thread; gives the number of messages. A callback that moves the clock itself uses up that
/// time.
int runTimers(DWORD milliseconds);

// ---- Message boxes, module names --------------------------------------------------------------------------

struct MessageBox {
  HWND owner = nullptr;
  std::wstring caption;
  std::wstring text;
  UINT type = 0;
};
/// The boxes shown so far.
std::vector<MessageBox> messageBoxes();
/// Answers the boxes from now on, on the thread that shows them; an empty function answers IDOK.
void setMessageBoxAnswer(std::function<int(const MessageBox&)> answer);

/// What GetModuleFileNameW answers for every module from now on; without a value, the truth again.
void setModulePath(const std::optional<std::wstring>& path);

// -----------------------------------------------------------------------------------------------------------

/// Everything as at the start: no windows, timers, messages and records, a clock that runs, no watched
/// thread. Loaded modules stay.
void reset();

} // namespace desktop

#endif
