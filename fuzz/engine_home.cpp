#include "engine_home.h"

#include "calls.h"
#include "desktop.h"
#include "devlink_twin.h"
#include "engine_rig.h"
#include "motion/motion_state.h"

namespace fuzz {

namespace {

constexpr std::uint32_t kPassesPerTick = 3;

void freshSurroundings() {
  calls::clear();
  host::reset();
  desktop::reset();
  desktop::holdClock();
  desktop::setTickStep(1); // loops that wait for the clock end
}

/// Log statements make their texts, which is all that can go wrong in them, but no file grows.
std::unique_ptr<OvAutoCad> makeEngine() {
  rig::useOwnHome();
  rig::home().write(rig::kSettingsFile, rig::settingsText({{"logToFile", "off"}}));
  devlink_twin::reset();
  freshSurroundings();
  auto pluginP = std::make_unique<OvAutoCad>();
  pluginP->mIsToWatchConnection = false; // there is nothing to watch, and it would wake up all the time
  return pluginP;
}

} // namespace

OvAutoCad& freshEngine() {
  static const std::unique_ptr<OvAutoCad> sPluginP = makeEngine();
  freshSurroundings();
  OvAutoCad& p = *sPluginP;
  p.mCapX = p.mCapY = p.mCapZ = p.mCapA = p.mCapB = p.mCapC = 0;
  p.mPendingKey = -1;
  p.mPendingSpecial = 0;
  p.mToggleRotationCenter = true;
  p.mToggleRotationAxis = false;
  p.mScrollTreeAndList = true;
  p.mMinThreshold = 0;
  AutoCadProxy& e = *p.mAutoCadProxyP;
  e.mTraSensBase = 20000;
  e.mRotSensBase = 10000;
  e.mMaxContMoveTime = kPassesPerTick;
  e.mViewMode = 0;
  e.mCapIsMoving = false;
  e.mIsDocLocked = false;
  e.mObjectMoveMode = false;
  e.mMenuIsLoaded = false;
  e.setRotMode(0);
  e.mZoomAllAfterView = false;
  e.mModes.publish({});
  e.mMenuEntries.clear();
  motion::selCenterPoint = AcGePoint3d(0, 0, 0);
  motion::selAxisVector = AcGeVector3d(0, 0, 0);
  motion::selCenterValid = false;
  motion::selAxisValid = false;
  return p;
}

} // namespace fuzz
