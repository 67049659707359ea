#include "report.h"
#include "state.h"

#include <chrono>
#include <ctime>
#include <thread>

using desktop::detail::Locked;
using desktop::detail::State;
using desktop::detail::state;

namespace {

// Real time that a sleep takes while the clock is held. Not zero, so that a loop that polls another thread
// leaves that thread time to run.
constexpr std::chrono::microseconds kWatchedNap(50);
constexpr std::chrono::milliseconds kOtherNap(1);

SYSTEMTIME partsOf(const timespec& moment) {
  tm parts{};
  gmtime_r(&moment.tv_sec, &parts);
  SYSTEMTIME time{};
  time.wYear = static_cast<WORD>(parts.tm_year + 1900);
  time.wMonth = static_cast<WORD>(parts.tm_mon + 1);
  time.wDayOfWeek = static_cast<WORD>(parts.tm_wday);
  time.wDay = static_cast<WORD>(parts.tm_mday);
  time.wHour = static_cast<WORD>(parts.tm_hour);
  time.wMinute = static_cast<WORD>(parts.tm_min);
  // Windows knows no leap second.
  time.wSecond = static_cast<WORD>(parts.tm_sec > 59 ? 59 : parts.tm_sec);
  time.wMilliseconds = static_cast<WORD>(moment.tv_nsec / 1000000);
  return time;
}

} // namespace

namespace desktop {

void holdClock() {
  const Locked s;
  s->heldTime = detail::clockNow(*s);
  s->isClockHeld = true;
  s->watchedThread = GetCurrentThreadId();
  s->sleeps.clear();
  s->changed.notify_all();
}

void releaseClock() {
  const Locked s;
  if (!s->isClockHeld)
    return;
  s->isClockHeld = false;
  // The clock continues from the held time, so that no timer jumps.
  s->clockSkew += s->heldTime - detail::clockNow(*s);
  s->changed.notify_all();
}

void advanceClock(DWORD milliseconds) {
  const Locked s;
  detail::setHeldTime(*s, s->heldTime + milliseconds);
}

void setTickStep(DWORD milliseconds) {
  const Locked s;
  s->tickStep = milliseconds;
}

void setTickCount(DWORD ticks) {
  const Locked s;
  s->tickOffset = static_cast<std::int64_t>(ticks) - detail::clockNow(*s);
}

void setTickSource(std::function<DWORD()> source) {
  const Locked s;
  s->tickSource = std::move(source);
}

void setSystemTime(const std::optional<SYSTEMTIME>& time) {
  const Locked s;
  s->systemTime = time;
}

std::vector<SleepRecord> sleeps() {
  const Locked s;
  return s->sleeps;
}

} // namespace desktop

DWORD WINAPI GetTickCount(void) {
  call_log::Traced call("GetTickCount");
  if (const std::function<DWORD()> source = Locked()->tickSource)
    return call.returns(source()); // without the lock: it may take its time
  const Locked s;
  const DWORD ticks = desktop::detail::ticksNow(*s);
  if (s->isClockHeld && s->tickStep > 0)
    desktop::detail::setHeldTime(*s, s->heldTime + s->tickStep);
  return call.returns(ticks);
}

void WINAPI GetSystemTime(SYSTEMTIME* time) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  *time = Locked()->systemTime.value_or(partsOf(now));
}

void WINAPI Sleep(DWORD milliseconds) {
  const call_log::Traced call("Sleep", milliseconds);
  const bool isWatched = desktop::detail::Locked()->watchedThread == GetCurrentThreadId();
  if (isWatched && call_log::Call::report("Sleep", call_log::shown(milliseconds)))
    return;
  {
    State& s = state();
    std::unique_lock<std::mutex> lock(s.mutex);
    if (!s.isClockHeld) {
      s.changed.wait_for(lock, std::chrono::milliseconds(milliseconds), [&s] { return s.isClockHeld; });
      return;
    }
    s.sleeps.push_back({isWatched, milliseconds});
    if (isWatched)
      desktop::detail::setHeldTime(s, s.heldTime + milliseconds);
  }
  std::this_thread::sleep_for(isWatched ? kWatchedNap : std::chrono::microseconds(kOtherNap));
}
