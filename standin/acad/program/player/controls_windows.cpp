// The host's windows on a real desktop.
#include "controls.h"

#include "host_window.h"

namespace program {

namespace {

ScrollRange rangeOf(HWND window, int bar) {
  SCROLLINFO info = {};
  info.cbSize = sizeof info;
  info.fMask = SIF_ALL;
  if (!GetScrollInfo(window, bar, &info))
    return {};
  return {info.nMin, info.nMax, static_cast<int>(info.nPage)};
}

int positionOf(HWND window, int bar) {
  SCROLLINFO info = {};
  info.cbSize = sizeof info;
  info.fMask = SIF_POS;
  return GetScrollInfo(window, bar, &info) ? info.nPos : 0;
}

class WindowControls : public Controls {
public:
  WindowControls() {
    mInfos = {{"tree", "SysTreeView32", rangeOf(mWindow.tree(), SB_VERT), rangeOf(mWindow.tree(), SB_HORZ)},
              {"list", "SysListView32", rangeOf(mWindow.list(), SB_VERT), rangeOf(mWindow.list(), SB_HORZ)},
              {"edit", "Edit", rangeOf(mWindow.edit(), SB_VERT), rangeOf(mWindow.edit(), SB_HORZ)},
              {"wheel", "QWidget", {}, {}}};
  }

  const std::vector<ControlInfo>& infos() const override { return mInfos; }

  std::vector<ScrollState> states() const override {
    std::vector<ScrollState> states;
    for (const HWND window : {mWindow.tree(), mWindow.list(), mWindow.edit()})
      states.push_back({positionOf(window, SB_VERT), positionOf(window, SB_HORZ)});
    states.push_back({mWindow.wheelNotches(), 0});
    return states;
  }

  void point(session::Pointer where) override {
    const HWND windows[] = {mWindow.view(), mWindow.tree(), mWindow.list(), mWindow.edit(), mWindow.wheel()};
    const auto index = static_cast<std::size_t>(where);
    RECT rect = {};
    if (index < std::size(windows) && GetWindowRect(windows[index], &rect))
      SetCursorPos((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2);
    else
      SetCursorPos(2, 2); // a corner of the screen that the window leaves free
  }

  void show(const host::Frame&) override { mWindow.show(); }
  void refresh() override { mWindow.refresh(); }

private:
  HostWindow mWindow;
  std::vector<ControlInfo> mInfos;
};

static_assert(static_cast<int>(session::Pointer::view) == 0 && static_cast<int>(session::Pointer::wheel) == 4,
              "the windows above are in the order of the pointers");

} // namespace

std::unique_ptr<Controls> makeControls() {
  return std::make_unique<WindowControls>();
}

} // namespace program
