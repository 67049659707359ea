#include "report.h"
#include "state.h"

#include <algorithm>
#include <chrono>

using desktop::detail::Locked;
using desktop::detail::State;
using desktop::detail::state;
using desktop::detail::Timer;

namespace {

/// Returns the calling thread's timer that falls due first, the one armed first among equals; null if there
/// is none.
Timer* nextTimer(State& s) {
  Timer* nextP = nullptr;
  for (Timer& timer : s.timers)
    if (timer.threadId == GetCurrentThreadId() && (!nextP || timer.due < nextP->due))
      nextP = &timer;
  return nextP;
}

/// Returns the calling thread's timer of that number, the end if there is none.
std::vector<Timer>::iterator ownTimer(State& s, UINT_PTR id) {
  return std::find_if(s.timers.begin(), s.timers.end(), [id](const Timer& timer) {
    return timer.id == id && timer.threadId == GetCurrentThreadId();
  });
}

/// Makes the message of a timer that has fallen due by that time. Returns false if there is none. Messages
/// are made on request, so no timer has more than one pending, and a killed timer leaves none.
bool takeTimer(State& s, std::int64_t upTo, MSG& message) {
  Timer* const timerP = nextTimer(s);
  if (!timerP || timerP->due > upTo)
    return false;
  const auto procedure = reinterpret_cast<LPARAM>(timerP->procedure);
  message = {nullptr, WM_TIMER, timerP->id, procedure, desktop::detail::ticksNow(s), s.pointer};
  timerP->due = desktop::detail::clockNow(s) + timerP->interval;
  return true;
}

} // namespace

namespace desktop {

std::vector<TimerRecord> activeTimers() {
  const Locked s;
  std::vector<TimerRecord> records;
  for (const Timer& timer : s->timers)
    records.push_back({timer.id, timer.interval});
  return records;
}

int runMessages() {
  State& s = state();
  std::unique_lock<std::mutex> lock(s.mutex);
  // Without this bound, a timer whose callback takes longer than its interval would keep the loop running for
  // ever.
  const std::int64_t now = detail::clockNow(s);
  int count = 0;
  for (MSG message{}; takeTimer(s, now, message); ++count) {
    lock.unlock();
    DispatchMessageW(&message);
    lock.lock();
  }
  return count;
}

int runTimers(DWORD milliseconds) {
  State& s = state();
  std::unique_lock<std::mutex> lock(s.mutex);
  const std::int64_t end = s.heldTime + milliseconds;
  int count = 0;
  for (;;) {
    lock.unlock();
    count += runMessages();
    lock.lock();
    if (s.heldTime >= end)
      return count;
    const Timer* const timerP = nextTimer(s);
    const std::int64_t next = timerP ? std::min(timerP->due, end) : end;
    detail::setHeldTime(s, std::max(next, s.heldTime));
  }
}

} // namespace desktop

UINT_PTR WINAPI SetTimer(HWND window, UINT_PTR, UINT milliseconds, TIMERPROC procedure) {
  desktop::detail::Call call("SetTimer", milliseconds);
  if (call.mustFail() || window)
    return call.returns(UINT_PTR{0});
  const Locked s;
  const UINT interval = std::clamp(milliseconds, USER_TIMER_MINIMUM, USER_TIMER_MAXIMUM);
  const std::int64_t due = desktop::detail::clockNow(*s) + interval;
  s->timers.push_back({++s->lastTimerId, GetCurrentThreadId(), interval, due, procedure});
  return call.returns(s->lastTimerId);
}

BOOL WINAPI KillTimer(HWND window, UINT_PTR timerId) {
  desktop::detail::Call call("KillTimer", timerId);
  const Locked s;
  const auto timer = ownTimer(*s, timerId);
  if (call.mustFail() || window || timer == s->timers.end())
    return call.returns(FALSE);
  s->timers.erase(timer);
  return call.returns(TRUE);
}

BOOL WINAPI GetMessageW(MSG* message, HWND, UINT, UINT) {
  State& s = state();
  std::unique_lock<std::mutex> lock(s.mutex);
  for (;;) {
    if (takeTimer(s, desktop::detail::clockNow(s), *message))
      return 1;
    const Timer* const timerP = nextTimer(s);
    if (!timerP || s.isClockHeld) {
      s.changed.wait(lock);
      continue;
    }
    // One millisecond more, since the current one may have begun.
    const std::int64_t rest = timerP->due - desktop::detail::clockNow(s);
    s.changed.wait_for(lock, std::chrono::milliseconds(rest + 1));
  }
}

BOOL WINAPI TranslateMessage(const MSG*) {
  return FALSE;
}

LRESULT WINAPI DispatchMessageW(const MSG* message) {
  if (message->message != WM_TIMER || message->lParam == 0)
    return 0;
  DWORD ticks = 0;
  {
    const Locked s;
    // The timer may have been killed since its message was taken, and its module may be gone by now.
    if (ownTimer(*s, message->wParam) == s->timers.end())
      return 0;
    ticks = desktop::detail::ticksNow(*s);
  }
  const call_log::Bracket bracket("TimerProc");
  reinterpret_cast<TIMERPROC>(message->lParam)(message->hwnd, message->message, message->wParam, ticks);
  return 0;
}
