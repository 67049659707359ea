#include "engine.h"
#include "support.h"

#include <cstdlib>

namespace model {

namespace {

enum class Kind { None, ScrollBar, Wheel };

constexpr double WHEEL_MESSAGE = 0x020A;
constexpr double VERTICAL_MESSAGE = 0x0115;
constexpr double HORIZONTAL_MESSAGE = 0x0114;

struct Position {
  std::int32_t x = 0;
  std::int32_t y = 0;
};

struct Rect {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;
};

std::int32_t outInt(const Call& call, std::size_t index) {
  return static_cast<std::int32_t>(out(call, index));
}

Rect rectOf(Replay& replay, double window) {
  const Call& rect = replay.call("GetWindowRect", {window});
  return {outInt(rect, 1), outInt(rect, 2), outInt(rect, 3), outInt(rect, 4)};
}

bool contains(const Rect& rect, const Position& p) {
  return p.x >= rect.left && p.x < rect.right && p.y >= rect.top && p.y < rect.bottom;
}

/// Multiply width and height, wrapping around in 32 bits.
std::int32_t areaOf(const Rect& rect) {
  const auto width = static_cast<std::uint32_t>(rect.right) - static_cast<std::uint32_t>(rect.left);
  const auto height = static_cast<std::uint32_t>(rect.bottom) - static_cast<std::uint32_t>(rect.top);
  return static_cast<std::int32_t>(width * height);
}

/// Find the smallest visible window at a position, 0 if there is none.
double windowUnderPoint(Replay& replay, const Position& p) {
  double best = ask(replay, "WindowFromPoint", {double(p.x), double(p.y)});
  if (best == 0) {
    return 0;
  }
  Rect bestRect = rectOf(replay, best);
  double parent = ask(replay, "GetParent", {best});
  if (parent == 0) {
    return best;
  }
  double candidate = ask(replay, "GetWindow", {best, 2});
  for (;;) {
    bool isFound = false;
    while (candidate != 0) {
      const Rect rect = rectOf(replay, candidate);
      if (contains(rect, p) && ask(replay, "GetParent", {candidate}) == parent &&
          ask(replay, "IsWindowVisible", {candidate}) != 0 && areaOf(rect) < areaOf(bestRect)) {
        best = candidate;
        bestRect = rect;
        isFound = true;
      }
      candidate = ask(replay, "GetWindow", {candidate, 2});
    }
    if (!isFound) {
      return best;
    }
    candidate = ask(replay, "GetWindow", {best, 5});
    if (candidate == 0) {
      return best;
    }
    parent = best;
  }
}

Kind kindOf(const std::wstring& className) {
  for (const wchar_t* part : {L"SysTreeView32", L"TreeView", L"SysListView32", L"ListBox", L"Edit"}) {
    if (className.find(part) != std::wstring::npos) {
      return Kind::ScrollBar;
    }
  }
  return className == L"QWidget" ? Kind::Wheel : Kind::None;
}

/// Turn the wheel by one notch, for the stronger one of two amounts.
void turnWheel(Replay& replay, double window, const Position& p, int h, int v) {
  if (std::abs(h) == std::abs(v)) {
    return;
  }
  const int amount = std::abs(h) > std::abs(v) ? h : v;
  const double delta = amount < 0 ? 0x00780000 : 0xFF880000;
  const std::uint32_t position =
      (static_cast<std::uint32_t>(p.y) << 16) | (static_cast<std::uint32_t>(p.x) & 0xFFFF);
  replay.call("SendMessageW", {window, WHEEL_MESSAGE, delta, double(position)});
  replay.call("UpdateWindow", {window});
}

/// Move a scroll bar by some lines; false if there is nothing to scroll.
bool moveBar(Replay& replay, double window, int amount, bool isVertical, int pause) {
  const Call& info = replay.call("GetScrollInfo", {window, isVertical ? 1.0 : 0.0, 28, 23});
  const std::int64_t nMin = outInt(info, 1);
  const std::int64_t nMax = outInt(info, 2);
  const auto nPage = static_cast<std::int64_t>(out(info, 3)); // unsigned
  const std::int64_t nPos = outInt(info, 4);
  if (nMin < 0 || nMax < 0 || nMin >= nMax || nPage == 0) {
    return false;
  }
  const double message = isVertical ? VERTICAL_MESSAGE : HORIZONTAL_MESSAGE;
  const std::int64_t count = std::clamp<std::int64_t>(nMax / 100, 1, 10);
  for (std::int64_t i = 0; i < count; ++i) {
    if (amount < 0 && nPos > 0) {
      replay.call("SendMessageW", {window, message, 0, 0});
    }
    if (amount > 0 && nPage + nPos <= nMax) {
      replay.call("SendMessageW", {window, message, 1, 0});
    }
  }
  replay.call("Sleep", {double(pause + std::max<std::int64_t>(0, 50 - nMax))});
  return true;
}

} // namespace

bool Engine::scrollTreesAndLists(Replay& replay, int x, int y, int z) {
  try {
    if (!mInputs->scrollTreeAndList()) {
      return false;
    }
    const Call& cursor = replay.call("GetCursorPos");
    const Position p{outInt(cursor, 1), outInt(cursor, 2)};
    const double window = windowUnderPoint(replay, p);
    if (window == 0) {
      return false;
    }
    const Kind kind = kindOf(replay.call("GetClassNameW", {window}).outText);
    if (kind == Kind::None) {
      return false;
    }
    const int h = x;
    const int v = std::abs(y) > std::abs(z) ? -y : z;
    const int pause = std::max(1, 150 - std::max(std::abs(h), std::abs(v)) / 2);
    if (kind == Kind::Wheel) {
      turnWheel(replay, window, p, h, v);
      replay.call("Sleep", {double(pause)});
      return true;
    }
    if (std::abs(h) == std::abs(v)) {
      return true;
    }
    const bool isVertical = std::abs(v) > std::abs(h);
    return moveBar(replay, window, isVertical ? v : h, isVertical, pause);
  } catch (const HostException&) {
    return false;
  }
}

} // namespace model
