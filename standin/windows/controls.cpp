#include "report.h"
#include "state.h"

#include <algorithm>

using desktop::ScrollBar;
using desktop::Window;
using desktop::detail::Call;
using desktop::detail::find;
using desktop::detail::Hex;
using desktop::detail::Locked;
using desktop::detail::State;

namespace {

void scrollLine(std::optional<ScrollBar>& bar, WORD request) {
  if (!bar || (request != SB_LINEUP && request != SB_LINEDOWN))
    return;
  // The last position shows the last page in full.
  const int page = std::max(static_cast<int>(bar->page), 1);
  const int last = std::max(bar->min, bar->max - page + 1);
  const int wanted = bar->position + (request == SB_LINEUP ? -1 : 1);
  bar->position = std::clamp(wanted, bar->min, last);
}

void handle(Window& window, UINT message, WPARAM wParam) {
  switch (message) {
  case WM_VSCROLL:
    scrollLine(window.vertical, LOWORD(wParam));
    break;
  case WM_HSCROLL:
    scrollLine(window.horizontal, LOWORD(wParam));
    break;
  case WM_MOUSEWHEEL:
    window.wheelNotches += static_cast<std::int16_t>(HIWORD(wParam)) / WHEEL_DELTA;
    break;
  default:
    break;
  }
}

/// Fills what fMask asks for. Returns false if there is no such bar.
bool readBar(State& s, HWND window, int bar, SCROLLINFO& info) {
  const Window* const recordP = find(s, window);
  if (!recordP || (bar != SB_HORZ && bar != SB_VERT))
    return false;
  const std::optional<ScrollBar>& found = bar == SB_VERT ? recordP->vertical : recordP->horizontal;
  if (!found)
    return false;
  if ((info.fMask & SIF_RANGE) != 0) {
    info.nMin = found->min;
    info.nMax = found->max;
  }
  if ((info.fMask & SIF_PAGE) != 0)
    info.nPage = found->page;
  if ((info.fMask & SIF_POS) != 0)
    info.nPos = found->position;
  return true;
}

} // namespace

BOOL WINAPI GetScrollInfo(HWND window, int bar, LPSCROLLINFO info) {
  call_log::Call call("GetScrollInfo", call_log::shown(window), call_log::shown(bar), info->cbSize,
                      info->fMask);
  const Locked s;
  const bool isRead =
      !call.mustFail() && info->cbSize == sizeof(SCROLLINFO) && readBar(*s, window, bar, *info);
  return call.returns(isRead ? TRUE : FALSE, info->nMin, info->nMax, info->nPage, info->nPos);
}

LRESULT WINAPI SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  Call call("SendMessageW", window, Hex{message, 4}, Hex{wParam}, Hex{static_cast<std::uint64_t>(lParam)});
  const Locked s;
  Window* const recordP = call.mustFail() ? nullptr : find(*s, window);
  if (recordP) {
    recordP->sent.push_back({message, wParam, lParam});
    handle(*recordP, message, wParam);
  }
  return call.returns(LRESULT{0});
}

BOOL WINAPI UpdateWindow(HWND window) {
  Call call("UpdateWindow", window);
  const Locked s;
  return call.returns(!call.mustFail() && find(*s, window) ? TRUE : FALSE);
}
