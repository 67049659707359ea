#include <algorithm>
#include <cmath>
#include <thread>

#include "state.h"

namespace host {

namespace {

/// The display's refreshes come at whole multiples of the period, whether or not anybody waits for them, and
/// each shows one frame at most.
void waitForRefresh(double hz) {
  using Clock = std::chrono::steady_clock;
  static const Clock::time_point sFirst = Clock::now();
  static Clock::time_point sLast = sFirst;
  const auto refreshAfter = [hz](Clock::time_point time) {
    const double count = std::floor(std::chrono::duration<double>(time - sFirst).count() * hz) + 1;
    return sFirst + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(count / hz));
  };
  const Clock::time_point next = std::max(refreshAfter(Clock::now()), refreshAfter(sLast));
  // Sleeps end early on systems that round them down to their own ticks.
  while (Clock::now() < next)
    std::this_thread::sleep_until(next);
  // A little later than it was, so that rounding can't make the same refresh the next one.
  sLast = next + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(0.25 / hz));
}

} // namespace

void noteMotion(AcDbEntity& entity, const AcGeMatrix3d& transform) {
  if (!state().frameSink || HostAccess::number(entity) == 0)
    return;
  auto& moved = document().moved;
  int& slot = HostAccess::movedSlot(entity);
  if (slot < 0) {
    slot = static_cast<int>(moved.size());
    moved.push_back({HostAccess::number(entity), transform});
    return;
  }
  Moved& own = moved[static_cast<size_t>(slot)];
  own.transform = transform * own.transform;
}

void showFrame(bool is2d) {
  State& s = state();
  Document& d = document();
  d.isRedrawPending = false;
  const auto asked = std::chrono::steady_clock::now();
  if (s.refreshRate > 0)
    waitForRefresh(s.refreshRate);
  if (!s.frameSink)
    return;
  for (const Moved& moved : d.moved)
    if (AcDbEntity* const entityP = d.modelSpace[static_cast<size_t>(moved.entity) - 1])
      HostAccess::movedSlot(*entityP) = -1;
  const Frame frame{is2d, d.view, layout(), std::move(d.moved), asked};
  d.moved.clear();
  const auto sink = s.frameSink; // it may set another one
  sink(frame);
}

void setFrameSink(std::function<void(const Frame&)> sink) {
  Document& d = document();
  for (const Moved& moved : d.moved)
    if (AcDbEntity* const entityP = d.modelSpace[static_cast<size_t>(moved.entity) - 1])
      HostAccess::movedSlot(*entityP) = -1;
  d.moved.clear();
  state().frameSink = std::move(sink);
}

void setRefreshRate(double hz) {
  state().refreshRate = hz > 0 ? hz : 0;
}

void showPending() {
  if (document().isRedrawPending)
    showFrame(isLayout());
}

} // namespace host
