// The frame around one motion step in a 3D view. While the cap moves, only the host's graphics view changes,
// in memory; the drawing takes the new view over once, at release.

#include "auto_cad_proxy.h"

#include <algorithm>
#include <cmath>

#include "logging.h"
#include "motion_state.h"
#include "ov_auto_cad.h"

using namespace motion;

namespace {

/// The share of a value that lies along the selected line, towards zero. The smallest value has no opposite:
/// along a line that points the other way it would wrap and turn the view backwards. Along an axis of a
/// broken view, which is none, lies nothing.
short shareAlong(const AcGeVector3d& line, const AcGeVector3d& axis, short value) {
  const double share = std::clamp(line.dotProduct(axis), -1.0, 1.0) * value;
  return std::isnan(share) ? short{0} : static_cast<short>(std::min(share, 32767.0));
}

/// The centre that the rotation mode gives when no selection does.
AcGePoint3d defaultCentre(const AcGsView& view, std::int32_t rotMode, bool isPerspective) {
  if (rotMode == kObjOrigin || (rotMode == kCamStandard && !isPerspective))
    return worldOrigin;
  return rotMode == kCamStandard ? view.position() : view.target();
}

} // namespace

void AutoCadProxy::handleCapIsDeflectedIn3DMode(short x, short y, short z, short a, short b, short c) {
  try {
    AcGeVector3d xAxis(1, 0, 0);
    AcGeVector3d yAxis(0, 1, 0);
    AcGeVector3d zAxis(0, 0, 1);
    AcGsView* view = nullptr;
    std::int32_t viewport = 0;
    retrieveViewParams(view, viewport);
    if (!view) {
      OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::handleCapIsDeflectedIn3DMode",
             "ViewP could not be retrieved!");
      return;
    }
    if (!calcScreenAxesRelativeToObject(view, xAxis, yAxis, zAxis))
      return;
    const bool isPerspective = view->isPerspective();
    if (!(mObjectMoveMode &&
          transformSelection3d(x, y, z, a, b, c, xAxis, yAxis, zAxis, mHoverMode, mKeepHorizon))) {
      if (x != 0 || y != 0 || z != 0) {
        const double base = divisor(mTraSensBase, kDefaultTraSensBase);
        moveXYZ(view, x / base, y / base, z / base, xAxis, yAxis, zAxis, mRotMode, isPerspective, mHoverMode);
      }
      // Behind the translation: a centre taken from the view is the moved one.
      if (a != 0 || b != 0 || c != 0)
        rotateView(view, a, b, c, xAxis, yAxis, zAxis, isPerspective);
    }
    view->update();
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::handleCapIsDeflectedIn3DMode",
           "Error handleCapIsDeflectedIn3DMode()");
  }
}

void AutoCadProxy::rotateView(AcGsView* view, short a, short b, short c, AcGeVector3d& xAxis,
                              AcGeVector3d& yAxis, AcGeVector3d& zAxis, bool isPerspective) {
  AcGePoint3d centre;
  if (mOvAutoCadP->mToggleRotationAxis && getSelObjectAxis(selAxisVector, selCenterPoint)) {
    a = shareAlong(selAxisVector, xAxis, a);
    b = shareAlong(selAxisVector, yAxis, b);
    c = shareAlong(selAxisVector, zAxis, c);
    xAxis = yAxis = zAxis = selAxisVector;
    centre = selCenterPoint;
  } else if (mOvAutoCadP->mToggleRotationCenter && getSelObjectsCenter(nullptr, selCenterPoint)) {
    centre = selCenterPoint;
  } else {
    centre = defaultCentre(*view, mRotMode, isPerspective);
  }
  const double base = divisor(mRotSensBase, kDefaultRotSensBase);
  // The frame's x axis points to the left of the picture, so the first angle has the other sign than its
  // fellows.
  if (a != 0)
    rotate(view, a / base, 0, centre, xAxis, mRotMode, mKeepHorizon, isPerspective);
  if (b != 0)
    rotate(view, -b / base, 1, centre, yAxis, mRotMode, mKeepHorizon, isPerspective);
  if (c != 0)
    rotate(view, -c / base, 2, centre, zAxis, mRotMode, mKeepHorizon, isPerspective);
}

void AutoCadProxy::retrieveViewParams(AcGsView*& view, std::int32_t& viewport) {
  resbuf result = {};
  const int rc = acedGetVar(L"CVPORT", &result);
  viewP = nullptr;
  if (rc != RTNORM) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::retrieveViewParams",
           "System variable 'CVPORT'could not be retrieved! rc = " << rc);
  } else {
    cvportNumber = result.resval.rint;
    AcGsKernelDescriptor descriptor;
    descriptor.addRequirement(AcGsKernelDescriptor::k3DDrawing);
    viewP = acgsObtainAcGsView(cvportNumber, descriptor);
    if (!viewP)
      OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::retrieveViewParams",
             "AcGsView object could not be retrieved!");
  }
  view = viewP;
  viewport = cvportNumber;
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

/// Gives back the lock of the current document, if we hold it. A host that has no document any more has no
/// lock of ours either.
void AutoCadProxy::unlockDocument() {
  AcApDocManager* const managerP = acDocManagerPtr();
  AcApDocument* const documentP = managerP ? managerP->curDocument() : nullptr;
  if (mIsDocLocked && documentP)
    managerP->unlockDocument(documentP);
  mIsDocLocked = false;
}
