// Rotation of the 3D view about one axis. Turning the camera looks like the scene turning the other way.

#include "auto_cad_proxy.h"

#include "logging.h"
#include "motion_state.h"
#include "turn.h"

namespace {

constexpr std::int32_t kSecondAxis = 1; // value B, about picture-up
constexpr std::int32_t kThirdAxis = 2;  // value C, the roll

} // namespace

void AutoCadProxy::rotate(AcGsView* view, double angle, std::int32_t axisIndex, const AcGePoint3d& centre,
                          AcGeVector3d& axis, std::int32_t rotMode, bool keepHorizon, bool isPerspective) {
  try {
    if (angle == 0)
      return;
    if (axisIndex == kThirdAxis && keepHorizon)
      return; // a roll would tilt the horizon
    if (isCameraMode(rotMode))
      angle = -angle; // the camera follows the cap, not the scene
    OV_LOG(DBG, "AutoCadProxy", "AutoCadProxy::rotate", "Rotate Axis: " << angle << "(" << axisIndex << ")");
    if (!view)
      return;
    if (axisIndex == kSecondAxis && keepHorizon) {
      if (axis.z < 0) // upside down, the same cap turns the scene the same way on the screen
        angle = -angle;
      axis = AcGeVector3d(0, 0, 1);
    }
    // A view along its own up vector has no x axis. There is nothing to turn about then.
    if (axis.isZeroLength())
      return;
    const motion::Turn turned(angle, axis);
    const AcGePoint3d position = turned(view->position(), centre);
    const AcGePoint3d target = turned(view->target(), centre);
    const AcGeVector3d up = turned(view->upVector());
    const double height = view->fieldHeight();
    const double width = view->fieldWidth();
    motion::setFiniteView(*view, position, target, up, width, height, isPerspective);
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::rotate", "Error rotate()");
  }
}
