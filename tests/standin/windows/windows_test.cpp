#include "desktop_test.h"

namespace {

HWND add(HWND parent, const wchar_t* className, RECT rect) {
  desktop::Window window;
  window.className = className;
  window.rect = rect;
  window.parent = parent;
  return desktop::addWindow(window);
}

void show(HWND window, bool isVisible) {
  desktop::changeWindow(window, [isVisible](desktop::Window& record) { record.isVisible = isVisible; });
}

/// A main window at (100, 100) with two panels that overlap, and a list in the lower one.
class Windows : public DesktopTest {
protected:
  void setBars(desktop::ScrollBar vertical, desktop::ScrollBar horizontal) const {
    desktop::changeWindow(mList, [&](desktop::Window& record) {
      record.vertical = vertical;
      record.horizontal = horizontal;
    });
  }

  const HWND mMain = add(nullptr, L"Main", desktop::rectangle(100, 100, 400, 300));
  const HWND mUpper = add(mMain, L"Upper", desktop::rectangle(100, 100, 200, 200));
  const HWND mLower = add(mMain, L"Lower", desktop::rectangle(150, 150, 200, 200));
  const HWND mList = add(mLower, L"SysListView32", desktop::rectangle(200, 200, 100, 100));
};

} // namespace

TEST_F(Windows, TreeOfWindows) {
  const HWND second = add(nullptr, L"Second", desktop::rectangle(0, 0, 10, 10));
  EXPECT_EQ(GetParent(mList), mLower);
  EXPECT_EQ(GetWindow(mMain, GW_CHILD), mUpper);
  EXPECT_EQ(GetWindow(mUpper, GW_HWNDNEXT), mLower);
  EXPECT_EQ(GetWindow(mLower, GW_HWNDNEXT), nullptr);
  EXPECT_EQ(GetWindow(mMain, GW_HWNDNEXT), second);
  show(mMain, false);
  EXPECT_FALSE(IsWindowVisible(mList)) << "visible means visible all the way up";
  wchar_t name[14] = {};
  EXPECT_EQ(GetClassNameW(mList, name, 4), 3);
  EXPECT_STREQ(name, L"Sys");
  // Removed windows take their children along.
  desktop::removeWindow(mLower);
  RECT rect{1, 2, 3, 4};
  EXPECT_FALSE(GetWindowRect(mList, &rect));
  EXPECT_EQ(rect.bottom, 4);
  EXPECT_EQ(GetWindow(mUpper, GW_HWNDNEXT), nullptr);
  EXPECT_NE(add(mMain, L"New", {}), mList);
  EXPECT_THROW(add(mList, L"Orphan", {}), std::invalid_argument);
}

TEST_F(Windows, PointFindsTheTopmostVisibleWindow) {
  EXPECT_EQ(WindowFromPoint({50, 50}), nullptr);
  EXPECT_EQ(WindowFromPoint({250, 250}), mUpper);
  show(mUpper, false);
  EXPECT_EQ(WindowFromPoint({250, 250}), mList);
  EXPECT_EQ(WindowFromPoint({199, 199}), mLower);
  EXPECT_EQ(WindowFromPoint({499, 399}), mMain);
  EXPECT_EQ(WindowFromPoint({500, 399}), nullptr);
  const RECT edges = desktop::rectangle(200, 200, 100, 100);
  EXPECT_TRUE(PtInRect(&edges, {200, 200}) && PtInRect(&edges, {299, 299}));
  EXPECT_FALSE(PtInRect(&edges, {300, 250}) || PtInRect(&edges, {250, 300}));
  show(mUpper, true);
  desktop::raiseWindow(mLower);
  EXPECT_EQ(WindowFromPoint({250, 250}), mList);
}

TEST_F(Windows, ScrollInfoFillsWhatIsAskedFor) {
  setBars({0, 250, 20, 7}, {1, 90, 10, 5});
  SCROLLINFO info{};
  info.cbSize = sizeof(info);
  info.fMask = SIF_ALL;
  EXPECT_TRUE(GetScrollInfo(mList, SB_VERT, &info));
  EXPECT_EQ(info.nMax, 250);
  EXPECT_EQ(info.nPage, 20u);
  EXPECT_EQ(info.nPos, 7);
  info.fMask = SIF_POS;
  EXPECT_TRUE(GetScrollInfo(mList, SB_HORZ, &info));
  EXPECT_EQ(info.nMax, 250);
  EXPECT_EQ(info.nPos, 5);

  info.fMask = SIF_ALL;
  EXPECT_FALSE(GetScrollInfo(mUpper, SB_VERT, &info));
  EXPECT_FALSE(GetScrollInfo(nullptr, SB_VERT, &info));
  EXPECT_FALSE(GetScrollInfo(mList, 2, &info));
  info.cbSize = 20;
  EXPECT_FALSE(GetScrollInfo(mList, SB_VERT, &info));
  EXPECT_EQ(info.nPos, 5);
}

TEST_F(Windows, LinesMoveABarWithinItsRange) {
  struct Case {
    UINT message;
    WPARAM line;
    int times;
    int vertical, horizontal; // positions after that
  };
  setBars({0, 10, 4, 6}, {5, 20, 0, 6});
  for (const Case& c : {Case{WM_VSCROLL, SB_LINEDOWN, 2, 7, 6}, Case{WM_VSCROLL, SB_LINEUP, 1, 6, 6},
                        Case{WM_HSCROLL, SB_LINELEFT, 3, 6, 5}, Case{WM_HSCROLL, SB_LINERIGHT, 30, 6, 20}}) {
    for (int i = 0; i < c.times; ++i)
      SendMessageW(mList, c.message, c.line, 0);
    EXPECT_EQ(desktop::window(mList).vertical->position, c.vertical);
    EXPECT_EQ(desktop::window(mList).horizontal->position, c.horizontal);
  }
  setBars({0, 10, 11, 0}, {0, 10, 50, 0}); // all of the list is seen
  SendMessageW(mList, WM_VSCROLL, SB_LINEDOWN, 0);
  EXPECT_EQ(desktop::window(mList).vertical->position, 0);
}

TEST_F(Windows, WheelIsCountedWithItsSignAndMessagesAreKept) {
  for (const WPARAM notch : {0x00780000u, 0x00780000u, 0xFF880000u})
    SendMessageW(mList, WM_MOUSEWHEEL, notch, MAKELPARAM(200, 201));
  SendMessageW(nullptr, WM_USER, 1, 2);
  const desktop::Window record = desktop::window(mList);
  EXPECT_EQ(record.wheelNotches, 1);
  ASSERT_EQ(record.sent.size(), 3u);
  EXPECT_EQ(record.sent[2].lParam, 0x00C900C8);
  EXPECT_EQ(record.sent[2].wParam, 0xFF880000u);
  EXPECT_TRUE(UpdateWindow(mList));
  EXPECT_EQ(desktop::window(mList).updates, 1);
  EXPECT_FALSE(UpdateWindow(nullptr));
}
