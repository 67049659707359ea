#include "state.h"

#include <chrono>
#include <stdexcept>

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
  if (!s.isClockHeld)
    throw std::logic_error("the clock is not held");
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
  const detail::Locked s;
  static_cast<detail::Records&>(*s) = {};
  s->changed.notify_all();
}

} // namespace desktop
