#include "engine.h"

#include <cstdlib>
#include <map>

namespace model {

/// Does some work. Returns false if the host threw.
bool Engine::succeeds(const Work& work) {
  try {
    work();
    return true;
  } catch (const HostException&) {
    return false;
  }
}

/// Does an operation's work, and expects its record if the host throws. Returns false then.
bool Engine::guarded(const char* operation, const Work& work) {
  const bool isDone = succeeds(work);
  if (!isDone)
    log("ERR", text("Error ", operation, "()"));
  return isDone;
}

void Engine::readSettings() {
  mCopied = mInputsP->settings();
  mCopied.traSensBase = mCopied.traSensBase == 0 ? 20000 : mCopied.traSensBase;
  mCopied.rotSensBase = mCopied.rotSensBase == 0 ? 10000 : mCopied.rotSensBase;
}

void Engine::timerProc(Replay& replay) {
  mReplayP = &replay;
  guarded("TimerProc", [&] {
    call("KillTimer", {timerId});
    if (!menuIsLoaded)
      loadMenufile();
    doTransform();
    if (!isPumpRunning)
      return;
    timerId = ask("SetTimer", {capIsMoving ? 10.0 : 100.0});
    if (timerId == 0)
      log("ERR", "Error TimerProc()");
  });
}

void Engine::doTransform() {
  const auto ticks = [this] { return static_cast<std::uint32_t>(ask("GetTickCount")); };
  const std::uint32_t entry = ticks();
  std::uint32_t elapsed = 0;
  keepGoing = true;
  while (elapsed < static_cast<std::uint32_t>(mCopied.maxContMoveTime) && keepGoing) {
    elapsed = ticks() - entry;
    guarded("doTransform", [&] {
      handleDeviceKeys();
      keepGoing = !mCopied.useInt3dIntrfce && handleDeviceCap(*mReplayP);
    });
  }
}

void Engine::handleDeviceKeys() {
  guarded("handleDeviceKeys", [&] {
    if (const int key = mInputsP->pending(KEY); key >= 0) {
      execApplFunction(key);
      mInputsP->served(KEY);
    }
    if (const int special = mInputsP->pending(SPECIAL); special > 0) {
      execSpecialApplFunction(special);
      mInputsP->served(SPECIAL);
    }
  });
}

bool Engine::handleDeviceCap(Replay& replay) {
  mReplayP = &replay;
  const int threshold = static_cast<short>(mInputsP->settings().minThreshold);
  viewMode = isLayout() ? 1 : 2;
  Sample s;
  for (std::size_t i = 0; i < s.size(); ++i)
    s[i] = mInputsP->read(X + i);
  if (std::all_of(s.begin(), s.end(), [&](int v) { return std::abs(v) <= threshold; })) {
    handleCapIsReleased();
    return false;
  }
  bool isSpent = false; // also after an exception, which leaves no record
  if (succeeds([&] { isSpent = scrollTreesAndLists(s[0], s[1], s[2]); }) && isSpent)
    return true;
  guarded(viewMode == 1 ? "handleCapIsDeflectedIn2DMode" : "handleCapIsDeflectedIn3DMode",
          [&] { viewMode == 1 ? handleCapIsDeflectedIn2DMode(s) : handleCapIsDeflectedIn3DMode(s); });
  if (!capIsMoving)
    log("INF", "Cap moving.");
  capIsMoving = true;
  return true;
}

/// Returns whether the layout itself is active; as before if the host can't read the variable.
bool Engine::isLayout() {
  const auto is = [this](const wchar_t* variable, double value) {
    const Call& read = call("acedGetVar", {}, variable);
    return out(read, 0) == RTNORM ? out(read, 1) == value : viewMode == 1;
  };
  const bool isPaper = is(L"tilemode", 0);
  return is(L"cvport", 1) && isPaper;
}

void Engine::loadMenufile() {
  modes.clear();
  menuEntries.clear();
  const MenuFile* const menuP = mInputsP->menuFile();
  if (menuP == nullptr)
    return;
  modes = menuP->modes;
  for (const std::string& value : menuP->values) {
    const std::size_t macro = value.find('}') + 1; // 0 if there is none
    if (macro != 0 && macro < value.size())
      menuEntries.push_back(value.substr(macro, value.find('|', macro) - macro));
  }
  log("CRT", text("Menu file '", menuP->path, "' with ", menuEntries.size(), " entries loaded."));
  menuIsLoaded = !modes.empty();
}

/// Returns the current document, which may be null. A missing document manager counts as a failing call.
double Engine::currentDocument() {
  if (ask("acDocManagerPtr") == 0)
    throw HostException();
  return ask("curDocument");
}

void Engine::send(double document, double activate, const std::wstring& what) {
  call("sendStringToExecute", {document, activate, 0, 1}, what);
}

void Engine::execApplFunction(int keyEvent) {
  const double document = currentDocument();
  const int count = static_cast<int>(menuEntries.size());
  if (keyEvent >= count)
    return log("ERR", text("keyEvent (", keyEvent, "') too big (max. is ", count - 1, ")!"));
  std::wstring entry;
  for (const unsigned char c : menuEntries[static_cast<std::size_t>(keyEvent)])
    entry += c;
  if (!entry.empty())
    send(document, 1, L"\x1b\x1b");
  std::wistringstream tokens(entry);
  for (std::wstring token; std::getline(tokens, token, L';');)
    send(document, 1,
         token.compare(0, 2, L"M=") == 0 ? L"(command (menucmd \"" + token + L"\"))\n" : token + L"\n");
}

void Engine::execSpecialApplFunction(int eventCode) {
  static const std::map<int, std::wstring> views = {{0x20009, L"FRONT"}, {0x2000A, L"RIGHT"},
                                                    {0x2000B, L"TOP"},   {0x20016, L"BACK"},
                                                    {0x20017, L"LEFT"},  {0x20018, L"BOTTOM"}};
  const double document = currentDocument();
  const bool isZoom = eventCode == 0x2000C, is2D = viewMode == 1;
  const auto found = views.find(eventCode);
  if (!isZoom && !is2D && found != views.end())
    send(document, 0, L"'_-VIEW _" + found->second + L" ");
  if (!isZoom && !is2D && found == views.end())
    log("ERR", text("Unknown special command '", eventCode, "' found!"));
  if (isZoom || (!is2D && read(ZOOM_ALL_AFTER_VIEW) != 0))
    send(document, 0, is2D ? L"_ZOOM _ALL " : L"'_ZOOM _ALL ");
}

bool Engine::scrollTreesAndLists(int x, int y, int z) {
  if (!mInputsP->settings().scrollTreeAndList)
    return false;
  const Call& cursor = call("GetCursorPos");
  const double left = out(cursor, 1), top = out(cursor, 2), window = windowUnderPoint(left, top);
  if (window == 0)
    return false;
  const std::wstring name = call("GetClassNameW", {window}).outText;
  const auto names = {L"SysTreeView32", L"TreeView", L"SysListView32", L"ListBox", L"Edit"};
  const bool hasBar =
      std::any_of(names.begin(), names.end(), [&](auto part) { return name.find(part) != name.npos; });
  if (!hasBar && name != L"QWidget")
    return false;
  const int v = std::abs(y) > std::abs(z) ? -y : z;
  const bool isVertical = std::abs(v) > std::abs(x), isEven = std::abs(v) == std::abs(x);
  const int amount = isVertical ? v : x, pause = std::max(1, 150 - std::abs(amount) / 2);
  if (hasBar)
    return isEven || moveBar(window, isVertical, amount, pause);
  if (!isEven) {
    const std::uint32_t low = 0xFFFF & std::int32_t(left), high = 0xFFFF & std::int32_t(top);
    const double delta = amount < 0 ? 0x00780000 : 0xFF880000;
    call("SendMessageW", {window, 0x020A, delta, double(high << 16 | low)});
    call("UpdateWindow", {window});
  }
  call("Sleep", {double(pause)});
  return true;
}

/// Finds the smallest visible window at a position, 0 if there is none.
double Engine::windowUnderPoint(double x, double y) {
  bool isAt = false; // of the window measured last
  const auto areaOf = [&](double window) {
    const Call& rect = call("GetWindowRect", {window});
    const double left = out(rect, 1), top = out(rect, 2), right = out(rect, 3), bottom = out(rect, 4);
    isAt = x >= left && x < right && y >= top && y < bottom;
    const std::int64_t width(right - left), height(bottom - top);
    return static_cast<std::int32_t>(width * height);
  };
  double best = ask("WindowFromPoint", {x, y});
  if (best == 0)
    return 0;
  std::int32_t bestArea = areaOf(best);
  double parent = ask("GetParent", {best});
  double candidate = parent == 0 ? 0 : ask("GetWindow", {best, 2});
  while (candidate != 0) {
    const double previous = best;
    for (; candidate != 0; candidate = ask("GetWindow", {candidate, 2})) {
      const std::int32_t area = areaOf(candidate);
      if (isAt && ask("GetParent", {candidate}) == parent && ask("IsWindowVisible", {candidate}) != 0 &&
          area < bestArea) {
        best = candidate;
        bestArea = area;
      }
    }
    candidate = best == previous ? 0 : ask("GetWindow", {best, 5});
    parent = best;
  }
  return best;
}

/// Moves a scroll bar by some lines; false if there is nothing to scroll.
bool Engine::moveBar(double window, bool isVertical, int amount, int pause) {
  const Call& info = call("GetScrollInfo", {window, isVertical ? 1.0 : 0.0, 28, 23});
  const double nMin = out(info, 1), nMax = out(info, 2), nPage = out(info, 3), nPos = out(info, 4);
  if (nMin < 0 || nMax < 0 || nMin >= nMax || nPage == 0)
    return false;
  const bool isInRange = amount < 0 ? nPos > 0 : nPage + nPos <= nMax;
  const double count = isInRange ? std::clamp(std::floor(nMax / 100), 1.0, 10.0) : 0;
  for (int i = 0; i < count; ++i)
    call("SendMessageW", {window, isVertical ? 277.0 : 276.0, amount < 0 ? 0.0 : 1.0, 0});
  call("Sleep", {pause + std::max(0.0, 50 - nMax)});
  return true;
}

} // namespace model
