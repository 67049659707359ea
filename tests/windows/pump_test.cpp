// The pump on real timers, from a real message loop.

#include <functional>

#include "engine_rig.h"

namespace {

/// Dispatches messages until something holds. Returns the milliseconds it took, or -1.
int dispatchUntil(int longest, const std::function<bool()>& holds) {
  const DWORD start = GetTickCount();
  while (!holds()) {
    if (GetTickCount() - start > static_cast<DWORD>(longest))
      return -1;
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
      DispatchMessageW(&message);
    Sleep(1);
  }
  return static_cast<int>(GetTickCount() - start);
}

class RealTimers : public EngineTest {
protected:
  void SetUp() override {
    EngineTest::SetUp();
    restart({{"maxContMoveTime", "1"}}); // a tick takes next to no time
    SetCursorPos(2, 2);                  // on no control
    plugin().mScrollTreeAndList = false;
  }
  /// Returns the milliseconds until the view has moved that often.
  int timeOfFrames(int count) {
    int frames = 0;
    host::setFrameSink([&](const host::Frame&) { ++frames; });
    setSample(1, 0, 0);
    const int took = dispatchUntil(20000, [&] { return frames >= count; });
    host::setFrameSink(nullptr);
    return took;
  }
};

TEST_F(RealTimers, KeepTheirIntervals) {
  EXPECT_GE(timeOfFrames(1), 80) << "a tenth of a second at rest";
  const int moving = timeOfFrames(20);
  EXPECT_GE(moving, 10 * 19);
  EXPECT_LT(moving, 90 * 19);
  release();
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

TEST_F(RealTimers, UnloadStopsThem) {
  stop();
  MSG message;
  Sleep(400);
  EXPECT_FALSE(PeekMessageW(&message, nullptr, WM_TIMER, WM_TIMER, PM_REMOVE));
}

} // namespace
