#ifndef HOST_ACCESS_H
#define HOST_ACCESS_H

#include "host.h"

/// The host's way to what objects keep to themselves.
struct HostAccess {
  enum Flag : unsigned char { kCannotBeOpened = 1, kHasNoExtents = 2, kRefusesTransform = 4 };

  static void setId(AcDbObject& object, AcDbObjectId id) { object.mId = id; }
  static int& openCount(AcDbObject& object) { return object.mOpenCount; }
  static int& number(AcDbObject& object) { return object.mNumber; }
  static int number(const AcDbObject& object) { return object.mNumber; }
  static bool hasFlag(const AcDbObject& object, Flag flag) { return (object.mFlags & flag) != 0; }
  static void setFlag(AcDbObject& object, Flag flag, bool isOn) {
    object.mFlags = static_cast<unsigned char>(isOn ? object.mFlags | flag : object.mFlags & ~flag);
  }
  static host::LayoutState layout(const AcDbViewport& viewport) {
    return {viewport.mWidth, viewport.mHeight, viewport.mViewHeight, viewport.mViewCentre};
  }
  static void setLayout(AcDbViewport& viewport, const host::LayoutState& state) {
    viewport.mWidth = state.width;
    viewport.mHeight = state.height;
    viewport.mViewHeight = state.viewHeight;
    viewport.mViewCentre = state.centre;
  }
};

#endif
