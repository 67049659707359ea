#include "state.h"

#include <chrono>

namespace desktop {

namespace detail {

State& state() {
  static State* const stateP = new State;
  return *stateP;
}

std::int64_t clockNow(const State& s) {
  if (s.isClockHeld)
    return s.heldTime;
  const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(sinceStart).count() + s.clockSkew;
}

DWORD ticksNow(const State& s) {
  return static_cast<DWORD>(clockNow(s) + s.tickOffset);
}

void setHeldTime(State& s, std::int64_t time) {
  s.heldTime = time;
  s.changed.notify_all();
}

Window* find(State& s, HWND window) {
  const auto it = s.windows.find(number(window));
  return it == s.windows.end() ? nullptr : &it->second;
}

} // namespace detail

void reset() {
  releaseClock();
  detail::State& s = detail::state();
  const std::lock_guard<std::mutex> lock(s.mutex);
  s.windows.clear();
  s.lastNumber = 0;
  s.pointer = POINT{0, 0};
  s.tickOffset = 0;
  s.tickStep = 0;
  s.tickSource = nullptr;
  s.watchedThread = 0;
  s.systemTime.reset();
  s.sleeps.clear();
  s.quits.clear();
  // Timer numbers aren't reused: a callback that is about to kill its timer must not kill a new one.
  s.timers.clear();
  s.boxes.clear();
  s.boxAnswer = nullptr;
  s.modulePath.reset();
  s.changed.notify_all();
}

} // namespace desktop
