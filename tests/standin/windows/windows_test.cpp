#include "desktop_test.h"

namespace {

HWND add(HWND parent, const wchar_t* className, RECT rect) {
  desktop::Window window;
  window.className = className;
  window.rect = rect;
  window.parent = parent;
  return desktop::addWindow(window);
}

/// A main window at (100, 100) with two panels that overlap, and a list in the lower one.
class Windows : public DesktopTest {
protected:
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
  desktop::raiseWindow(mLower);
  EXPECT_EQ(WindowFromPoint({250, 250}), mList);
  desktop::changeWindow(mMain, [](desktop::Window& record) { record.isVisible = false; });
  EXPECT_FALSE(IsWindowVisible(mList)) << "visible means visible all the way up";
  wchar_t name[14] = {};
  EXPECT_EQ(GetClassNameW(mList, name, 4), 3);
  EXPECT_STREQ(name, L"Sys");
  // Removed windows take their children along.
  desktop::removeWindow(mLower);
  RECT rect{1, 2, 3, 4};
  EXPECT_FALSE(GetWindowRect(mList, &rect));
  EXPECT_EQ(rect.bottom, 4);
  EXPECT_EQ(GetWindow(mMain, GW_CHILD), mUpper);
  EXPECT_NE(add(mMain, L"New", {}), mList);
  EXPECT_THROW(add(mList, L"Orphan", {}), std::invalid_argument);
}

// What points find, and how bars and wheels move, the engine's traces of scrolling show.
TEST_F(Windows, ScrollInfoFillsWhatIsAskedForAndNothingElse) {
  desktop::changeWindow(mList, [](desktop::Window& record) {
    record.vertical = {0, 250, 20, 7};
    record.horizontal = {1, 90, 300, 5}; // all of the list is seen
  });
  SendMessageW(mList, WM_HSCROLL, SB_LINERIGHT, 0);
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
  EXPECT_EQ(info.nPos, 1);

  info.fMask = SIF_ALL;
  EXPECT_FALSE(GetScrollInfo(mUpper, SB_VERT, &info));
  EXPECT_FALSE(GetScrollInfo(nullptr, SB_VERT, &info));
  EXPECT_FALSE(GetScrollInfo(mList, 2, &info));
  info.cbSize = 20;
  EXPECT_FALSE(GetScrollInfo(mList, SB_VERT, &info));
  EXPECT_EQ(info.nPos, 1);
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
  EXPECT_FALSE(UpdateWindow(nullptr));
}
