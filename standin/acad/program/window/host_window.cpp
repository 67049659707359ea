#include "host_window.h"

#include "recorder.h"

#include <commctrl.h>

#include <algorithm>
#include <atomic>

namespace program {

namespace {

// Places, in pixels of the main window's inside.
constexpr RECT kFramePlace = {20, 20, 1240, 900}; // on the screen
constexpr int kSideLeft = 950;
constexpr int kSideWidth = 250;
constexpr int kControlHeight = 180;
constexpr int kGap = 8;
constexpr int kButtonHeight = 26;
constexpr int kViewHeight = 620;
constexpr int kHistoryHeight = 140;
constexpr int kInputHeight = 24;

constexpr int kModelButton = 101;
constexpr int kLayoutButton = 102;
constexpr int kProjectionButton = 103;

constexpr wchar_t kFrameClass[] = L"HostFrame";
constexpr wchar_t kViewClass[] = L"HostDrawingView";
constexpr wchar_t kWheelClass[] = L"QWidget"; // the class that the plug-in takes for a window with a wheel

HostWindow* gWindowP = nullptr;
std::atomic<int> gWheelNotches{0};

void registerClass(const wchar_t* name, WNDPROC procedure, HBRUSH background) {
  WNDCLASSW entry = {};
  entry.lpfnWndProc = procedure;
  entry.hInstance = GetModuleHandleW(nullptr);
  entry.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
  entry.hbrBackground = background;
  entry.lpszClassName = name;
  RegisterClassW(&entry); // known already if there was a window before
}

RECT box(int left, int top, int width, int height) {
  return {left, top, left + width, top + height};
}

SIZE sizeOf(HWND window) {
  RECT rect = {};
  GetClientRect(window, &rect);
  return {rect.right, rect.bottom};
}

std::wstring numbered(const wchar_t* text, int number) {
  return text + std::to_wstring(number);
}

} // namespace

HostWindow::HostWindow() {
  INITCOMMONCONTROLSEX controls = {sizeof controls, ICC_TREEVIEW_CLASSES | ICC_LISTVIEW_CLASSES};
  InitCommonControlsEx(&controls);
  gWindowP = this;
  gWheelNotches = 0;
  registerClass(kFrameClass, onFrameMessage, reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1));
  registerClass(kViewClass, onViewMessage, nullptr);
  registerClass(kWheelClass, onWheelMessage, reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1));
  mFrame = CreateWindowExW(0, kFrameClass, L"acad", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, kFramePlace.left,
                           kFramePlace.top, kFramePlace.right - kFramePlace.left,
                           kFramePlace.bottom - kFramePlace.top, nullptr, nullptr, GetModuleHandleW(nullptr),
                           nullptr);
  addChild(L"BUTTON", L"Model", BS_PUSHBUTTON, box(kGap, kGap, 90, kButtonHeight), kModelButton);
  addChild(L"BUTTON", L"Layout", BS_PUSHBUTTON, box(kGap + 96, kGap, 90, kButtonHeight), kLayoutButton);
  addChild(L"BUTTON", L"Perspective", BS_PUSHBUTTON, box(kGap + 192, kGap, 110, kButtonHeight),
           kProjectionButton);
  const int top = 2 * kGap + kButtonHeight;
  mView = addChild(kViewClass, L"", 0, box(kGap, top, kSideLeft - 2 * kGap, kViewHeight));
  int sideTop = top;
  const auto side = [&](const wchar_t* className, DWORD style) {
    const HWND window =
        addChild(className, L"", style | WS_BORDER, box(kSideLeft, sideTop, kSideWidth, kControlHeight));
    sideTop += kControlHeight + kGap;
    return window;
  };
  mTree = side(WC_TREEVIEWW, TVS_HASLINES | TVS_HASBUTTONS | TVS_LINESATROOT);
  mList = side(WC_LISTVIEWW, LVS_REPORT | LVS_SINGLESEL);
  mEdit = side(L"Edit", ES_MULTILINE | ES_AUTOVSCROLL | ES_AUTOHSCROLL | WS_VSCROLL | WS_HSCROLL);
  mWheel = side(kWheelClass, 0);
  const int below = top + kViewHeight + kGap;
  mHistory = addChild(L"Edit", L"", ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL | WS_VSCROLL | WS_BORDER,
                      box(kGap, below, kSideLeft - 2 * kGap, kHistoryHeight));
  mInput = addChild(L"Edit", L"", ES_AUTOHSCROLL | WS_BORDER,
                    box(kGap, below + kHistoryHeight + 2, kSideLeft - 2 * kGap, kInputHeight));
  mInputProc = reinterpret_cast<WNDPROC>(
      SetWindowLongPtrW(mInput, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(onInputMessage)));
  fillTree();
  fillList();
  fillEdit();
  ShowWindow(mFrame, SW_SHOW);
  UpdateWindow(mFrame);
}

HostWindow::~HostWindow() {
  gWindowP = nullptr;
  DestroyWindow(mFrame);
}

HWND HostWindow::addChild(const wchar_t* className, const wchar_t* text, DWORD style, RECT place, int id) {
  return CreateWindowExW(0, className, text, WS_CHILD | WS_VISIBLE | style, place.left, place.top,
                         place.right - place.left, place.bottom - place.top, mFrame,
                         reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleW(nullptr),
                         nullptr);
}

void HostWindow::fillTree() {
  constexpr int kGroups = 25;
  constexpr int kPerGroup = 9;
  TVINSERTSTRUCTW entry = {};
  entry.hInsertAfter = TVI_LAST;
  entry.item.mask = TVIF_TEXT;
  for (int group = 1; group <= kGroups; ++group) {
    std::wstring text = numbered(L"Layer group ", group);
    entry.hParent = TVI_ROOT;
    entry.item.pszText = text.data();
    const auto parent = reinterpret_cast<HTREEITEM>(
        SendMessageW(mTree, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&entry)));
    entry.hParent = parent;
    for (int layer = 1; layer <= kPerGroup; ++layer) {
      text = numbered(L"Layer ", 100 * group + layer);
      entry.item.pszText = text.data();
      SendMessageW(mTree, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&entry));
    }
    SendMessageW(mTree, TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(parent));
  }
  SendMessageW(mTree, WM_VSCROLL, SB_TOP, 0);
}

void HostWindow::fillList() {
  constexpr int kRows = 120;
  LVCOLUMNW column = {};
  column.mask = LVCF_TEXT | LVCF_WIDTH;
  column.cx = 200;
  for (int i = 0; i < 3; ++i) {
    std::wstring text = i == 0 ? L"Block" : i == 1 ? L"Description" : L"File";
    column.pszText = text.data();
    SendMessageW(mList, LVM_INSERTCOLUMNW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&column));
  }
  LVITEMW item = {};
  item.mask = LVIF_TEXT;
  for (int row = 0; row < kRows; ++row) {
    std::wstring text = numbered(L"Block ", row + 1);
    item.iItem = row;
    item.pszText = text.data();
    SendMessageW(mList, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
  }
}

void HostWindow::fillEdit() {
  constexpr int kLines = 400;
  std::wstring text;
  for (int line = 1; line <= kLines; ++line)
    text += numbered(L"Line ", line) +
            L" of a note that is wider than the field it stands in, so there is something to scroll\r\n";
  SetWindowTextW(mEdit, text.c_str());
}

int HostWindow::wheelNotches() const {
  return gWheelNotches;
}

void HostWindow::show() {
  InvalidateRect(mView, nullptr, FALSE);
  UpdateWindow(mView);
}

/// Returns true if the picture has changed since the last call.
bool HostWindow::takeChange() {
  Seen now{host::isLayout(), host::view(), host::selected(), host::entityCount()};
  const bool isSame = now.isLayout == mSeen.isLayout && isSameView(now.view, mSeen.view) &&
                      now.selected == mSeen.selected && now.entities == mSeen.entities;
  mSeen = std::move(now);
  return !isSame;
}

void HostWindow::refresh() {
  if (takeChange())
    InvalidateRect(mView, nullptr, FALSE);
  const auto& history = host::history();
  if (mShownLines == history.size())
    return;
  std::wstring fresh;
  for (; mShownLines < history.size(); ++mShownLines) {
    for (const wchar_t c : (history[mShownLines].isTyped ? L"> " : L"") + history[mShownLines].text) {
      if (c == L'\n')
        fresh += L"\r\n";
      else if (c != 0x1B)
        fresh += c;
    }
    if (fresh.empty() || fresh.back() != L'\n')
      fresh += L"\r\n";
  }
  const int end = GetWindowTextLengthW(mHistory);
  SendMessageW(mHistory, EM_SETSEL, static_cast<WPARAM>(end), end);
  SendMessageW(mHistory, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(fresh.c_str()));
}

void HostWindow::paintView() {
  PAINTSTRUCT paint;
  const HDC dc = BeginPaint(mView, &paint);
  program::paintView(dc, sizeOf(mView));
  EndPaint(mView, &paint);
}

void HostWindow::pick(POINT point, bool isAdding) {
  std::vector<AcDbObjectId> ids;
  if (isAdding)
    ids = host::selected();
  const int number = objectAt(point, sizeOf(mView));
  if (number != 0)
    ids.push_back(host::entity(number)->objectId());
  host::select(ids);
  SetFocus(mInput);
  InvalidateRect(mView, nullptr, FALSE);
}

void HostWindow::typeInput() {
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(mInput)) + 1, L'\0');
  text.resize(static_cast<std::size_t>(GetWindowTextW(mInput, text.data(), static_cast<int>(text.size()))));
  SetWindowTextW(mInput, L"");
  host::type(text + L"\n");
}

void HostWindow::press(int button) {
  if (button == kModelButton || button == kLayoutButton) {
    host::setLayout(button == kLayoutButton);
  } else if (button == kProjectionButton) {
    host::view().perspective = !host::view().perspective;
  }
  InvalidateRect(mView, nullptr, FALSE);
  SetFocus(mInput);
}

LRESULT CALLBACK HostWindow::onFrameMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
  case WM_CLOSE:
    PostQuitMessage(0); // the session ends in order, and closes the window
    return 0;
  case WM_COMMAND:
    if (gWindowP && HIWORD(wParam) == BN_CLICKED)
      gWindowP->press(LOWORD(wParam));
    return 0;
  default:
    return DefWindowProcW(window, message, wParam, lParam);
  }
}

LRESULT CALLBACK HostWindow::onViewMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
  case WM_PAINT:
    if (!gWindowP)
      break;
    gWindowP->paintView();
    return 0;
  case WM_LBUTTONDOWN:
    if (gWindowP)
      gWindowP->pick({static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam))},
                     (wParam & MK_SHIFT) != 0);
    return 0;
  default:
    break;
  }
  return DefWindowProcW(window, message, wParam, lParam);
}

LRESULT CALLBACK HostWindow::onWheelMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_MOUSEWHEEL) {
    gWheelNotches -= static_cast<short>(HIWORD(wParam)) / WHEEL_DELTA;
    InvalidateRect(window, nullptr, TRUE);
    return 0;
  }
  if (message == WM_PAINT) {
    PAINTSTRUCT paint;
    const HDC dc = BeginPaint(window, &paint);
    const std::wstring text = numbered(L"Wheel turned by ", gWheelNotches);
    TextOutW(dc, kGap, kGap, text.c_str(), static_cast<int>(text.size()));
    EndPaint(window, &paint);
    return 0;
  }
  return DefWindowProcW(window, message, wParam, lParam);
}

LRESULT CALLBACK HostWindow::onInputMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (!gWindowP)
    return DefWindowProcW(window, message, wParam, lParam);
  if (message == WM_CHAR && wParam == L'\r') {
    gWindowP->typeInput();
    return 0;
  }
  if (message == WM_CHAR && wParam == 0x1B) {
    host::type(L"\x1B");
    return 0;
  }
  return CallWindowProcW(gWindowP->mInputProc, window, message, wParam, lParam);
}

} // namespace program
