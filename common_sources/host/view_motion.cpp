// Motion of the 3D view. While the cap moves, only the host's graphics view changes, in memory. The drawing
// takes over the new view once, at the release.

#include "auto_cad_proxy.h"

#include "logging.h"
#include "motion/movement.h"
#include "motion/rotation_mode.h"
#include "motion/view_step.h"
#include "ov_auto_cad.h"

using motion::movement;

namespace {

constexpr std::int32_t kFirstAxis = 0;  // value A, about picture-right
constexpr std::int32_t kSecondAxis = 1; // value B, about picture-up
constexpr std::int32_t kThirdAxis = 2;  // value C, the roll

/// Sets the view, unless one of its numbers is NaN or infinite: the release would write it into the drawing.
void setFiniteView(AcGsView& view, const AcGePoint3d& position, const AcGePoint3d& target,
                   const AcGeVector3d& up, double fieldWidth, double fieldHeight, bool isPerspective) {
  if (motion::isFinite(position, target, up, fieldWidth, fieldHeight))
    view.setView(position, target, up, fieldWidth, fieldHeight,
                 isPerspective ? AcGsView::kPerspective : AcGsView::kParallel);
}

/// Reads the centre that the rotation mode sets, as the view is now.
AcGePoint3d readDefaultCentre(const AcGsView& view, std::int32_t rotMode, bool isPerspective) {
  switch (motion::defaultCentre(rotMode, isPerspective)) {
  case motion::DefaultCentre::Origin:
    return AcGePoint3d::kOrigin;
  case motion::DefaultCentre::Eye:
    return view.position();
  default:
    return view.target();
  }
}

} // namespace

void AutoCadProxy::handleCapIsDeflectedIn3DMode(short x, short y, short z, short a, short b, short c) {
  try {
    AcGsView* view = nullptr;
    std::int32_t viewport = 0;
    retrieveViewParams(view, viewport);
    if (!view) {
      OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::handleCapIsDeflectedIn3DMode",
             "ViewP could not be retrieved!");
      return;
    }
    motion::ScreenFrame frame;
    if (!calcScreenAxesRelativeToObject(view, frame.xAxis, frame.yAxis, frame.zAxis))
      return;
    const bool isPerspective = view->isPerspective();
    if (!(mObjectMoveMode && transformSelection3d(x, y, z, a, b, c, frame.xAxis, frame.yAxis, frame.zAxis,
                                                  mHoverMode, mKeepHorizon))) {
      if (x != 0 || y != 0 || z != 0) {
        const double base = motion::divisor(mTraSensBase, kDefaultTraSensBase);
        moveXYZ(view, x / base, y / base, z / base, frame.xAxis, frame.yAxis, frame.zAxis, mRotMode,
                isPerspective, mHoverMode);
      }
      // After the translation: a centre taken from the view is the moved one.
      if (a != 0 || b != 0 || c != 0)
        rotateView(view, a, b, c, frame, isPerspective);
    }
    view->update();
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::handleCapIsDeflectedIn3DMode",
           "Error handleCapIsDeflectedIn3DMode()");
  }
}

bool AutoCadProxy::calcScreenAxesRelativeToObject(AcGsView* view, AcGeVector3d& xAxis, AcGeVector3d& yAxis,
                                                  AcGeVector3d& zAxis) {
  try {
    const AcGePoint3d position = view->position();
    const AcGePoint3d target = view->target();
    const motion::ScreenFrame frame = motion::screenFrame(position, target, view->upVector());
    xAxis = frame.xAxis;
    yAxis = frame.yAxis;
    zAxis = frame.zAxis;
    return true;
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::calcScreenAxesRelativeToObject",
           "Error calcScreenAxesRelativeToObject()");
    return false;
  }
}

void AutoCadProxy::moveXYZ(AcGsView* view, double dx, double dy, double dz, const AcGeVector3d& xAxis,
                           const AcGeVector3d& yAxis, const AcGeVector3d& zAxis, std::int32_t rotMode,
                           bool isPerspective, bool hoverMode) {
  try {
    if (!view)
      return;
    if (motion::isCameraMode(rotMode)) { // the camera follows the cap, not the scene
      dx = -dx;
      dy = -dy;
      dz = -dz;
    }
    if (dx != 0) {
      OV_LOG(INF, "AutoCadProxy", "AutoCadProxy::moveXYZ", "Move x-Direction, value: " << dx);
      move3D(view, dx * motion::kViewGainX, xAxis, hoverMode, isPerspective);
    }
    if (dy != 0) {
      OV_LOG(INF, "AutoCadProxy", "AutoCadProxy::moveXYZ", "Move y-Direction, value: " << dy);
      move3D(view, dy * motion::kViewGainYZ, yAxis, hoverMode, isPerspective);
    }
    if (dz == 0)
      return;
    OV_LOG(INF, "AutoCadProxy", "AutoCadProxy::moveXYZ", "Move z-Direction, value: " << dz);
    if (hoverMode && isPerspective)
      move3D(view, dz * motion::kViewGainYZ, zAxis, hoverMode, isPerspective);
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
    const AcGePoint3d position = view->position();
    const AcGePoint3d target = view->target();
    const double width = view->fieldWidth();
    const double height = view->fieldHeight();
    const AcGeVector3d shift = motion::viewShift(value, axis, width, height, hoverMode && isPerspective);
    const AcGeVector3d up = view->upVector();
    setFiniteView(*view, position + shift, target + shift, up, width, height, isPerspective);
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::move3D", "Error move3D()");
  }
}

void AutoCadProxy::rotateView(AcGsView* view, short a, short b, short c, motion::ScreenFrame& frame,
                              bool isPerspective) {
  AcGePoint3d centre;
  if (mOvAutoCadP->mToggleRotationAxis && getSelObjectAxis(movement.selAxisVector, movement.selCenterPoint)) {
    a = motion::shareAlong(movement.selAxisVector, frame.xAxis, a);
    b = motion::shareAlong(movement.selAxisVector, frame.yAxis, b);
    c = motion::shareAlong(movement.selAxisVector, frame.zAxis, c);
    frame.xAxis = frame.yAxis = frame.zAxis = movement.selAxisVector;
    centre = movement.selCenterPoint;
  } else if (mOvAutoCadP->mToggleRotationCenter && getSelObjectsCenter(nullptr, movement.selCenterPoint)) {
    centre = movement.selCenterPoint;
  } else {
    centre = readDefaultCentre(*view, mRotMode, isPerspective);
  }
  const double base = motion::divisor(mRotSensBase, kDefaultRotSensBase);
  // The frame's x axis points to the left of the picture, hence the first angle's other sign.
  if (a != 0)
    rotate(view, a / base, kFirstAxis, centre, frame.xAxis, mRotMode, mKeepHorizon, isPerspective);
  if (b != 0)
    rotate(view, -b / base, kSecondAxis, centre, frame.yAxis, mRotMode, mKeepHorizon, isPerspective);
  if (c != 0)
    rotate(view, -c / base, kThirdAxis, centre, frame.zAxis, mRotMode, mKeepHorizon, isPerspective);
}

void AutoCadProxy::rotate(AcGsView* view, double angle, std::int32_t axisIndex, const AcGePoint3d& centre,
                          AcGeVector3d& axis, std::int32_t rotMode, bool keepHorizon, bool isPerspective) {
  try {
    if (angle == 0)
      return;
    if (axisIndex == kThirdAxis && keepHorizon)
      return; // a roll would tilt the horizon
    if (motion::isCameraMode(rotMode))
      angle = -angle; // the camera follows the cap, not the scene
    OV_LOG(DBG, "AutoCadProxy", "AutoCadProxy::rotate", "Rotate Axis: " << angle << "(" << axisIndex << ")");
    if (!view)
      return;
    if (axisIndex == kSecondAxis && keepHorizon) {
      if (axis.z < 0) // the axis points down: the turn keeps its sense on the screen
        angle = -angle;
      axis = AcGeVector3d(0, 0, 1);
    }
    // A view along its own up vector has no x axis, and a line of no length no direction.
    if (axis.isZeroLength())
      return;
    AcGePoint3d position = view->position();
    AcGePoint3d target = view->target();
    AcGeVector3d up = view->upVector();
    position.rotateBy(angle, axis, centre);
    target.rotateBy(angle, axis, centre);
    up.rotateBy(angle, axis);
    const double height = view->fieldHeight();
    const double width = view->fieldWidth();
    setFiniteView(*view, position, target, up, width, height, isPerspective);
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::rotate", "Error rotate()");
  }
}

void AutoCadProxy::retrieveViewParams(AcGsView*& view, std::int32_t& viewport) {
  resbuf result = {};
  const int rc = acedGetVar(L"CVPORT", &result);
  motion::viewP = nullptr;
  if (rc != RTNORM) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::retrieveViewParams",
           "System variable 'CVPORT'could not be retrieved! rc = " << rc);
  } else {
    motion::cvportNumber = result.resval.rint;
    AcGsKernelDescriptor descriptor;
    descriptor.addRequirement(AcGsKernelDescriptor::k3DDrawing);
    motion::viewP = acgsObtainAcGsView(motion::cvportNumber, descriptor);
    if (!motion::viewP)
      OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::retrieveViewParams",
             "AcGsView object could not be retrieved!");
  }
  view = motion::viewP;
  viewport = motion::cvportNumber;
}

void AutoCadProxy::handleCapIsReleased(std::int32_t mode) {
  if (!mCapIsMoving)
    return;
  try {
    if (mode == kMode2D) {
      unlockDocument();
      OV_LOG(TRC, "AutoCadProxy", "AutoCadProxy::handleCapIsReleased", "Document unlocked");
    } else {
      if (mIsDocLocked)
        unlockDocument();
      AcGsView* view = nullptr;
      std::int32_t viewport = 0;
      retrieveViewParams(view, viewport);
      if (view && view->isValid())
        acgsSetViewParameters(viewport, view, true, true, false);
      else if (view)
        OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::handleCapIsReleased", "viewP not valid!");
    }
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::handleCapIsReleased", "Error handleCapIsReleased()");
  }
  mCapIsMoving = false;
  OV_LOG(TRC, "AutoCadProxy", "AutoCadProxy::handleCapIsReleased", "Cap released.");
}
