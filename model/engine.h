#ifndef MODEL_ENGINE_H
#define MODEL_ENGINE_H

#include "geometry.h"
#include "replay.h"

#include <array>
#include <cstdint>
#include <functional>

namespace model {

/// The values of the settings file, and the toggles as they are now.
struct Settings {
  int traSensBase = 20000, rotSensBase = 10000, maxContMoveTime = 500, minThreshold = 0;
  bool useInt3dIntrfce = false, toggleRotationCenter = true, toggleRotationAxis = false;
  bool scrollTreeAndList = true, objectMoveMode = false;
  std::set<std::string> loggedTypes; // empty: nothing is known of the log, and no record is compared
};

/// What a menu file holds, with values as Cnfg delivers them.
struct MenuFile {
  std::string path;
  std::vector<std::string> modes, values;
};

/// What other threads write, value by value: the sample, X to C, and the values of a rotation code.
enum Input : std::size_t { X, ROT_MODE = 6, KEEP_HORIZON, HOVER_MODE, ZOOM_ALL_AFTER_VIEW, INPUTS };
/// Where they leave events.
enum Slot : std::size_t { KEY, SPECIAL };

/// What the model asks for. Inputs and slots may differ from one question to the next.
struct Inputs {
  virtual ~Inputs() = default;

  virtual const Settings& settings() = 0;
  virtual int read(std::size_t input) = 0;
  /// Returns the index of the pending key or the code of the pending special event.
  virtual int pending(Slot slot) = 0;
  /// The engine empties a slot.
  virtual void served(Slot slot) = 0;
  /// Returns the menu file at a tick, while it isn't loaded; null if it can't be opened.
  virtual const MenuFile* menuFile() = 0;
};

/// The engine that turns the sample and the keys into host calls, played against a recording. Each operation
/// throws Contradiction where the recording differs. Engines may be copied.
class Engine {
public:
  explicit Engine(Inputs& inputs) : mInputsP(&inputs) { readSettings(); }
  /// Copies the settings that the engine copies at its construction.
  void readSettings();
  void timerProc(Replay& replay);
  bool handleDeviceCap(Replay& replay);

  int viewMode = 0, cvportNumber = 0;
  bool capIsMoving = false, isDocLocked = false, menuIsLoaded = false, isPumpRunning = true;
  bool keepGoing = false; // after a tick: its time was up
  std::vector<std::string> modes, menuEntries;
  double timerId = 0, view = 0;
  Vec3 selCenterPoint, selAxisVector;
  bool selCenterValid = false, selAxisValid = false;

private:
  using Work = std::function<void()>;
  using Sample = std::array<int, 6>;
  static constexpr double RTNORM = 5100; // the host's status for success

  // engine.cpp
  bool succeeds(const Work& work);
  bool guarded(const char* operation, const Work& work);
  void doTransform();
  void handleDeviceKeys();
  bool isLayout();
  void loadMenufile();
  double currentDocument();
  void send(double document, double activate, const std::wstring& what);
  void execApplFunction(int keyEvent);
  void execSpecialApplFunction(int eventCode);
  bool scrollTreesAndLists(int x, int y, int z);
  double windowUnderPoint(double x, double y);
  bool moveBar(double window, bool isVertical, int amount, int pause);

  // motion.cpp
  void retrieveViewParams();
  void handleCapIsReleased();
  void handleCapIsDeflectedIn3DMode(const Sample& sample);
  void moveXYZ(const Sample& sample);
  void rotateABC(const Sample& sample);
  void rotate(double angle, std::size_t axisIndex, const Vec3& centre, Vec3 axis);
  void setView(const Vec3& position, const Vec3& target, const Vec3& up, double width, double height);
  void handleCapIsDeflectedIn2DMode(const Sample& sample);
  void changeViewport(const char* setter, const std::function<Args(double viewport)>& values);

  // selection.cpp
  void holding(const char* release, double handle, const Work& work, bool isRetried = true);
  void withSet(double given, const std::function<void(double set)>& work);
  int countOf(double set) { return static_cast<int>(out(call("acedSSLength", {set}), 1)); }
  double withObject(double set, int index, double mode, const std::function<void(const Call& opened)>& work);
  bool getSelObjectAxis();
  bool getSelObjectsCenter(double given, Vec3& centre);
  Args placement(const Sample& sample, double set, bool hoverMode, bool keepHorizon);
  bool transformSelection(const Sample& sample, bool hoverMode, bool keepHorizon);

  const Call& call(const char* name, const Args& in = {}, const std::wstring& what = {}) {
    return mReplayP->call(name, in, what);
  }
  double ask(const char* name, const Args& in = {}) { return out(call(name, in), 0); }
  Vec3 askPoint(const char* name) { return outPoint(call(name, {view}), 0); }
  static Vec3 outPoint(const Call& call, std::size_t i) {
    return {out(call, i), out(call, i + 1), out(call, i + 2)};
  }
  void log(const char* type, const std::string& message) { mReplayP->log(type, message); }
  int read(Input input) { return mInputsP->read(input); }
  static bool isFinite(const Arg& arg) { return std::isfinite(arg.value); }
  static bool areFinite(const Args& args) { return std::all_of(args.begin(), args.end(), isFinite); }

  Inputs* mInputsP;
  Replay* mReplayP = nullptr; // of the operation
  Settings mCopied;
  bool mIsPerspective = false;
  std::array<Vec3, 3> mAxes; // of the picture: to the left, up, towards the viewer
};

} // namespace model

#endif
