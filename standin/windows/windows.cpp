#include "report.h"
#include "state.h"

#include <algorithm>
#include <stdexcept>

using desktop::Window;
using desktop::detail::find;
using desktop::detail::report;
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
  if (report("GetCursorPos"))
    return FALSE;
  State& s = state();
  const Lock lock(s.mutex);
  *point = s.pointer;
  return TRUE;
}

BOOL WINAPI SetCursorPos(int x, int y) {
  if (report("SetCursorPos", x, y))
    return FALSE;
  State& s = state();
  const Lock lock(s.mutex);
  s.pointer = POINT{x, y};
  return TRUE;
}

HWND WINAPI WindowFromPoint(POINT point) {
  if (report("WindowFromPoint", point.x, point.y))
    return nullptr;
  State& s = state();
  const Lock lock(s.mutex);
  HWND found = nullptr;
  for (HWND next = childAt(s, nullptr, point); next != nullptr; next = childAt(s, next, point))
    found = next;
  return found;
}

BOOL WINAPI GetWindowRect(HWND window, LPRECT rect) {
  if (report("GetWindowRect", window))
    return FALSE;
  State& s = state();
  const Lock lock(s.mutex);
  const Window* const record = find(s, window);
  if (record == nullptr)
    return FALSE;
  *rect = record->rect;
  return TRUE;
}

HWND WINAPI GetParent(HWND window) {
  if (report("GetParent", window))
    return nullptr;
  State& s = state();
  const Lock lock(s.mutex);
  const Window* const record = find(s, window);
  return record == nullptr ? nullptr : record->parent;
}

HWND WINAPI GetWindow(HWND window, UINT command) {
  if (report("GetWindow", window, command))
    return nullptr;
  State& s = state();
  const Lock lock(s.mutex);
  const Window* const record = find(s, window);
  if (record == nullptr)
    return nullptr;
  if (command == GW_CHILD) {
    const auto below = s.children.find(desktop::number(window));
    return below == s.children.end() || below->second.empty() ? nullptr : handle(below->second.front());
  }
  if (command != GW_HWNDNEXT)
    return nullptr;
  const std::vector<unsigned long>& list = siblings(s, *record);
  // Who walks a list asks for the window behind the one that he got last; a search for each step would make
  // the walk as long as the list's square.
  std::size_t& place = s.lastPlace;
  if (place >= list.size() || list[place] != desktop::number(window))
    place =
        static_cast<std::size_t>(std::find(list.begin(), list.end(), desktop::number(window)) - list.begin());
  ++place;
  return place == list.size() ? nullptr : handle(list[place]);
}

BOOL WINAPI PtInRect(const RECT* rect, POINT point) {
  if (report("PtInRect", point.x, point.y))
    return FALSE;
  return contains(*rect, point) ? TRUE : FALSE;
}

BOOL WINAPI IsWindowVisible(HWND window) {
  if (report("IsWindowVisible", window))
    return FALSE;
  State& s = state();
  const Lock lock(s.mutex);
  const Window* record = find(s, window);
  if (record == nullptr)
    return FALSE;
  while (record != nullptr && record->isVisible) {
    if (record->parent == nullptr)
      return TRUE;
    record = find(s, record->parent);
  }
  return FALSE;
}

int WINAPI GetClassNameW(HWND window, LPWSTR buffer, int count) {
  if (report("GetClassNameW", window) || count <= 0)
    return 0;
  State& s = state();
  const Lock lock(s.mutex);
  const Window* const record = find(s, window);
  if (record == nullptr)
    return 0;
  const std::size_t length = std::min(record->className.size(), static_cast<std::size_t>(count) - 1);
  record->className.copy(buffer, length);
  buffer[length] = 0;
  return static_cast<int>(length);
}
