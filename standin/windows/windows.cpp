#include "report.h"
#include "state.h"

#include <algorithm>
#include <stdexcept>

using desktop::Window;
using desktop::detail::Call;
using desktop::detail::find;
using desktop::detail::State;
using desktop::detail::state;
using Lock = std::lock_guard<std::mutex>;

namespace {

HWND handle(unsigned long number) {
  return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(number));
}

/// The list of siblings that a window stands in.
std::vector<unsigned long>& siblings(State& s, const Window& window) {
  return s.children[desktop::number(window.parent)];
}

void removeTree(State& s, unsigned long number) {
  const std::vector<unsigned long> below = s.children[number];
  for (const unsigned long child : below)
    removeTree(s, child);
  s.children.erase(number);
  s.windows.erase(number);
}

bool contains(const RECT& rect, POINT point) {
  return point.x >= rect.left && point.x < rect.right && point.y >= rect.top && point.y < rect.bottom;
}

/// The topmost visible child of a window at a point; null if there is none.
HWND childAt(State& s, HWND parent, POINT point) {
  for (const unsigned long child : s.children[desktop::number(parent)]) {
    const Window& window = s.windows[child];
    if (window.isVisible && contains(window.rect, point))
      return handle(child);
  }
  return nullptr;
}

/// What GetWindow gives for a window that there is.
HWND neighbour(State& s, HWND window, const Window& record, UINT command) {
  if (command == GW_CHILD) {
    const auto below = s.children.find(desktop::number(window));
    return below == s.children.end() || below->second.empty() ? nullptr : handle(below->second.front());
  }
  if (command != GW_HWNDNEXT)
    return nullptr;
  const std::vector<unsigned long>& list = siblings(s, record);
  const auto it = std::find(list.begin(), list.end(), desktop::number(window));
  return list.end() - it < 2 ? nullptr : handle(*(it + 1));
}

} // namespace

namespace desktop {

HWND addWindow(const Window& window) {
  State& s = state();
  const Lock lock(s.mutex);
  if (window.parent != nullptr && find(s, window.parent) == nullptr)
    throw std::invalid_argument("addWindow: no such parent");
  const unsigned long number = ++s.lastNumber;
  s.windows[number] = window;
  siblings(s, window).push_back(number);
  return handle(number);
}

void removeWindow(HWND window) {
  State& s = state();
  const Lock lock(s.mutex);
  const Window* const record = find(s, window);
  if (record == nullptr)
    return;
  std::vector<unsigned long>& list = siblings(s, *record);
  list.erase(std::find(list.begin(), list.end(), number(window)));
  removeTree(s, number(window));
}

void raiseWindow(HWND window) {
  State& s = state();
  const Lock lock(s.mutex);
  const Window* const record = find(s, window);
  if (record == nullptr)
    return;
  std::vector<unsigned long>& list = siblings(s, *record);
  const auto it = std::find(list.begin(), list.end(), number(window));
  std::rotate(list.begin(), it, it + 1);
}

void changeWindow(HWND window, const std::function<void(Window&)>& change) {
  State& s = state();
  const Lock lock(s.mutex);
  Window* const record = find(s, window);
  if (record == nullptr)
    return;
  // The lists of siblings hang on it.
  const HWND parent = record->parent;
  change(*record);
  record->parent = parent;
}

Window window(HWND window) {
  State& s = state();
  const Lock lock(s.mutex);
  const Window* const record = find(s, window);
  return record == nullptr ? Window{} : *record;
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
  State& s = state();
  const Lock lock(s.mutex);
  if (!call.mustFail())
    *point = s.pointer;
  return call.returns(call.mustFail() ? FALSE : TRUE, point->x, point->y);
}

BOOL WINAPI SetCursorPos(int x, int y) {
  if (Call("SetCursorPos", x, y).mustFail())
    return FALSE;
  State& s = state();
  const Lock lock(s.mutex);
  s.pointer = POINT{x, y};
  return TRUE;
}

HWND WINAPI WindowFromPoint(POINT point) {
  Call call("WindowFromPoint", point.x, point.y);
  State& s = state();
  const Lock lock(s.mutex);
  HWND found = nullptr;
  for (HWND next = call.mustFail() ? nullptr : childAt(s, nullptr, point); next != nullptr;
       next = childAt(s, next, point))
    found = next;
  return call.returns(found);
}

BOOL WINAPI GetWindowRect(HWND window, LPRECT rect) {
  Call call("GetWindowRect", window);
  State& s = state();
  const Lock lock(s.mutex);
  const Window* const record = call.mustFail() ? nullptr : find(s, window);
  if (record != nullptr)
    *rect = record->rect;
  return call.returns(record == nullptr ? FALSE : TRUE, rect->left, rect->top, rect->right, rect->bottom);
}

HWND WINAPI GetParent(HWND window) {
  Call call("GetParent", window);
  State& s = state();
  const Lock lock(s.mutex);
  const Window* const record = call.mustFail() ? nullptr : find(s, window);
  return call.returns(record == nullptr ? nullptr : record->parent);
}

HWND WINAPI GetWindow(HWND window, UINT command) {
  Call call("GetWindow", window, command);
  State& s = state();
  const Lock lock(s.mutex);
  const Window* const record = call.mustFail() ? nullptr : find(s, window);
  return call.returns(record == nullptr ? nullptr : neighbour(s, window, *record, command));
}

BOOL WINAPI PtInRect(const RECT* rect, POINT point) {
  if (call_log::Call::report("PtInRect", call_log::shown(point.x), call_log::shown(point.y)))
    return FALSE;
  return contains(*rect, point) ? TRUE : FALSE;
}

BOOL WINAPI IsWindowVisible(HWND window) {
  Call call("IsWindowVisible", window);
  State& s = state();
  const Lock lock(s.mutex);
  const Window* record = call.mustFail() ? nullptr : find(s, window);
  while (record != nullptr && record->isVisible && record->parent != nullptr)
    record = find(s, record->parent);
  return call.returns(record != nullptr && record->isVisible ? TRUE : FALSE);
}

int WINAPI GetClassNameW(HWND window, LPWSTR buffer, int count) {
  Call call("GetClassNameW", window);
  if (count <= 0)
    return call.returns(0);
  State& s = state();
  const Lock lock(s.mutex);
  const Window* const record = call.mustFail() ? nullptr : find(s, window);
  if (record == nullptr)
    return call.returns(0, buffer);
  const std::size_t length = std::min(record->className.size(), static_cast<std::size_t>(count) - 1);
  record->className.copy(buffer, length);
  buffer[length] = 0;
  return call.returns(static_cast<int>(length), buffer);
}
