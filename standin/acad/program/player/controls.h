#ifndef CONTROLS_H
#define CONTROLS_H

#include "host.h"
#include "session.h"

#include <memory>
#include <string>
#include <vector>

/// The windows of the host that the mouse pointer can rest on.
namespace program {

/// A scroll bar's range; nothing to scroll if max is not above min.
struct ScrollRange {
  int mMin = 0;
  int mMax = 0;
  int mPage = 0;
};

struct ControlInfo {
  /// As sessions call it: tree, list, edit, wheel.
  std::string mName;
  std::string mClassName;
  ScrollRange mVertical;
  ScrollRange mHorizontal;
};

/// Where a control has been scrolled to. For a control without scroll bars, mVertical counts the wheel's
/// notches downwards.
struct ScrollState {
  int mVertical = 0;
  int mHorizontal = 0;

  bool operator==(const ScrollState& other) const {
    return mVertical == other.mVertical && mHorizontal == other.mHorizontal;
  }
};

/// The one interface between the program and a desktop, simulated or real. Belongs to the main thread; the windows
/// are closed with the object.
class Controls {
public:
  virtual ~Controls() = default;

  /// In a fixed order, which states() follows.
  virtual const std::vector<ControlInfo>& infos() const = 0;
  virtual std::vector<ScrollState> states() const = 0;
  /// Puts the mouse pointer over a control or the view, or where no window is.
  virtual void point(session::Pointer where) = 0;
  /// Shows a frame to the user, where there is a screen.
  virtual void show(const host::Frame&) {}
  /// Shows what has changed without a frame.
  virtual void refresh() {}
};

/// Makes the host's windows on this system's desktop.
std::unique_ptr<Controls> makeControls();

} // namespace program

#endif
