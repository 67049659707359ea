// The host's windows on the simulated desktop, for systems that aren't Windows.
#include "controls.h"

#include "desktop.h"
#include "wide_text.h"

namespace program {

namespace {

desktop::ScrollBar bar(const ScrollRange& range) {
  return {range.mMin, range.mMax, static_cast<UINT>(range.mPage), range.mMin};
}

bool isScrollable(const ScrollRange& range) {
  return range.mMax > range.mMin;
}

class RecordControls : public Controls {
public:
  RecordControls() {
    desktop::Window frame;
    frame.className = L"HostFrame";
    frame.rect = desktop::rectangle(0, 0, 1600, 900);
    mFrame = desktop::addWindow(frame);
    desktop::Window view;
    view.className = L"HostDrawingView";
    view.rect = desktop::rectangle(320, 60, 1260, 800);
    view.parent = mFrame;
    mView = desktop::addWindow(view);

    int top = 60;
    for (const ControlInfo& info : mInfos) {
      desktop::Window control;
      control.className = widened(info.mClassName);
      control.rect = desktop::rectangle(10, top, 300, 190);
      control.parent = mFrame;
      if (isScrollable(info.mVertical))
        control.vertical = bar(info.mVertical);
      if (isScrollable(info.mHorizontal))
        control.horizontal = bar(info.mHorizontal);
      mWindows.push_back(desktop::addWindow(control));
      top += 200;
    }
  }

  ~RecordControls() override {
    for (const HWND window : mWindows)
      desktop::removeWindow(window);
    desktop::removeWindow(mFrame);
  }

  const std::vector<ControlInfo>& infos() const override { return mInfos; }

  std::vector<ScrollState> states() const override {
    std::vector<ScrollState> states;
    for (const HWND handle : mWindows) {
      const desktop::Window window = desktop::window(handle);
      ScrollState state;
      state.mVertical = window.vertical ? window.vertical->position : -window.wheelNotches;
      state.mHorizontal = window.horizontal ? window.horizontal->position : 0;
      states.push_back(state);
    }
    return states;
  }

  void point(session::Pointer where) override {
    HWND window = where == session::Pointer::view ? mView : nullptr;
    for (std::size_t i = 0; i < mInfos.size(); ++i) {
      if (mInfos[i].mName == session::kPointerNames[static_cast<int>(where)])
        window = mWindows[i];
    }
    RECT rect{};
    if (window && GetWindowRect(window, &rect))
      SetCursorPos((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2);
    else
      SetCursorPos(-100, -100);
  }

private:
  // Ranges as palettes of a drawing program have them: a layer tree, a block list, a long text, a tool
  // palette.
  const std::vector<ControlInfo> mInfos = {
      {"tree", "SysTreeView32", {0, 249, 12}, {}},
      {"list", "SysListView32", {0, 119, 12}, {0, 300, 150}},
      {"edit", "RichEdit20W", {0, 999, 20}, {0, 200, 80}},
      {"wheel", "QWidget", {}, {}},
  };
  HWND mFrame = nullptr;
  HWND mView = nullptr;
  std::vector<HWND> mWindows;
};

} // namespace

std::unique_ptr<Controls> makeControls() {
  return std::make_unique<RecordControls>();
}

} // namespace program
