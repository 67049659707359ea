#ifndef HOST_WINDOW_H
#define HOST_WINDOW_H

#include "view_painter.h"

#include <windows.h>

#include <string>
#include <vector>

namespace program {

/// The host's main window on a real desktop: the view, a tree, a list, an edit field and a wheel window at its
/// side, the command line below. A click in the view selects the object there; with Shift it adds the object.
/// Enter in the input field types its text at the command line. Buttons change the tab and the projection.
///
/// Belongs to the main thread, which has to run a message loop. Closing the window posts WM_QUIT.
class HostWindow {
public:
  HostWindow();
  ~HostWindow();
  HostWindow(const HostWindow&) = delete;
  HostWindow& operator=(const HostWindow&) = delete;

  /// Paints a frame now.
  void show();
  /// Paints what has changed without a frame, and shows new lines of the command line.
  void refresh();

  HWND view() const { return mView; }
  HWND tree() const { return mTree; }
  HWND list() const { return mList; }
  HWND edit() const { return mEdit; }
  HWND wheel() const { return mWheel; }
  /// Notches that the wheel window has been turned, downwards positive. Any thread.
  int wheelNotches() const;

private:
  static LRESULT CALLBACK onFrameMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  static LRESULT CALLBACK onViewMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  static LRESULT CALLBACK onWheelMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  static LRESULT CALLBACK onInputMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

  HWND addChild(const wchar_t* className, const wchar_t* text, DWORD style, RECT place, int id = 0);
  void fillTree();
  void fillList();
  void fillEdit();
  void paintView();
  void pick(POINT point, bool isAdding);
  void typeInput();
  void press(int button);

  HWND mFrame = nullptr;
  HWND mView = nullptr;
  HWND mTree = nullptr;
  HWND mList = nullptr;
  HWND mEdit = nullptr;
  HWND mWheel = nullptr;
  HWND mHistory = nullptr;
  HWND mInput = nullptr;
  WNDPROC mInputProc = nullptr;
  /// What the view was last painted from, apart from frames.
  struct Seen {
    bool isLayout = false;
    host::ViewState view;
    std::vector<AcDbObjectId> selected;
    int entities = 0;
  };
  bool takeChange();

  Seen mSeen;
  std::size_t mShownLines = 0;
};

} // namespace program

#endif
