#include "engine_home.h"

#include "engine_rig.h"
#include "engine_state.h"
#include "fake_devlink.h"

namespace fuzz {

namespace {

constexpr std::uint32_t kPassesPerTick = 3;

/// Log statements make their texts, which is all that can go wrong in them, but no file grows.
std::unique_ptr<OvAutoCad> makeEngine() {
  rig::useOwnHome();
  rig::home().write(rig::kSettingsFile, rig::settingsText({{"logToFile", "off"}}));
  fake_devlink::reset();
  rig::freshSurroundings();
  auto pluginP = std::make_unique<OvAutoCad>();
  pluginP->mIsToWatchConnection = false; // there is nothing to watch, and it would wake up all the time
  return pluginP;
}

} // namespace

OvAutoCad& freshEngine() {
  static const std::unique_ptr<OvAutoCad> sPluginP = makeEngine();
  rig::freshSurroundings();
  OvAutoCad& p = *sPluginP;
  rig::resetEngine(p);
  AutoCadProxy& e = *p.mAutoCadProxyP;
  e.mTraSensBase = 20000;
  e.mRotSensBase = 10000;
  e.mMaxContMoveTime = kPassesPerTick;
  return p;
}

} // namespace fuzz
