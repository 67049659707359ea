// Scrolling of real controls: their own positions after samples of the cap, in both directions and at both
// ends.

#include <cmath>
#include <functional>
#include <future>
#include <thread>

#include "engine_rig.h"

#include <commctrl.h>

namespace {

constexpr int kFast = 400; // device counts; the pause behind a batch is a millisecond

int position(HWND window, int bar) {
  SCROLLINFO info = {};
  info.cbSize = sizeof info;
  info.fMask = SIF_ALL;
  GetScrollInfo(window, bar, &info);
  return info.nPos;
}

SCROLLINFO range(HWND window, int bar) {
  SCROLLINFO info = {};
  info.cbSize = sizeof info;
  info.fMask = SIF_ALL;
  GetScrollInfo(window, bar, &info);
  return info;
}

int gNotches = 0;

LRESULT CALLBACK onWheelWindow(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_MOUSEWHEEL) {
    gNotches += static_cast<short>(HIWORD(wParam)) / WHEEL_DELTA;
    return 0;
  }
  return DefWindowProcW(window, message, wParam, lParam);
}

class RealControls : public EngineTest {
protected:
  static void SetUpTestSuite() {
    INITCOMMONCONTROLSEX controls = {sizeof controls, ICC_TREEVIEW_CLASSES | ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&controls);
    for (const wchar_t* const name : {L"QWidget", L"Plain"}) {
      WNDCLASSW entry = {};
      entry.lpfnWndProc = onWheelWindow;
      entry.hInstance = GetModuleHandleW(nullptr);
      entry.lpszClassName = name;
      RegisterClassW(&entry);
    }
  }
  void SetUp() override {
    EngineTest::SetUp();
    gNotches = 0;
    mParent = add(nullptr, L"Plain", WS_POPUP, 10, 10, 700, 500);
    ShowWindow(mParent, SW_SHOW);
  }
  void TearDown() override {
    DestroyWindow(mParent);
    EngineTest::TearDown();
  }

  static HWND add(HWND parent, const wchar_t* className, DWORD style, int left, int top, int width,
                  int height) {
    return CreateWindowExW(0, className, L"", style | WS_VISIBLE | (parent ? WS_CHILD : 0), left, top, width,
                           height, parent, nullptr, GetModuleHandleW(nullptr), nullptr);
  }
  HWND listBox(int count) {
    const HWND window = add(mParent, L"ListBox", WS_VSCROLL | LBS_NOINTEGRALHEIGHT, 20, 20, 200, 200);
    for (int i = 0; i < count; ++i)
      SendMessageW(window, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(L"entry"));
    UpdateWindow(window);
    return window;
  }
  static void pointAt(HWND window) {
    RECT rect = {};
    GetWindowRect(window, &rect);
    SetCursorPos((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2);
  }
  bool scroll(int x, int y, int z) { return proxy().scrollTreesAndLists(x, y, z); }

  /// Lines of one batch, by the length of the range.
  static int batch(const SCROLLINFO& info) { return std::min(10, std::max(1, info.nMax / 100)); }

  HWND mParent = nullptr;
};

TEST_F(RealControls, TreesListsAndTextsScrollByTheirBatches) {
  const HWND tree = add(mParent, WC_TREEVIEWW, 0, 20, 20, 200, 200);
  for (int i = 0; i < 450; ++i) {
    TVINSERTSTRUCTW entry = {};
    entry.hInsertAfter = TVI_LAST;
    entry.item.mask = TVIF_TEXT;
    wchar_t text[] = L"node";
    entry.item.pszText = text;
    SendMessageW(tree, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&entry));
  }
  const HWND list = add(mParent, WC_LISTVIEWW, LVS_REPORT, 240, 20, 200, 200);
  LVCOLUMNW column = {};
  column.mask = LVCF_WIDTH;
  column.cx = 500;
  SendMessageW(list, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
  for (int i = 0; i < 330; ++i) {
    LVITEMW item = {};
    item.mask = LVIF_TEXT;
    item.iItem = i;
    wchar_t text[] = L"row";
    item.pszText = text;
    SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
  }
  const HWND edit =
      add(mParent, L"Edit", ES_MULTILINE | WS_VSCROLL | WS_HSCROLL | ES_AUTOHSCROLL, 20, 240, 200, 150);
  std::wstring text;
  for (int i = 0; i < 620; ++i)
    text += L"a line that is a good deal wider than the field that it stands in, so that it scrolls\r\n";
  SetWindowTextW(edit, text.c_str());

  for (const HWND window : {tree, list, edit, listBox(250)}) {
    wchar_t name[64] = {};
    GetClassNameW(window, name, 64);
    SCOPED_TRACE(testing::PrintToString(std::wstring(name)));
    BringWindowToTop(window);
    pointAt(window);
    const int lines = batch(range(window, SB_VERT));
    EXPECT_TRUE(scroll(0, 0, kFast));
    EXPECT_EQ(position(window, SB_VERT), lines);
    EXPECT_TRUE(scroll(0, 0, kFast));
    EXPECT_EQ(position(window, SB_VERT), 2 * lines);
    EXPECT_TRUE(scroll(0, kFast, 10)); // pulled up: the stronger of the two
    EXPECT_EQ(position(window, SB_VERT), lines);
    EXPECT_TRUE(scroll(kFast, 0, kFast)); // a tie scrolls nothing, and is spent
    EXPECT_EQ(position(window, SB_VERT), lines);
    EXPECT_TRUE(scroll(0, 0, -kFast));
    EXPECT_EQ(position(window, SB_VERT), 0);
    EXPECT_TRUE(scroll(0, 0, -kFast)) << "at its end it still takes the sample";
    EXPECT_EQ(position(window, SB_VERT), 0);
    for (int i = 0; i < 1000 && position(window, SB_VERT) + static_cast<int>(range(window, SB_VERT).nPage) <=
                                    range(window, SB_VERT).nMax;
         ++i)
      scroll(0, 0, kFast);
    const int last = position(window, SB_VERT);
    EXPECT_GT(last, 10 * lines);
    EXPECT_TRUE(scroll(0, 0, kFast));
    EXPECT_EQ(position(window, SB_VERT), last) << "beyond the end";
  }
  for (const HWND window : {list, edit}) {
    BringWindowToTop(window);
    pointAt(window);
    EXPECT_TRUE(scroll(kFast, 0, 0));
    const int right = position(window, SB_HORZ);
    EXPECT_GT(right, 0);
    EXPECT_TRUE(scroll(-kFast, 0, 0));
    EXPECT_LT(position(window, SB_HORZ), right);
  }
}

TEST_F(RealControls, WheelTurnsANotchForEachPass) {
  const HWND wheel = add(mParent, L"QWidget", 0, 20, 20, 200, 200);
  pointAt(wheel);
  EXPECT_TRUE(scroll(0, 0, kFast));
  EXPECT_EQ(gNotches, -1);
  EXPECT_TRUE(scroll(-kFast, 0, 0));
  EXPECT_EQ(gNotches, 0);
  EXPECT_TRUE(scroll(0, kFast, 0));
  EXPECT_EQ(gNotches, 1);
  EXPECT_TRUE(scroll(kFast, 0, kFast));
  EXPECT_EQ(gNotches, 1);
}

TEST_F(RealControls, NothingToScrollLeavesTheSampleToTheView) {
  const HWND box = listBox(0);
  pointAt(box);
  EXPECT_FALSE(scroll(0, 0, kFast));
  const HWND field = add(mParent, L"Edit", 0, 240, 20, 200, 30);
  pointAt(field);
  EXPECT_FALSE(scroll(0, 0, kFast));
  host::setView(host::ViewState());
  EXPECT_TRUE(pass(kFast, 0, 0));
  EXPECT_NE(host::view().target.x, 0);
  release();
  const HWND plain = add(mParent, L"Plain", 0, 240, 60, 200, 200);
  pointAt(plain);
  EXPECT_FALSE(scroll(0, 0, kFast));
}

TEST_F(RealControls, SmallestVisibleWindowAtThePointIsTaken) {
  // Topmost a large sibling, below it a smaller one with a list in it, and a hidden one smaller than all.
  const HWND large = add(mParent, L"Plain", WS_CLIPSIBLINGS, 10, 10, 400, 400);
  const HWND small = add(mParent, L"Plain", WS_CLIPSIBLINGS, 20, 20, 300, 300);
  const HWND inner = add(small, L"ListBox", WS_VSCROLL, 5, 5, 290, 290);
  const HWND hidden = add(mParent, L"Plain", 0, 60, 60, 20, 20);
  ShowWindow(hidden, SW_HIDE);
  SetWindowPos(large, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
  POINT point = {70, 70};
  ClientToScreen(mParent, &point);
  ASSERT_EQ(WindowFromPoint(point), large);
  EXPECT_EQ(proxy().windowUnderPoint(point), inner);
  ShowWindow(small, SW_HIDE);
  EXPECT_EQ(proxy().windowUnderPoint(point), large);
}

TEST_F(RealControls, WindowsOfOtherThreadsScrollToo) {
  std::promise<HWND> made;
  std::promise<void> over;
  std::thread other([&] {
    const HWND window = add(nullptr, L"QWidget", WS_POPUP, 720, 20, 100, 100);
    made.set_value(window);
    auto end = over.get_future();
    while (end.wait_for(std::chrono::milliseconds(5)) != std::future_status::ready) {
      MSG message;
      while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        DispatchMessageW(&message);
    }
    DestroyWindow(window);
  });
  const HWND window = made.get_future().get();
  pointAt(window);
  EXPECT_TRUE(scroll(0, 0, -kFast));
  EXPECT_EQ(gNotches, 1);
  over.set_value();
  other.join();
}

} // namespace
