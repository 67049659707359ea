// Controls under the pointer that the cap scrolls. Needs the desktop of records.

#ifndef _WIN32

#include <string>

#include "calls.h"
#include "desktop.h"
#include "engine_rig.h"
#include "fault_loop.h"

using Lines = std::vector<std::string>;

namespace {

constexpr int kWidest = 32767;

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
  HWND add(HWND parent, const RECT& rect, bool isVisible = true) {
    desktop::Window window;
    window.className = L"Box";
    window.rect = rect;
    window.parent = parent;
    window.isVisible = isVisible;
    return desktop::addWindow(window);
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
  void setVertical(const desktop::ScrollBar& bar) {
    desktop::changeWindow(mControl, [&bar](desktop::Window& window) { window.vertical = bar; });
  }

  HWND mMain = nullptr;
  HWND mControl = nullptr;
  std::size_t mSleepsSeen = 0;
};

TEST_F(Scrolling, ClassNameTellsWhatCanBeScrolled) {
  const Lines lines = {"115 1 0", "115 1 0"};
  const Lines wheel = {"20A FF880000 3C0032"};
  const std::pair<const wchar_t*, Lines> cases[] = {{L"SysTreeView32", lines},
                                                    {L"WindowsForms.SysTreeView32.app", lines},
                                                    {L"MyTreeViewControl", lines},
                                                    {L"SysListView32", lines},
                                                    {L"ComboListBox", lines},
                                                    {L"ListBox", lines},
                                                    {L"Edit", lines},
                                                    {L"RICHEdit50W", lines},
                                                    {L"QWidget", wheel},
                                                    {L"QWidgetWindow", {}},
                                                    {L"MyQWidget", {}},
                                                    {L"Qt5QWindow", {}},
                                                    {L"edit", {}},
                                                    {L"LISTBOX", {}},
                                                    {L"systreeview32", {}},
                                                    {L"Button", {}},
                                                    {L"", {}},
                                                    {L"TreeWiew", {}}};
  for (const auto& [className, sent] : cases) {
    SCOPED_TRACE(std::string(className, className + std::wcslen(className)));
    control(className);
    const auto before = host::viewCounts().updates;
    EXPECT_TRUE(pass(0, 0, 100));
    EXPECT_EQ(takeSent(), sent);
    EXPECT_EQ(host::viewCounts().updates - before, sent.empty() ? 1 : 0) << "one of them takes the sample";
    EXPECT_EQ(proxy().mCapIsMoving, sent.empty());
    EXPECT_EQ(takeSleeps(), sent.empty() ? std::vector<DWORD>{} : std::vector<DWORD>{100});
    EXPECT_EQ(desktop::window(mControl).updates, sent == wheel ? 1 : 0);
    release();
    desktop::removeWindow(mControl);
  }
}

TEST_F(Scrolling, StrongestAxisSetsDirection) {
  struct Case {
    int x, y, z;
    const char* sent;
  };
  const Case cases[] = {{400, 0, 0, "114 1 0"},     {-400, 0, 0, "114 0 0"},   {0, 0, 400, "115 1 0"},
                        {0, 0, -400, "115 0 0"},    {0, 400, 0, "115 0 0"},    {0, -400, 0, "115 1 0"},
                        {0, 400, -300, "115 0 0"},  {0, 300, 300, "115 1 0"},  {0, 300, -300, "115 0 0"},
                        {0, -400, -300, "115 1 0"}, {401, 400, 0, "114 1 0"},  {-400, -401, 0, "115 1 0"},
                        {0, -32768, 0, "115 1 0"},  {-32768, 0, 0, "114 0 0"}, {32767, -32768, 0, "115 1 0"}};
  control(L"ListBox", {0, 150, 10, 70});
  for (const Case& c : cases) {
    EXPECT_TRUE(pass(c.x, c.y, c.z));
    EXPECT_EQ(takeSent(), Lines{c.sent}) << c.x << " " << c.y << " " << c.z;
  }
  EXPECT_EQ(host::viewCounts().updates, 0);
}

TEST_F(Scrolling, WheelTurnsOneNotchWhateverTheDeflection) {
  control(L"QWidget");
  struct Case {
    int x, y, z;
    Lines sent;
    DWORD pause;
  };
  const Case cases[] = {{0, 0, 1, {"20A FF880000 3C0032"}, 150},
                        {0, 0, -100, {"20A 780000 3C0032"}, 100},
                        {300, 0, 0, {"20A FF880000 3C0032"}, 1},
                        {-298, 0, 0, {"20A 780000 3C0032"}, 1},
                        {-297, 0, 0, {"20A 780000 3C0032"}, 2},
                        {0, kWidest, 0, {"20A 780000 3C0032"}, 1},
                        {5, 5, 0, {}, 148},
                        {-7, 0, 7, {}, 147},
                        {0, -50, 20, {"20A FF880000 3C0032"}, 125}};
  int updates = 0;
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.x << " " << c.y << " " << c.z);
    EXPECT_TRUE(pass(c.x, c.y, c.z));
    EXPECT_EQ(takeSent(), c.sent);
    EXPECT_EQ(takeSleeps(), std::vector<DWORD>{c.pause});
    updates += c.sent.empty() ? 0 : 1;
    EXPECT_EQ(desktop::window(mControl).updates, updates);
  }
  // A sample that only rotates is spent too.
  EXPECT_TRUE(pass(0, 0, 0, 500, 0, 0));
  EXPECT_EQ(takeSent(), Lines{});
  EXPECT_EQ(takeSleeps(), std::vector<DWORD>{150});
  // On a screen to the left of the first one.
  SetCursorPos(-5, 300);
  desktop::changeWindow(mControl, [](desktop::Window& w) { w.rect = desktop::rectangle(-50, 0, 100, 400); });
  EXPECT_TRUE(pass(0, 0, -1));
  EXPECT_EQ(takeSent(), Lines{"20A 780000 12CFFFB"});
  EXPECT_EQ(host::viewCounts().updates, 0);
}

TEST_F(Scrolling, UndecidedSampleOnAListIsSwallowedWithoutAPause) {
  control(L"SysListView32");
  calls::startRecording();
  EXPECT_TRUE(pass(5, 5, 0));
  EXPECT_TRUE(pass(0, 0, 0, 500, 0, 0));
  EXPECT_TRUE(pass(-9, 3, 9));
  for (const std::string& call : calls::stopRecording()) {
    EXPECT_NE(call.substr(0, 5), "Sleep");
    EXPECT_NE(call.substr(0, 13), "GetScrollInfo");
  }
  EXPECT_EQ(takeSent(), Lines{});
  EXPECT_EQ(host::viewCounts().updates, 0);
}

TEST_F(Scrolling, RangeSetsBatchAndPause) {
  struct Case {
    desktop::ScrollBar bar;
    int z;
    std::size_t count; // of lines
    DWORD pause;
  };
  const Case cases[] = {
      {{0, 250, 10, 100}, 100, 2, 100},
      {{0, 250, 10, 100}, 300, 2, 1},
      {{0, 20, 5, 10}, 100, 1, 130},
      {{0, 99, 5, 10}, 100, 1, 100},
      {{0, 100, 5, 10}, 100, 1, 100},
      {{0, 199, 5, 10}, -100, 1, 100},
      {{0, 200, 5, 10}, -100, 2, 100},
      {{0, 999, 5, 10}, 0 + 1, 9, 150},
      {{0, 5000, 5, 10}, 2, 10, 149},
      {{0, 49, 5, 10}, 298, 1, 2},
      {{0, 50, 5, 10}, 298, 1, 1},
      {{0, 1, 1, 0}, 1, 1, 199},
      // At the ends nothing is sent, and the pause is made all the same.
      {{0, 250, 10, 0}, -100, 0, 100},
      {{0, 250, 10, 1}, -100, 2, 100},
      {{0, 250, 10, 241}, 100, 0, 100},
      {{0, 250, 10, 240}, 100, 2, 100},
      {{0, 10, 11, 0}, 100, 0, 140},
      {{0, 10, 11, 0}, -100, 0, 140},
      {{0, 2147483647, 2147483647, 2147483647}, 300, 0, 1},
      {{0, 2147483647, 4294967295u, 1}, 300, 0, 1},
  };
  control(L"SysTreeView32");
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "max " << c.bar.max << " page " << c.bar.page << " at "
                                    << c.bar.position << ", z " << c.z);
    setVertical(c.bar);
    EXPECT_TRUE(pass(0, 0, c.z));
    EXPECT_EQ(takeSent(), Lines(c.count, c.z < 0 ? "115 0 0" : "115 1 0"));
    EXPECT_EQ(takeSleeps(), std::vector<DWORD>{c.pause});
  }
  EXPECT_EQ(host::viewCounts().updates, 0);
}

TEST_F(Scrolling, LastBatchRunsOnAndTheControlStops) {
  control(L"SysListView32", {0, 1000, 10, 988});
  EXPECT_TRUE(pass(0, 0, 100));
  EXPECT_EQ(takeSent().size(), 10u) << "by the position before the batch";
  EXPECT_EQ(desktop::window(mControl).vertical->position, 991);
  EXPECT_TRUE(pass(0, 0, 100));
  EXPECT_EQ(takeSent(), Lines{});
}

TEST_F(Scrolling, ListWithNothingToScrollGivesTheSampleToTheView) {
  control(L"SysListView32");
  for (const desktop::ScrollBar& bar : {desktop::ScrollBar{0, 0, 1, 0},
                                        {-1, 250, 10, 0},
                                        {-20, -10, 1, 0},
                                        {10, 5, 1, 0},
                                        {7, 7, 1, 7},
                                        {0, 250, 0, 100}}) {
    setVertical(bar);
    const auto before = host::viewCounts().updates;
    EXPECT_TRUE(pass(0, 0, 100));
    EXPECT_EQ(host::viewCounts().updates - before, 1) << bar.min << " " << bar.max << " " << bar.page;
    EXPECT_TRUE(pass(100, 0, 0)); // the other bar has something
    EXPECT_EQ(takeSent(), (Lines{"114 1 0", "114 1 0"}));
    EXPECT_EQ(takeSleeps(), std::vector<DWORD>{100});
    release();
  }
  desktop::changeWindow(mControl, [](desktop::Window& window) { window.vertical.reset(); });
  const auto before = host::viewCounts().updates;
  EXPECT_TRUE(pass(0, 0, 100));
  EXPECT_EQ(host::viewCounts().updates - before, 1) << "no such bar";
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

TEST_F(Scrolling, NoWindowNoScrolling) {
  SetCursorPos(5000, 5000);
  EXPECT_EQ(proxy().windowUnderPoint({5000, 5000}), nullptr);
  EXPECT_FALSE(proxy().scrollTreesAndLists(0, 0, 100));
}

TEST_F(Scrolling, SmallestWindowAtThePointIsFoundLevelByLevel) {
  const POINT point{50, 60};
  EXPECT_EQ(proxy().windowUnderPoint(point), mMain);
  // Siblings, topmost first. The frame covers them all and is what the system finds.
  const HWND frame = add(mMain, desktop::rectangle(0, 0, 400, 400));
  const HWND alone = frame;
  EXPECT_EQ(proxy().windowUnderPoint(point), alone);
  add(mMain, desktop::rectangle(0, 0, 400, 400)); // not smaller
  EXPECT_EQ(proxy().windowUnderPoint(point), frame);
  add(mMain, desktop::rectangle(0, 0, 100, 100), false); // not visible
  add(mMain, desktop::rectangle(51, 0, 100, 100));       // beside the point
  EXPECT_EQ(proxy().windowUnderPoint(point), frame);
  const HWND middle = add(mMain, desktop::rectangle(0, 0, 300, 300));
  EXPECT_EQ(proxy().windowUnderPoint(point), middle);
  const HWND small = add(mMain, desktop::rectangle(0, 0, 200, 200));
  add(mMain, desktop::rectangle(0, 0, 250, 250)); // smaller than the first, not than the best
  EXPECT_EQ(proxy().windowUnderPoint(point), small) << "the walk goes on to the end";
  // Down into the winner, and into its winner again. Children of one that lost don't count.
  add(middle, desktop::rectangle(40, 50, 20, 20));
  EXPECT_EQ(proxy().windowUnderPoint(point), small);
  add(small, desktop::rectangle(0, 0, 10, 10)); // beside the point
  EXPECT_EQ(proxy().windowUnderPoint(point), small);
  const HWND child = add(small, desktop::rectangle(0, 0, 150, 150));
  EXPECT_EQ(proxy().windowUnderPoint(point), child);
  add(small, desktop::rectangle(0, 0, 200, 200)); // as large as its parent, so no better
  const HWND grandchild = add(child, desktop::rectangle(0, 0, 100, 100));
  EXPECT_EQ(proxy().windowUnderPoint(point), grandchild);
}

TEST_F(Scrolling, WindowWithoutBetterSiblingsIsNotLookedInto) {
  const HWND frame = add(mMain, desktop::rectangle(0, 0, 400, 400));
  add(frame, desktop::rectangle(0, 0, 100, 100), false); // keeps the system from going further down
  calls::startRecording();
  EXPECT_EQ(proxy().windowUnderPoint({50, 60}), frame);
  EXPECT_EQ(calls::stopRecording(),
            (Lines{"WindowFromPoint 50 60", "GetWindowRect " + std::to_string(desktop::number(frame)),
                   "GetParent " + std::to_string(desktop::number(frame)),
                   "GetWindow " + std::to_string(desktop::number(frame)) + " 2"}));
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

TEST_F(Scrolling, LayoutsYieldToScrollingToo) {
  control(L"ListBox");
  host::setLayout(true);
  EXPECT_TRUE(pass(0, 0, 100));
  EXPECT_EQ(takeSent().size(), 2u);
  EXPECT_EQ(host::layout().viewHeight, 100);
  EXPECT_EQ(host::held().locks, 0);
}

TEST_F(Scrolling, NoFaultOfWindowsReachesAnybody) {
  for (const wchar_t* const className : {L"ListBox", L"QWidget"}) {
    control(className, {0, 150, 10, 70});
    add(mMain, desktop::rectangle(0, 0, 400, 400)); // something to walk over
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
