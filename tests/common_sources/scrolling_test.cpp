// Controls under the pointer that the cap scrolls. Needs the desktop of records. The traces and transcripts
// hold which controls are found, and what they are sent.

#ifndef _WIN32

#include "call_log.h"
#include "desktop.h"
#include "engine_rig.h"

using Lines = std::vector<std::string>;

namespace {

/// A list of 250 lines under the pointer, in their middle both ways.
class Scrolling : public EngineTest {
protected:
  void SetUp() override {
    EngineTest::SetUp();
    desktop::setTickStep(0);
    desktop::Window window;
    window.className = L"SysListView32";
    window.rect = desktop::rectangle(0, 0, 200, 200);
    window.vertical = window.horizontal = desktop::ScrollBar{0, 250, 10, 100};
    mControl = desktop::addWindow(window);
    SetCursorPos(50, 60);
  }
  /// Messages that the list has got.
  std::size_t sent() { return desktop::window(mControl).sent.size(); }

  HWND mControl = nullptr;
};

TEST_F(Scrolling, SwitchedOffNobodyLooksAtTheDesktopAndAThrowLeavesTheSampleToTheView) {
  plugin().mScrollTreeAndList = false;
  call_log::startRecording();
  EXPECT_FALSE(proxy().scrollTreesAndLists(0, 0, 100));
  EXPECT_EQ(call_log::stopRecording(), Lines{});
  EXPECT_TRUE(proxy().toggleScrollMode());
  EXPECT_TRUE(proxy().scrollTreesAndLists(0, 0, 100)) << "from the next sample on";
  for (const char* const operation : {"GetCursorPos", "GetScrollInfo", "SendMessageW", "Sleep"}) {
    call_log::throwAt(operation, 1);
    EXPECT_FALSE(proxy().scrollTreesAndLists(0, 0, 100));
    EXPECT_EQ(call_log::lastFault(), operation);
    call_log::clear();
  }
  EXPECT_EQ(takeRecords(), Lines{});
}

TEST_F(Scrolling, PausesPaceTheTickAndNoMovementBegins) {
  setSample(0, 0, 100);
  TimerProc(nullptr, 0, 0, 0);
  // The time box of 500 ms is looked at between passes of 100 ms each.
  EXPECT_EQ(sent(), 12u);
  EXPECT_FALSE(proxy().mCapIsMoving);
  ASSERT_EQ(desktop::activeTimers().size(), 1u);
  EXPECT_EQ(desktop::activeTimers()[0].interval, 100u) << "ticks stay those of the rest";
  // A movement that comes over a list goes on as one, until the cap is released.
  SetCursorPos(500, 500);
  EXPECT_TRUE(pass(0, 0, 100));
  EXPECT_TRUE(proxy().mCapIsMoving);
  SetCursorPos(50, 60);
  EXPECT_TRUE(pass(0, 0, 100));
  EXPECT_EQ(sent(), 14u);
  EXPECT_TRUE(proxy().mCapIsMoving);
  release();
  EXPECT_FALSE(proxy().mCapIsMoving);
  EXPECT_EQ(host::viewCounts().storedViews, 1);
}

} // namespace

#endif
