// Controls under the pointer that the cap scrolls. Needs the desktop of records. The traces and transcripts
// hold which controls are found, and what they are sent.

#ifndef _WIN32

#include <string>

#include "calls.h"
#include "desktop.h"
#include "engine_rig.h"
#include "fault_loop.h"

using Lines = std::vector<std::string>;

namespace {

class Scrolling : public EngineTest {
protected:
  void SetUp() override {
    EngineTest::SetUp();
    desktop::setTickStep(0);
    desktop::Window main;
    main.className = L"HostFrame";
    main.rect = desktop::rectangle(-100, 0, 900, 600);
    mMain = desktop::addWindow(main);
    SetCursorPos(50, 60);
  }

  /// A window of the given class under the pointer, in the middle of a list of 250 lines both ways.
  HWND control(const std::wstring& className, const desktop::ScrollBar& bar = {0, 250, 10, 100}) {
    desktop::Window window;
    window.className = className;
    window.rect = desktop::rectangle(0, 0, 200, 200);
    window.parent = mMain;
    window.vertical = window.horizontal = bar;
    mControl = desktop::addWindow(window);
    return mControl;
  }

  /// What the control was sent since the last call, each as "message wParam lParam", hexadecimal.
  Lines takeSent() {
    Lines found;
    desktop::changeWindow(mControl, [&found](desktop::Window& window) {
      for (const desktop::SentMessage& sent : window.sent) {
        char text[64];
        std::snprintf(text, sizeof text, "%X %llX %llX", sent.message,
                      static_cast<unsigned long long>(sent.wParam),
                      static_cast<unsigned long long>(sent.lParam));
        found.push_back(text);
      }
      window.sent.clear();
    });
    return found;
  }
  /// This thread's sleeps since the last call.
  std::vector<DWORD> takeSleeps() {
    const std::vector<desktop::SleepRecord> all = desktop::sleeps();
    std::vector<DWORD> found;
    for (; mSleepsSeen < all.size(); ++mSleepsSeen) {
      if (all[mSleepsSeen].isWatched)
        found.push_back(all[mSleepsSeen].milliseconds);
    }
    return found;
  }

  HWND mMain = nullptr;
  HWND mControl = nullptr;
  std::size_t mSleepsSeen = 0;
};

TEST_F(Scrolling, WorkedExamples) {
  struct Case {
    desktop::ScrollBar bar;
    int z;
    std::size_t count; // of lines
    DWORD pause;
  };
  const Case cases[] = {
      {{0, 250, 10, 100}, 100, 2, 100},
      {{0, 20, 5, 10}, 100, 1, 130},
      {{0, 5000, 5, 10}, 2, 10, 149},
      {{0, 250, 10, 241}, 100, 0, 100}, // at the end nothing is sent, and the pause is made all the same
      {{0, 2147483647, 2147483647, 2147483647}, 300, 0, 1},
      {{0, 2147483647, 4294967295u, 1}, 300, 0, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "max " << c.bar.max << " page " << c.bar.page);
    control(L"SysTreeView32", c.bar);
    EXPECT_TRUE(pass(0, 0, c.z));
    EXPECT_EQ(takeSent(), Lines(c.count, "115 1 0"));
    EXPECT_EQ(takeSleeps(), std::vector<DWORD>{c.pause});
    desktop::removeWindow(mControl);
  }
  EXPECT_EQ(host::viewCounts().updates, 0);
}

TEST_F(Scrolling, SwitchedOffNobodyLooksAtTheDesktop) {
  control(L"ListBox");
  plugin().mScrollTreeAndList = false;
  calls::startRecording();
  EXPECT_FALSE(proxy().scrollTreesAndLists(0, 0, 100));
  EXPECT_EQ(calls::stopRecording(), Lines{});
  EXPECT_TRUE(proxy().toggleScrollMode());
  EXPECT_TRUE(proxy().scrollTreesAndLists(0, 0, 100)) << "from the next sample on";
}

TEST_F(Scrolling, PausesPaceTheTickAndNoMovementBegins) {
  control(L"SysListView32", {0, 250, 10, 100});
  setSample(0, 0, 100);
  TimerProc(nullptr, 0, 0, 0);
  // The time box of 500 ms is looked at between passes of 100 ms each.
  EXPECT_EQ(takeSleeps(), std::vector<DWORD>(6, 100));
  EXPECT_EQ(takeSent().size(), 12u);
  EXPECT_FALSE(proxy().mCapIsMoving);
  ASSERT_EQ(desktop::activeTimers().size(), 1u);
  EXPECT_EQ(desktop::activeTimers()[0].interval, 100u) << "ticks stay those of the rest";
  // A movement that comes over a list goes on as one, until the cap is released.
  SetCursorPos(500, 500);
  EXPECT_TRUE(pass(0, 0, 100));
  EXPECT_TRUE(proxy().mCapIsMoving);
  SetCursorPos(50, 60);
  EXPECT_TRUE(pass(0, 0, 100));
  EXPECT_EQ(takeSent().size(), 2u);
  EXPECT_TRUE(proxy().mCapIsMoving);
  release();
  EXPECT_FALSE(proxy().mCapIsMoving);
  EXPECT_EQ(host::viewCounts().storedViews, 1);
}

TEST_F(Scrolling, NoFaultOfWindowsReachesAnybody) {
  for (const wchar_t* const className : {L"ListBox", L"QWidget"}) {
    control(className, {0, 150, 10, 70});
    desktop::Window sibling; // something to walk over
    sibling.rect = desktop::rectangle(0, 0, 400, 400);
    sibling.parent = mMain;
    desktop::addWindow(sibling);
    bool isTaken = false;
    const std::set<std::string> struck = rig::forEachFault(
        [this] { takeRecords(); }, [&] { isTaken = proxy().scrollTreesAndLists(0, 0, 100); },
        [&](const std::string& operation, bool isThrow) {
          if (isThrow) {
            EXPECT_FALSE(isTaken) << "the view may have it";
          }
          EXPECT_EQ(takeRecords(), Lines{}) << operation;
          takeSent();
          EXPECT_TRUE(proxy().scrollTreesAndLists(0, 0, 100));
          EXPECT_EQ(takeSent().size(), 1u);
        });
    ASSERT_FALSE(HasFailure());
    for (const char* const operation :
         {"GetCursorPos", "WindowFromPoint", "GetWindowRect", "GetParent", "GetWindow", "PtInRect",
          "GetClassNameW", "WideCharToMultiByte", "SendMessageW", "Sleep"})
      EXPECT_EQ(struck.count(operation), 1u) << operation;
    EXPECT_EQ(struck.count("GetScrollInfo"), className[0] == L'L' ? 1u : 0u);
    desktop::removeWindow(mControl);
  }
}

} // namespace

#endif
