#ifndef MODEL_ENGINE_H
#define MODEL_ENGINE_H

#include "geometry.h"
#include "replay.h"

#include <array>
#include <cstdint>

namespace model {

/// The engine that turns the sample and the keys into host calls, played against a recording. Each operation
/// throws Contradiction where the recording differs. Engines may be copied.
class Engine {
public:
  explicit Engine(Inputs& inputs);
  /// Takes over the state of another engine, with other inputs.
  Engine(const Engine& other, Inputs& inputs) : Engine(other) { mInputsP = &inputs; }

  /// Takes over the settings that the engine copies when it is made.
  void readSettings();

  void timerProc(Replay& replay);
  void doTransform(Replay& replay);
  void handleDeviceKeys(Replay& replay);
  bool handleDeviceCap(Replay& replay);

  int viewMode = 0, cvportNumber = 0;
  bool capIsMoving = false, isDocLocked = false, menuIsLoaded = false, isPumpRunning = true;
  std::vector<std::string> modes, menuEntries;
  double timerId = 0, view = 0;
  Scaled selCenterPoint;
  Vec3 selAxisVector;
  bool selCenterValid = false, selAxisValid = false;

private:
  using Args = std::vector<Arg>;
  using Sample = std::array<short, 6>;
  static constexpr double RTNORM = 5100; // the host's status for success

  // engine.cpp
  bool isLayout();
  void loadMenufile();
  double currentDocument();
  void send(double document, double activate, const std::wstring& what);
  void execApplFunction(int keyEvent);
  void execSpecialApplFunction(int eventCode);
  bool scrollTreesAndLists(int x, int y, int z);
  double windowUnderPoint(int x, int y);
  bool moveBar(double window, bool isVertical, int amount, int pause);

  // motion.cpp
  void retrieveViewParams();
  void handleCapIsReleased();
  void handleCapIsDeflectedIn3DMode(const Sample& sample);
  void moveXYZ(const Sample& sample);
  void rotateABC(const Sample& sample);
  void rotate(double angle, std::size_t axisIndex, const Scaled& centre, Vec3 axis);
  void setView(const Scaled& position, const Scaled& target, const Scaled& up, double width, double height);
  void handleCapIsDeflectedIn2DMode(const Sample& sample);
  void changeViewport(const char* setter, const std::function<Args(double viewport)>& values);

  // selection.cpp
  void holding(const char* release, double handle, const std::function<void()>& work, bool isRetried = true);
  void withSet(double given, const std::function<void(double set)>& work);
  int countOf(double set);
  const Call& withObject(double set, int index, double mode,
                         const std::function<void(const Call& opened, double object)>& work);
  bool getSelObjectAxis();
  bool getSelObjectsCenter(double given, Scaled& centre);
  std::array<Scaled, 4> placement(const Sample& sample, double set, bool hoverMode, bool keepHorizon);
  bool transformSelection(const Sample& sample);

  const Call& call(const char* name, const Args& in = {}, const std::wstring& what = {}) {
    return mReplayP->call(name, in, what);
  }
  double ask(const char* name, const Args& in = {}) { return out(call(name, in), 0); }
  Vec3 askPoint(const char* name) { return outPoint(call(name, {view}), 0); }
  static Vec3 outPoint(const Call& call, std::size_t i) {
    return {out(call, i), out(call, i + 1), out(call, i + 2)};
  }
  void log(const char* type, const std::string& message) { mReplayP->log(type, message); }
  static bool isFinite(const Arg& arg) { return std::isfinite(arg.value); }
  static bool areFinite(const Args& args) { return std::all_of(args.begin(), args.end(), isFinite); }
  /// Does an operation's work. After an exception of the host, expects its record and returns nothing, or false.
  template <class Work> auto guarded(const char* operation, const Work& work) -> decltype(work()) {
    try {
      return work();
    } catch (const HostException&) {
      log("ERR", text("Error ", operation, "()"));
      return decltype(work())();
    }
  }

  Inputs* mInputsP;
  Replay* mReplayP = nullptr; // of the operation
  double mTraSensBase = 0, mRotSensBase = 0;
  std::uint32_t mMaxContMoveTime = 0;
  bool mUseInt3dIntrfce = false, mIsPerspective = false;
  std::array<Vec3, 3> mAxes; // of the picture: to the left, up, towards the viewer
};

} // namespace model

#endif
