// Scrolling of real controls: their own positions after samples of the cap.

#include "engine_rig.h"

#include <commctrl.h>

namespace {

constexpr int kFast = 400; // device counts; the pause after a batch is a millisecond

SCROLLINFO scrollInfo(HWND window, int bar) {
  SCROLLINFO info = {};
  info.cbSize = sizeof info;
  info.fMask = SIF_ALL;
  GetScrollInfo(window, bar, &info);
  return info;
}

int gNotches = 0;

LRESULT CALLBACK onWheelWindow(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message != WM_MOUSEWHEEL)
    return DefWindowProcW(window, message, wParam, lParam);
  gNotches += static_cast<short>(HIWORD(wParam)) / WHEEL_DELTA;
  return 0;
}

class RealControls : public EngineTest {
protected:
  void SetUp() override {
    EngineTest::SetUp();
    INITCOMMONCONTROLSEX controls = {sizeof controls, ICC_TREEVIEW_CLASSES | ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&controls);
    WNDCLASSW entry = {};
    entry.lpfnWndProc = onWheelWindow;
    entry.lpszClassName = L"QWidget";
    RegisterClassW(&entry); // fails from the second time on
    mParent = add(L"Static", WS_POPUP, 10, 10, 700, 500);
  }
  void TearDown() override {
    DestroyWindow(mParent);
    EngineTest::TearDown();
  }

  HWND add(const wchar_t* className, DWORD style, int left, int top, int width, int height) {
    return CreateWindowExW(0, className, L"", style | WS_VISIBLE | (mParent ? WS_CHILD : 0), left, top, width,
                           height, mParent, nullptr, nullptr, nullptr);
  }
  bool scroll(HWND window, int x, int y, int z) {
    RECT rect = {};
    GetWindowRect(window, &rect);
    SetCursorPos((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2);
    return proxy().scrollTreesAndLists(x, y, z);
  }

  HWND mParent = nullptr;
};

TEST_F(RealControls, ScrollByTheirBatches) {
  const HWND tree = add(WC_TREEVIEWW, 0, 20, 20, 200, 200);
  const HWND list = add(WC_LISTVIEWW, LVS_REPORT, 240, 20, 200, 200);
  const HWND edit = add(L"Edit", ES_MULTILINE | WS_VSCROLL | WS_HSCROLL | ES_AUTOHSCROLL, 20, 240, 200, 150);
  const HWND box = add(L"ListBox", WS_VSCROLL | LBS_NOINTEGRALHEIGHT, 240, 240, 200, 200);
  ShowWindow(mParent, SW_HIDE); // drawing takes long
  LVCOLUMNW column = {};
  column.mask = LVCF_WIDTH;
  column.cx = 500;
  SendMessageW(list, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
  wchar_t text[] = L"entry";
  std::wstring lines;
  for (int i = 0; i < 250; ++i) {
    TVINSERTSTRUCTW node = {};
    node.hInsertAfter = TVI_LAST;
    node.item.mask = TVIF_TEXT;
    node.item.pszText = text;
    SendMessageW(tree, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&node));
    LVITEMW item = {};
    item.mask = LVIF_TEXT;
    item.pszText = text;
    SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    SendMessageW(box, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
    lines += std::wstring(90, L'x') + L"\r\n"; // wider than the field
  }
  SetWindowTextW(edit, lines.c_str());
  ShowWindow(mParent, SW_SHOW);

  for (const HWND window : {tree, list, edit, box}) {
    const int batch = std::min(10, std::max(1, scrollInfo(window, SB_VERT).nMax / 100));
    const struct {
      int x, y, z, batches;
    } kSteps[] = {{0, 0, kFast, 1},     {0, 0, kFast, 2},
                  {0, kFast, 10, 1},                        // pulled up: the stronger of the two
                  {kFast, 0, kFast, 1},                     // a tie
                  {0, 0, -kFast, 0},    {0, 0, -kFast, 0}}; // at its end it still takes the sample
    for (const auto& s : kSteps) {
      EXPECT_TRUE(scroll(window, s.x, s.y, s.z));
      EXPECT_EQ(scrollInfo(window, SB_VERT).nPos, s.batches * batch);
    }
  }
  for (const HWND window : {list, edit}) {
    EXPECT_TRUE(scroll(window, kFast, 0, 0));
    const int right = scrollInfo(window, SB_HORZ).nPos;
    EXPECT_GT(right, 0);
    EXPECT_TRUE(scroll(window, -kFast, 0, 0));
    EXPECT_LT(scrollInfo(window, SB_HORZ).nPos, right);
  }
}

TEST_F(RealControls, WheelTurnsOneNotch) {
  const HWND wheel = add(L"QWidget", 0, 20, 20, 200, 200);
  EXPECT_TRUE(scroll(wheel, 0, 0, kFast));
  EXPECT_EQ(gNotches, -1);
  EXPECT_TRUE(scroll(wheel, 0, kFast, 0));
  EXPECT_EQ(gNotches, 0);
}

TEST_F(RealControls, SmallestVisibleWindowIsFound) {
  const HWND small = add(L"QWidget", WS_CLIPSIBLINGS, 20, 20, 300, 300);
  const HWND large = add(L"QWidget", WS_CLIPSIBLINGS, 10, 10, 400, 400);
  ShowWindow(add(L"QWidget", 0, 60, 60, 20, 20), SW_HIDE);
  SetWindowPos(large, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
  POINT point = {70, 70};
  ClientToScreen(mParent, &point);
  EXPECT_EQ(proxy().windowUnderPoint(point), small);
  ShowWindow(small, SW_HIDE);
  EXPECT_EQ(proxy().windowUnderPoint(point), large);
}

} // namespace
