// Scrolling of the control under the pointer, in any application, with ordinary scroll messages. A batch of
// lines and then a pause, for each pass: the pause is shorter the further the cap is deflected.

#include "auto_cad_proxy.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include "ov_auto_cad.h"
#include "util.h"

namespace {

enum class Kind { None, ScrollBar, Wheel };

constexpr int kLongestPause = 150; // milliseconds, at no deflection
constexpr int kCountsPerMs = 2;    // device counts that take one millisecond off the pause
constexpr int kShortestPause = 1;  // milliseconds
constexpr int kShortRange = 50;    // lines; shorter ranges pause longer, a millisecond for each line short
constexpr int kRangePerLine = 100; // lines of the range for each line that is sent
constexpr int kLargestBatch = 10;  // lines
constexpr int kWheelNotch = 120;   // one notch of the wheel, as WM_MOUSEWHEEL has it

Kind kindOf(const std::string& className) {
  for (const char* const part : {"SysTreeView32", "TreeView", "SysListView32", "ListBox", "Edit"}) {
    if (className.find(part) != std::string::npos)
      return Kind::ScrollBar;
  }
  return className == "QWidget" ? Kind::Wheel : Kind::None;
}

std::string classNameOf(HWND window) {
  wchar_t name[256] = {};
  GetClassNameW(window, name, 256);
  return Util::toNarrow(name);
}

int pauseFor(int strength) {
  return (std::max)(kShortestPause, kLongestPause - strength / kCountsPerMs);
}

LPARAM packed(POINT point) {
  return static_cast<LPARAM>((static_cast<std::uint32_t>(point.x) & 0xFFFF) |
                             (static_cast<std::uint32_t>(point.y) & 0xFFFF) << 16);
}

/// Sends one notch for each pass. The deflection determines only the pause.
bool turnWheel(HWND window, POINT pointer, int h, int v) {
  const int amount = std::abs(h) > std::abs(v) ? h : v;
  if (std::abs(h) != std::abs(v)) {
    const int delta = amount < 0 ? kWheelNotch : -kWheelNotch;
    const auto wParam = static_cast<WPARAM>(static_cast<std::uint32_t>(delta) << 16);
    SendMessageW(window, WM_MOUSEWHEEL, wParam, packed(pointer));
    UpdateWindow(window);
  }
  Util::sleep(static_cast<std::uint32_t>(pauseFor(std::abs(amount))));
  return true;
}

/// Returns false if the control has nothing to scroll in that direction: the sample then goes to the view.
bool scrollLines(HWND window, int h, int v) {
  if (std::abs(h) == std::abs(v))
    return true;
  const bool isVertical = std::abs(v) > std::abs(h);
  const int amount = isVertical ? v : h;
  // Zero before the call, so that a window that doesn't answer counts as one with nothing to scroll.
  SCROLLINFO info = {};
  info.cbSize = sizeof info;
  info.fMask = SIF_ALL;
  GetScrollInfo(window, isVertical ? SB_VERT : SB_HORZ, &info);
  if (info.nMin < 0 || info.nMax < 0 || info.nMin >= info.nMax || info.nPage == 0)
    return false;
  const int count = std::clamp(info.nMax / kRangePerLine, 1, kLargestBatch);
  const UINT message = isVertical ? WM_VSCROLL : WM_HSCROLL;
  // Decided by the position at the start of the pass: the last batch may exceed the end, where the control
  // stops by itself. In 64 bits, since page and position are untrusted.
  const bool canGoBack = amount < 0 && info.nPos > 0;
  const bool canGoOn = amount > 0 && static_cast<std::int64_t>(info.nPage) + info.nPos <= info.nMax;
  for (int i = 0; i < count; ++i) {
    if (canGoBack)
      SendMessageW(window, message, SB_LINEUP, 0);
    if (canGoOn)
      SendMessageW(window, message, SB_LINEDOWN, 0);
  }
  Util::sleep(
      static_cast<std::uint32_t>(pauseFor(std::abs(amount)) + (std::max)(0, kShortRange - info.nMax)));
  return true;
}

/// Computed unsigned: window rectangles are untrusted and may overflow.
std::int32_t area(const RECT& r) {
  const auto length = [](LONG from, LONG to) {
    return static_cast<std::uint32_t>(to) - static_cast<std::uint32_t>(from);
  };
  return static_cast<std::int32_t>(length(r.left, r.right) * length(r.top, r.bottom));
}

} // namespace

bool AutoCadProxy::scrollTreesAndLists(int x, int y, int z) {
  try {
    if (!mOvAutoCadP->mScrollTreeAndList)
      return false;
    POINT pointer = {};
    GetCursorPos(&pointer);
    const HWND window = windowUnderPoint(pointer);
    if (!window)
      return false;
    const Kind kind = kindOf(classNameOf(window));
    if (kind == Kind::None)
      return false;
    // Of the two axes that can scroll vertically the stronger one wins: pulled up, or pushed away.
    const int v = std::abs(y) > std::abs(z) ? -y : z;
    return kind == Kind::Wheel ? turnWheel(window, pointer, x, v) : scrollLines(window, x, v);
  } catch (...) {
    return false;
  }
}

HWND AutoCadProxy::windowUnderPoint(POINT point) {
  HWND best = WindowFromPoint(point);
  if (!best)
    return nullptr;
  RECT rect = {};
  GetWindowRect(best, &rect);
  HWND parent = GetParent(best);
  if (!parent)
    return best;
  HWND candidate = GetWindow(best, GW_HWNDNEXT);
  for (;;) {
    bool isFound = false;
    for (; candidate; candidate = GetWindow(candidate, GW_HWNDNEXT)) {
      RECT candidateRect = {};
      GetWindowRect(candidate, &candidateRect);
      if (PtInRect(&candidateRect, point) && GetParent(candidate) == parent && IsWindowVisible(candidate) &&
          area(candidateRect) < area(rect)) {
        best = candidate;
        rect = candidateRect;
        isFound = true;
      }
    }
    if (!isFound)
      return best;
    // Descend only into a window that was just chosen.
    candidate = GetWindow(best, GW_CHILD);
    if (!candidate)
      return best;
    parent = best;
  }
}
