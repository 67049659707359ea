// Translation of the 3D view. The size of a step follows the size of the view, so that the same deflection
// crosses the picture in the same time at any zoom.

#include "auto_cad_proxy.h"

#include <cmath>

#include "logging.h"
#include "motion_state.h"

namespace {

// Steps per value, in units of the view's size. The frame's x axis points to the LEFT of the picture, hence
// the other sign: a positive sample moves the eye left and down and forwards, so the scene right, up and
// towards us.
constexpr double kGainX = 5.0;
constexpr double kGainYZ = -5.0;

} // namespace

void AutoCadProxy::moveXYZ(AcGsView* view, double dx, double dy, double dz, const AcGeVector3d& xAxis,
                           const AcGeVector3d& yAxis, const AcGeVector3d& zAxis, std::int32_t rotMode,
                           bool isPerspective, bool hoverMode) {
  try {
    if (!view)
      return;
    if (isCameraMode(rotMode)) { // the camera follows the cap, not the scene
      dx = -dx;
      dy = -dy;
      dz = -dz;
    }
    if (dx != 0) {
      OV_LOG(INF, "AutoCadProxy", "AutoCadProxy::moveXYZ", "Move x-Direction, value: " << dx);
      move3D(view, dx * kGainX, xAxis, hoverMode, isPerspective);
    }
    if (dy != 0) {
      OV_LOG(INF, "AutoCadProxy", "AutoCadProxy::moveXYZ", "Move y-Direction, value: " << dy);
      move3D(view, dy * kGainYZ, yAxis, hoverMode, isPerspective);
    }
    if (dz == 0)
      return;
    OV_LOG(INF, "AutoCadProxy", "AutoCadProxy::moveXYZ", "Move z-Direction, value: " << dz);
    if (hoverMode && isPerspective)
      move3D(view, dz * kGainYZ, zAxis, hoverMode, isPerspective);
    else
      view->zoom(motion::zoomFactor(dz));
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::moveXYZ", "Error moveXYZ()");
  }
}

void AutoCadProxy::move3D(AcGsView* view, double value, const AcGeVector3d& axis, bool hoverMode,
                          bool isPerspective) {
  try {
    if (value == 0 || !view)
      return;
    AcGePoint3d position = view->position();
    AcGePoint3d target = view->target();
    const double width = view->fieldWidth();
    const double height = view->fieldHeight();
    const double step = value * std::sqrt(height * width);
    // A hovering eye keeps its height above the ground.
    const AcGeVector3d shift(step * axis.x, step * axis.y, hoverMode && isPerspective ? 0 : step * axis.z);
    position += shift;
    target += shift;
    const AcGeVector3d up = view->upVector();
    motion::setFiniteView(*view, position, target, up, width, height, isPerspective);
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::move3D", "Error move3D()");
  }
}
