#include <algorithm>
#include <thread>

#include "frames.h"

namespace host {

namespace {

/// Waits for the display's next refresh. Refreshes come at whole multiples of the period, whether or not
/// anybody waits, and each shows one frame at most.
void waitForRefresh() {
  using Clock = std::chrono::steady_clock;
  using Seconds = std::chrono::duration<double>;
  static const Clock::time_point sFirst = Clock::now();
  State& s = state();
  const auto passed = static_cast<std::int64_t>(Seconds(Clock::now() - sFirst).count() * s.refreshRate);
  s.lastRefresh = std::max(passed, s.lastRefresh) + 1;
  const auto next = sFirst + std::chrono::duration_cast<Clock::duration>(
                                 Seconds(static_cast<double>(s.lastRefresh) / s.refreshRate));
  // Sleeps end early on systems that round them down to their own ticks.
  while (Clock::now() < next)
    std::this_thread::sleep_until(next);
}

/// Returns the way back of a motion that turns and shifts.
AcGeMatrix3d reversed(const AcGeMatrix3d& motion) {
  AcGeMatrix3d turn;
  for (int row = 0; row < 3; ++row)
    for (int column = 0; column < 3; ++column)
      turn.entry[row][column] = motion.entry[column][row];
  return turn * AcGeMatrix3d::translation(motion.translation() * -1.0);
}

void addMotion(int number, const AcGeMatrix3d& transform) {
  if (!state().frameSink)
    return;
  auto& moved = document().moved;
  const auto known = moved.find(number);
  moved[number] = known == moved.end() ? transform : transform * known->second;
}

} // namespace

bool undo() {
  Document& d = document();
  if (d.undone.empty())
    return false;
  for (const auto& [number, back] : d.undone.back()) {
    d.modelSpace[static_cast<std::size_t>(number) - 1]->subTransformBy(back);
    addMotion(number, back);
  }
  d.undone.pop_back();
  return true;
}

void noteMotion(int number, const AcGeMatrix3d& transform) {
  if (number == 0)
    return;
  AcGeMatrix3d& back = document().movement[number];
  back = back * reversed(transform);
  addMotion(number, transform);
}

void showFrame(bool is2d) {
  State& s = state();
  Document& d = document();
  d.isRedrawPending = false;
  if (s.frameSink) {
    Frame frame{is2d, d.view, layout(), {}};
    for (const auto& [number, transform] : d.moved)
      frame.moved.push_back({number, transform});
    d.moved.clear();
    const auto sink = s.frameSink; // it may set another one
    sink(frame);
  }
  if (s.refreshRate > 0)
    waitForRefresh();
  if (s.onShown)
    s.onShown();
}

void setFrameSink(std::function<void(const Frame&)> sink, std::function<void()> onShown) {
  document().moved.clear();
  state().frameSink = std::move(sink);
  state().onShown = std::move(onShown);
}

void setRefreshRate(double hz) {
  state().refreshRate = hz > 0 ? hz : 0;
  state().lastRefresh = 0;
}

void showPending() {
  if (document().isRedrawPending)
    showFrame(isLayout());
}

} // namespace host
