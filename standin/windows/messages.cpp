#include "report.h"
#include "state.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>

using desktop::detail::Queue;
using desktop::detail::State;
using desktop::detail::state;
using desktop::detail::Timer;
using Guard = std::lock_guard<std::mutex>;

namespace {

/// Takes a thread's queue and timers away when the thread ends, as Windows does.
struct QueueOwner {
  DWORD threadId = 0;

  QueueOwner() = default;
  QueueOwner(const QueueOwner&) = delete;
  QueueOwner& operator=(const QueueOwner&) = delete;
  ~QueueOwner() {
    State& s = state();
    const Guard lock(s.mutex);
    s.queues.erase(threadId);
    s.timers.erase(std::remove_if(s.timers.begin(), s.timers.end(),
                                  [this](const Timer& timer) { return timer.threadId == threadId; }),
                   s.timers.end());
  }
};

/// The calling thread's queue, made at the first use.
std::shared_ptr<Queue> ownQueue(State& s) {
  thread_local QueueOwner owner;
  owner.threadId = GetCurrentThreadId();
  std::shared_ptr<Queue>& queue = s.queues[owner.threadId];
  if (!queue)
    queue = std::make_shared<Queue>();
  return queue;
}

/// Which messages a caller wants, and how.
struct MessageFilter {
  UINT first = 0;
  UINT last = 0; ///< both 0: all
  bool isToRemove = true;
  bool isQuitWanted = true;
  std::int64_t timersUpTo = INT64_MAX; ///< timers that fell due later stay

  bool matches(UINT message) const {
    return (first == 0 && last == 0) || (message >= first && message <= last);
  }
};

MSG makeMessage(const State& s, UINT message, WPARAM wParam, LPARAM lParam) {
  return MSG{nullptr, message, wParam, lParam, desktop::detail::ticksNow(s), s.pointer};
}

/// The calling thread's timer that falls due first, the one armed first among equals; or null.
Timer* nextTimer(State& s) {
  Timer* next = nullptr;
  for (Timer& timer : s.timers) {
    if (timer.threadId == GetCurrentThreadId() && (next == nullptr || timer.due < next->due))
      next = &timer;
  }
  return next;
}

/// The next message that lies ready. Timers come last: no message is made of one before somebody asks, so
/// there is never more than one of each under way, and a killed timer leaves nothing behind.
bool take(State& s, Queue& queue, const MessageFilter& filter, MSG& message) {
  const auto posted = std::find_if(queue.posted.begin(), queue.posted.end(), [&filter](const MSG& candidate) {
    return filter.matches(candidate.message);
  });
  if (posted != queue.posted.end()) {
    message = *posted;
    if (filter.isToRemove)
      queue.posted.erase(posted);
    return true;
  }
  if (queue.isQuitting && filter.isQuitWanted) {
    message = makeMessage(s, WM_QUIT, static_cast<WPARAM>(queue.exitCode), 0);
    if (filter.isToRemove)
      queue.isQuitting = false;
    return true;
  }
  Timer* const timer = filter.matches(WM_TIMER) ? nextTimer(s) : nullptr;
  const std::int64_t now = desktop::detail::clockNow(s);
  if (timer == nullptr || timer->due > std::min(now, filter.timersUpTo))
    return false;
  message = makeMessage(s, WM_TIMER, timer->id, reinterpret_cast<LPARAM>(timer->procedure));
  if (filter.isToRemove)
    timer->due = now + timer->interval;
  return true;
}

/// Waits until there may be something to take. The lock is given back meanwhile.
void waitForMessage(State& s, Queue& queue, const MessageFilter& filter, std::unique_lock<std::mutex>& lock) {
  const Timer* const timer = filter.matches(WM_TIMER) ? nextTimer(s) : nullptr;
  if (timer == nullptr || s.isClockHeld) {
    queue.arrived.wait(lock);
    return;
  }
  // Wholly in milliseconds, so one more makes up for the cut-off fraction of the one that runs.
  const std::int64_t rest = timer->due - desktop::detail::clockNow(s);
  queue.arrived.wait_for(lock, std::chrono::milliseconds(std::max<std::int64_t>(rest, 0) + 1));
}

int dispatchReady(std::int64_t timersUpTo) {
  State& s = state();
  MessageFilter filter;
  filter.isQuitWanted = false;
  filter.timersUpTo = timersUpTo;
  for (int count = 0;; ++count) {
    MSG message{};
    {
      const Guard lock(s.mutex);
      if (!take(s, *ownQueue(s), filter, message))
        return count;
    }
    DispatchMessageW(&message);
  }
}

} // namespace

namespace desktop {

std::vector<TimerRecord> activeTimers() {
  State& s = state();
  const Guard lock(s.mutex);
  const std::int64_t now = detail::clockNow(s);
  std::vector<TimerRecord> records;
  for (const Timer& timer : s.timers) {
    const std::int64_t dueIn = std::max<std::int64_t>(timer.due - now, 0);
    records.push_back({timer.id, timer.threadId, timer.interval, static_cast<UINT>(dueIn)});
  }
  return records;
}

int runMessages() {
  std::int64_t now = 0;
  {
    State& s = state();
    const Guard lock(s.mutex);
    now = detail::clockNow(s);
  }
  // Without this bound, a timer whose callback takes longer than its interval would keep us here for ever.
  return dispatchReady(now);
}

int runTimers(DWORD milliseconds) {
  State& s = state();
  std::unique_lock<std::mutex> lock(s.mutex);
  if (!s.isClockHeld)
    throw std::logic_error("runTimers: the clock is not held");
  const std::int64_t end = s.heldTime + milliseconds;
  int count = 0;
  for (;;) {
    lock.unlock();
    count += runMessages();
    lock.lock();
    if (s.heldTime >= end)
      return count;
    const Timer* const timer = nextTimer(s);
    const std::int64_t next = timer == nullptr ? end : std::min(timer->due, end);
    detail::setHeldTime(s, std::max(next, s.heldTime));
  }
}

} // namespace desktop

UINT_PTR WINAPI SetTimer(HWND window, UINT_PTR, UINT milliseconds, TIMERPROC procedure) {
  desktop::detail::Call call("SetTimer", milliseconds);
  if (call.mustFail() || window != nullptr)
    return call.returns(UINT_PTR{0});
  State& s = state();
  const Guard lock(s.mutex);
  ownQueue(s);
  Timer timer;
  timer.id = ++s.lastTimerId;
  timer.threadId = GetCurrentThreadId();
  timer.interval = std::clamp(milliseconds, USER_TIMER_MINIMUM, USER_TIMER_MAXIMUM);
  timer.due = desktop::detail::clockNow(s) + timer.interval;
  timer.procedure = procedure;
  s.timers.push_back(timer);
  return call.returns(timer.id);
}

BOOL WINAPI KillTimer(HWND window, UINT_PTR timerId) {
  desktop::detail::Call call("KillTimer", timerId);
  State& s = state();
  const Guard lock(s.mutex);
  const auto timer = std::find_if(s.timers.begin(), s.timers.end(), [timerId](const Timer& candidate) {
    return candidate.id == timerId && candidate.threadId == GetCurrentThreadId();
  });
  if (call.mustFail() || window != nullptr || timer == s.timers.end())
    return call.returns(FALSE);
  s.timers.erase(timer);
  return call.returns(TRUE);
}

BOOL WINAPI GetMessageW(LPMSG message, HWND window, UINT first, UINT last) {
  if (window != nullptr)
    return -1;
  State& s = state();
  std::unique_lock<std::mutex> lock(s.mutex);
  const std::shared_ptr<Queue> queue = ownQueue(s);
  MessageFilter filter;
  filter.first = first;
  filter.last = last;
  while (!take(s, *queue, filter, *message))
    waitForMessage(s, *queue, filter, lock);
  return message->message == WM_QUIT ? 0 : 1;
}

BOOL WINAPI PeekMessageW(LPMSG message, HWND window, UINT first, UINT last, UINT remove) {
  if (window != nullptr)
    return FALSE;
  State& s = state();
  const Guard lock(s.mutex);
  MessageFilter filter;
  filter.first = first;
  filter.last = last;
  filter.isToRemove = (remove & PM_REMOVE) != 0;
  return take(s, *ownQueue(s), filter, *message) ? TRUE : FALSE;
}

BOOL WINAPI TranslateMessage(const MSG*) {
  return FALSE;
}

LRESULT WINAPI DispatchMessageW(const MSG* message) {
  if (message->message != WM_TIMER || message->lParam == 0)
    return 0;
  const auto procedure = reinterpret_cast<TIMERPROC>(message->lParam);
  DWORD ticks = 0;
  {
    State& s = state();
    const Guard lock(s.mutex);
    // The timer may have been killed since its message was taken, and its module may be gone by now.
    const bool isArmed = std::any_of(s.timers.begin(), s.timers.end(), [&](const Timer& timer) {
      return timer.id == message->wParam && timer.procedure == procedure &&
             timer.threadId == GetCurrentThreadId();
    });
    if (!isArmed)
      return 0;
    ticks = desktop::detail::ticksNow(s);
  }
  const call_log::Bracket bracket("TimerProc");
  procedure(message->hwnd, message->message, message->wParam, ticks);
  return 0;
}

void WINAPI PostQuitMessage(int exitCode) {
  if (desktop::detail::Call("PostQuitMessage", exitCode).mustFail())
    return;
  State& s = state();
  const Guard lock(s.mutex);
  const std::shared_ptr<Queue> queue = ownQueue(s);
  queue->isQuitting = true;
  queue->exitCode = exitCode;
}

BOOL WINAPI PostThreadMessageW(DWORD threadId, UINT message, WPARAM wParam, LPARAM lParam) {
  using desktop::detail::Hex;
  if (desktop::detail::Call("PostThreadMessageW", threadId, Hex{message, 4}, Hex{wParam},
                            Hex{static_cast<std::uint64_t>(lParam)})
          .mustFail())
    return FALSE;
  State& s = state();
  const Guard lock(s.mutex);
  const auto entry = s.queues.find(threadId);
  if (entry == s.queues.end())
    return FALSE;
  entry->second->posted.push_back(makeMessage(s, message, wParam, lParam));
  entry->second->arrived.notify_all();
  return TRUE;
}
