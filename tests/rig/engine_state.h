#ifndef ENGINE_STATE_H
#define ENGINE_STATE_H

#include <cstdint>

#include "motion/movement.h"
#include "ov_auto_cad.h"

namespace rig {

/// Leaves a sample for the pump, as the reading thread does.
inline void setSample(OvAutoCad& plugin, int x, int y, int z, int a = 0, int b = 0, int c = 0) {
  plugin.mCapX = static_cast<std::int16_t>(x);
  plugin.mCapY = static_cast<std::int16_t>(y);
  plugin.mCapZ = static_cast<std::int16_t>(z);
  plugin.mCapA = static_cast<std::int16_t>(a);
  plugin.mCapB = static_cast<std::int16_t>(b);
  plugin.mCapC = static_cast<std::int16_t>(c);
}

/// Clears what earlier movements have kept of view and selection.
inline void forgetMovement() {
  motion::movement = motion::Movement();
  motion::viewP = nullptr;
  motion::cvportNumber = 0;
}

/// Resets a running engine to its state at the start with default settings, with the cap at rest and no menu.
inline void resetEngine(OvAutoCad& plugin) {
  setSample(plugin, 0, 0, 0);
  plugin.mPendingKey = -1;
  plugin.mPendingSpecial = 0;
  plugin.setDefaults();
  plugin.mApplicationsDirPath = plugin.mHomeDir + "\\Orvaner\\Applications";
  AutoCadProxy& proxy = *plugin.mAutoCadProxyP;
  proxy.mTraSensBase = plugin.mTraSensBase;
  proxy.mRotSensBase = plugin.mRotSensBase;
  proxy.mMaxContMoveTime = 500;
  proxy.mUseInt3dIntrfce = false;
  proxy.mViewMode = 0;
  proxy.mCapIsMoving = proxy.mIsDocLocked = proxy.mObjectMoveMode = proxy.mMenuIsLoaded = false;
  proxy.setRotMode(0);
  proxy.mZoomAllAfterView = false;
  proxy.mModes.clear();
  proxy.mMenuEntries.clear();
  forgetMovement();
}

} // namespace rig

#endif
