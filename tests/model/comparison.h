#ifndef COMPARISON_H
#define COMPARISON_H

#include <array>
#include <string>
#include <vector>

#include "call_log.h"
#include "check.h"
#include "engine_rig.h"

namespace rig {

/// The model's inputs. The settings come from the plug-in, since the engine never writes them; the rest comes from
/// the test.
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
  int read(std::size_t input) override {
    return input < mSample.size() ? mSample.at(input) : mRotation.at(input - mSample.size());
  }
  int pending(model::Slot slot) override { return mPending.at(slot); }
  void served(model::Slot slot) override { mPending.at(slot) = slot == model::KEY ? -1 : 0; }
  const model::MenuFile* menuFile() override { return mIsMenuThere ? &mMenu : nullptr; }

  OvAutoCad* mPluginP = nullptr;
  model::Settings mSettings; // as asked for last
  std::array<short, 6> mSample{};
  std::array<int, 2> mPending{-1, 0}; // key, special event
  std::vector<int> mRotation{0, 0, 0, 0};
  bool mIsMenuThere = false;
  model::MenuFile mMenu{home().native() + "\\Orvaner\\Applications\\autocad.mnu", {}, {}};
};

/// Runs an action of the plug-in as the host does, then the model's action on the calls and records that it made.
/// Returns the first difference, empty if there is none. The calls go to `calls`.
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
  const std::vector<std::string> logged = records(logStart);
  const std::set<std::string> types = {"ERR", "WRN", "CRT", "TRC", "INF", "DBG", "TMP"};
  model::Replay replay(calls, logged, types);
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
