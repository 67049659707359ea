// The pump on real timers, from a real message loop.

#include <functional>
#include <vector>

#include "engine_rig.h"

namespace {

std::vector<DWORD> gTicks; // when the ticks of the pump's timer were dispatched

/// Dispatches messages until something holds. Returns false if that takes longer, in milliseconds.
bool dispatchUntil(DWORD longest, const std::function<bool()>& holds) {
  const DWORD start = GetTickCount();
  while (!holds()) {
    if (GetTickCount() - start > longest)
      return false;
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      if (message.message == WM_TIMER)
        gTicks.push_back(GetTickCount());
      DispatchMessageW(&message);
    }
    Sleep(1);
  }
  return true;
}

class RealTimers : public EngineTest {
protected:
  void SetUp() override {
    EngineTest::SetUp();
    SetCursorPos(2, 2); // on no control
    plugin().mScrollTreeAndList = false;
  }
  /// Returns the shortest time between two of the next ticks, milliseconds. A busy machine makes others longer.
  static DWORD shortestInterval() {
    gTicks.clear();
    EXPECT_TRUE(dispatchUntil(60000, [] { return gTicks.size() > 20; }));
    DWORD shortest = 60000;
    for (std::size_t i = 1; i < gTicks.size(); ++i)
      shortest = (std::min)(shortest, gTicks[i] - gTicks[i - 1]);
    return shortest;
  }
};

TEST_F(RealTimers, KeepTheirIntervals) {
  const DWORD start = GetTickCount();
  restart({{"maxContMoveTime", "1"}}); // a tick takes next to no time
  plugin().mScrollTreeAndList = false;
  gTicks.clear();
  ASSERT_TRUE(dispatchUntil(20000, [] { return !gTicks.empty(); }));
  EXPECT_GE(gTicks[0] - start, 90u) << "the first tick";
  EXPECT_GE(shortestInterval(), 90u) << "at rest";
  setSample(1, 0, 0);
  const DWORD moving = shortestInterval();
  EXPECT_GE(moving, 9u) << "never rests";
  EXPECT_LT(moving, 60u);
  setSample(0, 0, 0);
}

TEST_F(RealTimers, LongTickIsNotReentered) {
  int depth = 0, deepest = 0, frames = 0;
  host::setFrameSink([&](const host::Frame&) {
    deepest = std::max(deepest, ++depth);
    if (++frames == 1) // a dialog of the host's, say, with a message loop of its own
      dispatchUntil(400, [] { return false; });
    --depth;
  });
  setSample(1, 0, 0);
  EXPECT_TRUE(dispatchUntil(20000, [&] { return frames > 3; }));
  EXPECT_EQ(deepest, 1);
  host::setFrameSink(nullptr);
  release();
}

} // namespace
