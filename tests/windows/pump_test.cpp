// The pump on real timers, from a real message loop.

#include <functional>

#include "engine_rig.h"

namespace {

int gTicks = 0; // of the pump's timer, dispatched so far

/// Dispatches messages until something holds. Returns the milliseconds it took, or -1.
int dispatchUntil(int longest, const std::function<bool()>& holds) {
  const DWORD start = GetTickCount();
  while (!holds()) {
    if (GetTickCount() - start > static_cast<DWORD>(longest))
      return -1;
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      gTicks += message.message == WM_TIMER;
      DispatchMessageW(&message);
    }
    Sleep(1);
  }
  return static_cast<int>(GetTickCount() - start);
}

class RealTimers : public EngineTest {
protected:
  void SetUp() override {
    EngineTest::SetUp();
    SetCursorPos(2, 2); // on no control
    plugin().mScrollTreeAndList = false;
  }
  /// Returns the milliseconds of that many ticks.
  static int timeOfTicks(int count) {
    gTicks = 0;
    return dispatchUntil(20000, [count] { return gTicks >= count; });
  }
};

TEST_F(RealTimers, KeepTheirIntervals) {
  restart({{"maxContMoveTime", "1"}}); // a tick takes next to no time
  plugin().mScrollTreeAndList = false;
  EXPECT_GE(timeOfTicks(1), 80) << "a tenth of a second at rest";
  setSample(1, 0, 0);
  timeOfTicks(1);
  const int moving = timeOfTicks(20);
  EXPECT_GE(moving, 10 * 19) << "never rests";
  setSample(0, 0, 0);
  timeOfTicks(1);
  const int atRest = timeOfTicks(20);
  EXPECT_GT(atRest, 90 * 19);
  EXPECT_LT(3 * moving, atRest);
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
  EXPECT_GE(dispatchUntil(5000, [&] { return frames > 3; }), 0);
  EXPECT_EQ(deepest, 1);
  host::setFrameSink(nullptr);
  release();
}

} // namespace
