#ifndef MODEL_ENGINE_H
#define MODEL_ENGINE_H

#include "geometry.h"
#include "replay.h"

#include <array>
#include <cstdint>
#include <functional>

namespace model {

/// The axes of the picture: to the left, up, towards the viewer.
struct Frame {
  Vec3 x{1, 0, 0};
  Vec3 y{0, 1, 0};
  Vec3 z{0, 0, 1};
};

/// A computed point or vector, and the largest operand that went into it.
struct Scaled {
  Vec3 value;
  double scale = 0;
};

/// What moves the selected objects, and the largest operand of its translation.
struct Placement {
  Matrix matrix;
  double scale = 0;
};

struct ViewValues {
  Scaled position;
  Scaled target;
  Scaled up;
  double width = 0;
  double height = 0;
};

/// The engine that turns the sample and the keys into host calls, played against a recording. Each operation
/// throws Contradiction where the recording differs. Engines may be copied.
class Engine {
public:
  explicit Engine(Inputs& inputs);
  /// Take over the state of another engine, with other inputs.
  Engine(const Engine& other, Inputs& inputs) : Engine(other) { mInputs = &inputs; }

  /// Takes over the settings that the engine copies when it is made.
  void readSettings();

  void timerProc(Replay& replay);
  void doTransform(Replay& replay);
  void handleDeviceKeys(Replay& replay);
  bool handleDeviceCap(Replay& replay);

  int viewMode = 0;
  bool capIsMoving = false;
  bool isDocLocked = false;
  bool menuIsLoaded = false;
  std::vector<std::string> modes;
  std::vector<std::string> menuEntries;
  bool isPumpRunning = true;
  double timerId = 0;
  double view = 0;
  int cvportNumber = 0;
  Vec3 selCenterPoint;
  double selCenterScale = 0; // largest operand of selCenterPoint
  Vec3 selAxisVector;
  bool selCenterValid = false;
  bool selAxisValid = false;

private:
  using Sample = std::array<short, 6>;

  // engine.cpp
  int retrieveMode(Replay& replay);
  void loadMenufile(Replay& replay);
  void execApplFunction(Replay& replay, int keyEvent);
  void execSpecialApplFunction(Replay& replay, int eventCode);

  // motion.cpp
  void handleCapIsDeflectedIn3DMode(Replay& replay, const Sample& sample);
  void handleCapIsReleased(Replay& replay, int mode);
  void retrieveViewParams(Replay& replay);
  void moveView(Replay& replay, const Sample& sample, const Frame& frame, bool isPerspective);
  void moveXYZ(Replay& replay, Vec3 d, const Frame& frame, int rotMode, bool isPerspective, bool hoverMode);
  void move3D(Replay& replay, double value, const Vec3& axis, bool hoverMode, bool isPerspective);
  Scaled chooseRotation(Replay& replay, std::array<short, 3>& values, std::array<Vec3, 3>& axes,
                        bool isPerspective);
  void rotate(Replay& replay, double angle, int axisIndex, const Scaled& centre, Vec3 axis, int rotMode,
              bool keepHorizon, bool isPerspective);
  void setView(Replay& replay, const ViewValues& values, bool isPerspective);
  void handleCapIsDeflectedIn2DMode(Replay& replay, short x, short y, short z);
  void pan2D(Replay& replay, double dx, double dy);
  void zoom2D(Replay& replay, double dz);

  // selection.cpp
  bool calcScreenAxesRelativeToObject(Replay& replay, Frame& frame);
  bool getSelObjectAxis(Replay& replay);
  bool getSelObjectsCenter(Replay& replay, const double* given, Vec3& centre, double& scale);
  bool transformSelection3d(Replay& replay, const Sample& sample, const Frame& frame, bool hoverMode,
                            bool keepHorizon);
  bool transformSelection2d(Replay& replay, double x, double y);
  bool transformSelection(Replay& replay, bool redraws, const std::function<Placement(double set)>& place);

  // scrolling.cpp
  bool scrollTreesAndLists(Replay& replay, int x, int y, int z);

  Inputs* mInputs;
  double mTraSensBase = 0;
  double mRotSensBase = 0;
  std::uint32_t mMaxContMoveTime = 0;
  bool mUseInt3dIntrfce = false;
};

} // namespace model

#endif
