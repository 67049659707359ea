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
  int traSensBase() const override { return mPluginP->mTraSensBase; }
  int rotSensBase() const override { return mPluginP->mRotSensBase; }
  unsigned maxContMoveTime() const override { return static_cast<unsigned>(mPluginP->mMaxContMoveTime); }
  bool useInt3dIntrfce() const override { return mPluginP->mUseInt3dIntrfce; }
  int minThreshold() const override { return mPluginP->mMinThreshold; }
  bool toggleRotationCenter() const override { return mPluginP->mToggleRotationCenter; }
  bool toggleRotationAxis() const override { return mPluginP->mToggleRotationAxis; }
  bool scrollTreeAndList() const override { return mPluginP->mScrollTreeAndList; }
  bool objectMoveMode() const override { return mPluginP->mAutoCadProxyP->mObjectMoveMode; }
  short axis(int index) override { return mSample.at(static_cast<std::size_t>(index)); }
  int pendingKey() override { return mKey; }
  int pendingSpecial() override { return mSpecial; }
  int rotMode() override { return mRotation.rotMode; }
  bool keepHorizon() override { return mRotation.keepHorizon; }
  bool hoverMode() override { return mRotation.hoverMode; }
  bool zoomAllAfterView() override { return mRotation.zoomAllAfterView; }
  void keyServed() override { mKey = -1; }
  void specialServed() override { mSpecial = 0; }
  bool menuFile(std::string& path, std::vector<std::string>& modes,
                std::vector<std::string>& values) override {
    path = home().native() + "\\Orvaner\\Applications\\autocad.mnu";
    modes = mModes;
    values = mMenuValues;
    return mIsMenuThere;
  }

  OvAutoCad* mPluginP = nullptr;
  std::array<short, 6> mSample{};
  int mKey = -1, mSpecial = 0;
  model::RotationSettings mRotation;
  bool mIsMenuThere = false;
  std::vector<std::string> mModes, mMenuValues;
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
