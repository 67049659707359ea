// The pump on real timers, from a real message loop.

#include <functional>

#include "engine_rig.h"

namespace {

int gTicks = 0; // of the pump's timer, dispatched so far

/// Dispatches messages until something holds; gives the milliseconds it took, or -1.
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
};

TEST_F(RealTimers, FirstTickComesAfterATenthOfASecond) {
  restart({{"maxContMoveTime", "1"}}); // the tick itself takes next to no time
  plugin().mScrollTreeAndList = false;
  setSample(100, 0, 0);
  const int took = dispatchUntil(3000, [] { return host::view().target.x != 0; });
  EXPECT_GE(took, 80);
  release();
}

TEST_F(RealTimers, TicksComeOnAndOnWhileTheCapMovesAndAtRest) {
  restart({{"maxContMoveTime", "1"}});
  plugin().mScrollTreeAndList = false;
  host::setFrameSink([](const host::Frame&) {});
  constexpr int kTicks = 20;
  setSample(1, 0, 0);
  const auto timeOfTicks = [] {
    gTicks = 0;
    return dispatchUntil(20000, [] { return gTicks >= kTicks; });
  };
  EXPECT_GE(dispatchUntil(3000, [this] { return proxy().mCapIsMoving; }), 0);
  const int moving = timeOfTicks();
  EXPECT_GE(moving, 10 * (kTicks - 1)) << "the pump has stopped, or never rests";
  setSample(0, 0, 0);
  EXPECT_GE(dispatchUntil(3000, [this] { return !proxy().mCapIsMoving; }), 0);
  const int atRest = timeOfTicks();
  EXPECT_GT(atRest, 90 * (kTicks - 1));
  EXPECT_LT(3 * moving, atRest);
  plugin().mPendingSpecial = 0x2000C;
  EXPECT_GE(dispatchUntil(3000, [this] { return plugin().mPendingSpecial == 0; }), 0)
      << "at rest keys are served";
}

TEST_F(RealTimers, TickThatRunsLongIsNotEnteredAgain) {
  int depth = 0;
  int deepest = 0;
  int frames = 0;
  host::setFrameSink([&](const host::Frame&) {
    ++frames;
    deepest = std::max(deepest, ++depth);
    if (frames == 1) // a dialog of the host's, say, with a message loop of its own
      dispatchUntil(400, [] { return false; });
    --depth;
  });
  setSample(1, 0, 0);
  EXPECT_GE(dispatchUntil(5000, [&] { return frames > 3; }), 0);
  EXPECT_EQ(deepest, 1);
  host::setFrameSink(nullptr);
  release();
}

TEST_F(RealTimers, NoneIsLeftAfterUnload) {
  stop();
  gTicks = 0;
  dispatchUntil(400, [] { return false; });
  EXPECT_EQ(gTicks, 0);
}

} // namespace
