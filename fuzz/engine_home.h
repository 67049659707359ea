#ifndef FUZZ_ENGINE_HOME_H
#define FUZZ_ENGINE_HOME_H

#include "engine_rig.h"
#include "engine_state.h"

namespace fuzz {

/// The engine, made once for the program: with the fake device library, without its own threads' motion, on
/// a fresh host and a desktop whose clock moves a millisecond at each look. Every call sets it back to that.
inline OvAutoCad& freshEngine() {
  static const std::unique_ptr<OvAutoCad> sPluginP = [] {
    rig::useOwnHome();
    // Log statements make their texts, but no file grows.
    rig::home().write(rig::kSettingsFile, rig::settingsText({{"logToFile", "off"}}));
    fake_devlink::reset();
    rig::freshSurroundings();
    auto pluginP = std::make_unique<OvAutoCad>();
    pluginP->mIsToWatchConnection = false; // there is nothing to watch, and it would wake up all the time
    return pluginP;
  }();
  rig::freshSurroundings();
  rig::resetEngine(*sPluginP);
  AutoCadProxy& engine = *sPluginP->mAutoCadProxyP;
  engine.mTraSensBase = 20000;
  engine.mRotSensBase = 10000;
  engine.mMaxContMoveTime = 3; // passes in a tick
  return *sPluginP;
}

} // namespace fuzz

#endif
