#ifndef COMPARISON_H
#define COMPARISON_H

#include <array>
#include <string>
#include <vector>

#include "call_log.h"
#include "check.h"
#include "engine_rig.h"

namespace rig {

/// What the model asks for: what the engine never writes from the plug-in itself, the rest from the test.
class ModelInputs : public model::Inputs {
public:
  const model::Settings& settings() override {
    const OvAutoCad& p = *mPluginP;
    mSettings.traSensBase = p.mTraSensBase;
    mSettings.rotSensBase = p.mRotSensBase;
    mSettings.maxContMoveTime = p.mMaxContMoveTime;
    mSettings.useInt3dIntrfce = p.mUseInt3dIntrfce;
    mSettings.minThreshold = p.mMinThreshold;
    mSettings.toggleRotationCenter = p.mToggleRotationCenter;
    mSettings.toggleRotationAxis = p.mToggleRotationAxis;
    mSettings.scrollTreeAndList = p.mScrollTreeAndList;
    mSettings.objectMoveMode = p.mAutoCadProxyP->mObjectMoveMode;
    return mSettings;
  }
  short axis(int index) override { return mSample.at(static_cast<std::size_t>(index)); }
  int pendingKey() override { return mKey; }
  int pendingSpecial() override { return mSpecial; }
  int rotMode() override { return mRotation.rotMode; }
  bool keepHorizon() override { return mRotation.keepHorizon; }
  bool hoverMode() override { return mRotation.hoverMode; }
  bool zoomAllAfterView() override { return mRotation.zoomAllAfterView; }
  void keyServed() override { mKey = -1; }
  void specialServed() override { mSpecial = 0; }
  const model::MenuFile* menuFile() override { return mIsMenuThere ? &mMenu : nullptr; }

  OvAutoCad* mPluginP = nullptr;
  model::Settings mSettings; // as asked for last
  std::array<short, 6> mSample{};
  int mKey = -1, mSpecial = 0;
  model::RotationSettings mRotation;
  bool mIsMenuThere = false;
  model::MenuFile mMenu{home().native() + "\\Orvaner\\Applications\\autocad.mnu", {}, {}};
};

/// Runs an action of the plug-in as the host does, then the model's on the calls and records that it made.
/// Returns what differed first; empty if nothing did. The calls go to `calls`.
template <class Action, class Expected>
std::string contradiction(std::vector<model::Call>& calls, const Action& action, const Expected& expected) {
  calls.clear();
  call_log::startTrace([&calls](call_log::Record&& record) {
    if (record.isBracketed)
      calls.push_back(record);
  });
  const std::size_t logStart = logSize();
  {
    const call_log::Bracket bracket("TimerProc");
    action();
  }
  call_log::stopTrace();
  std::vector<model::Record> logged;
  for (const std::string& record : records(logStart))
    logged.push_back({record.substr(0, 3), record.substr(4)});
  model::Replay replay(calls, logged, [](const std::string&) { return true; });
  try {
    expected(replay);
    replay.end();
  } catch (const model::Contradiction& found) {
    return found.what();
  }
  return "";
}

} // namespace rig

#endif
