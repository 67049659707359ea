#include "report.h"
#include "state.h"

#include <algorithm>
#include <stdexcept>

using desktop::Window;
using desktop::detail::Call;
using desktop::detail::find;
using desktop::detail::Locked;
using desktop::detail::State;

namespace {

HWND handle(unsigned long number) {
  return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(number));
}

bool contains(const RECT& rect, POINT point) {
  return point.x >= rect.left && point.x < rect.right && point.y >= rect.top && point.y < rect.bottom;
}

/// Returns the topmost visible child of a window at a point, null if there is none.
HWND childAt(const State& s, HWND parent, POINT point) {
  for (const auto& [number, window] : s.windows)
    if (window.parent == parent && window.isVisible && contains(window.rect, point))
      return handle(number);
  return nullptr;
}

/// Returns the next child of a window after the one with that number, null if there is none.
HWND childAfter(const State& s, HWND parent, unsigned long number) {
  for (auto it = s.windows.upper_bound(number); it != s.windows.end(); ++it)
    if (it->second.parent == parent)
      return handle(it->first);
  return nullptr;
}

void removeTree(State& s, HWND window) {
  while (const HWND child = childAfter(s, window, 0))
    removeTree(s, child);
  s.windows.erase(desktop::number(window));
}

} // namespace

namespace desktop {

HWND addWindow(const Window& window) {
  const Locked s;
  if (window.parent && !find(*s, window.parent))
    throw std::invalid_argument("addWindow: no such parent");
  s->windows[++s->lastNumber] = window;
  return handle(s->lastNumber);
}

void removeWindow(HWND window) {
  const Locked s;
  if (window)
    removeTree(*s, window);
}

void changeWindow(HWND window, const std::function<void(Window&)>& change) {
  const Locked s;
  if (Window* const recordP = find(*s, window))
    change(*recordP);
}

Window window(HWND window) {
  const Locked s;
  const Window* const recordP = find(*s, window);
  return recordP ? *recordP : Window{};
}

unsigned long number(HWND window) {
  return static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(window));
}

RECT rectangle(int left, int top, int width, int height) {
  return RECT{left, top, left + width, top + height};
}

} // namespace desktop

BOOL WINAPI GetCursorPos(LPPOINT point) {
  Call call("GetCursorPos");
  const Locked s;
  if (!call.mustFail())
    *point = s->pointer;
  return call.returns(call.mustFail() ? FALSE : TRUE, point->x, point->y);
}

BOOL WINAPI SetCursorPos(int x, int y) {
  if (Call("SetCursorPos", x, y).mustFail())
    return FALSE;
  const Locked s;
  s->pointer = POINT{x, y};
  return TRUE;
}

HWND WINAPI WindowFromPoint(POINT point) {
  Call call("WindowFromPoint", point.x, point.y);
  const Locked s;
  HWND found = nullptr;
  for (HWND next = call.mustFail() ? nullptr : childAt(*s, nullptr, point); next;
       next = childAt(*s, next, point))
    found = next;
  return call.returns(found);
}

BOOL WINAPI GetWindowRect(HWND window, LPRECT rect) {
  Call call("GetWindowRect", window);
  const Locked s;
  const Window* const recordP = call.mustFail() ? nullptr : find(*s, window);
  if (recordP)
    *rect = recordP->rect;
  return call.returns(recordP ? TRUE : FALSE, rect->left, rect->top, rect->right, rect->bottom);
}

HWND WINAPI GetParent(HWND window) {
  Call call("GetParent", window);
  const Locked s;
  const Window* const recordP = call.mustFail() ? nullptr : find(*s, window);
  return call.returns(recordP ? recordP->parent : nullptr);
}

HWND WINAPI GetWindow(HWND window, UINT command) {
  Call call("GetWindow", window, command);
  const Locked s;
  const Window* const recordP = call.mustFail() ? nullptr : find(*s, window);
  HWND found = nullptr;
  if (recordP && command == GW_CHILD)
    found = childAfter(*s, window, 0);
  else if (recordP && command == GW_HWNDNEXT)
    found = childAfter(*s, recordP->parent, desktop::number(window));
  return call.returns(found);
}

BOOL WINAPI PtInRect(const RECT* rect, POINT point) {
  if (call_log::Call::report("PtInRect", call_log::shown(point.x), call_log::shown(point.y)))
    return FALSE;
  return contains(*rect, point) ? TRUE : FALSE;
}

BOOL WINAPI IsWindowVisible(HWND window) {
  Call call("IsWindowVisible", window);
  const Locked s;
  const Window* recordP = call.mustFail() ? nullptr : find(*s, window);
  while (recordP && recordP->isVisible && recordP->parent)
    recordP = find(*s, recordP->parent);
  return call.returns(recordP && recordP->isVisible ? TRUE : FALSE);
}

int WINAPI GetClassNameW(HWND window, LPWSTR buffer, int count) {
  Call call("GetClassNameW", window);
  if (count <= 0)
    return call.returns(0);
  const Locked s;
  const Window* const recordP = call.mustFail() ? nullptr : find(*s, window);
  if (!recordP)
    return call.returns(0, buffer);
  const std::size_t length = std::min(recordP->className.size(), static_cast<std::size_t>(count) - 1);
  recordP->className.copy(buffer, length);
  buffer[length] = 0;
  return call.returns(static_cast<int>(length), buffer);
}
