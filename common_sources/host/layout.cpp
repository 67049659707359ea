// The flat view of a layout. Amounts are fractions of the view: a sample value of one mTraSensBase is a whole
// view width or height.

#include "auto_cad_proxy.h"

#include <cmath>

#include "logging.h"
#include "motion/view_step.h"
#include "settings.h"

namespace {

/// Opens the layout's viewport for write. Returns false if it can't be had.
bool openViewport(AcDbObjectPointer<AcDbViewport>& viewport) {
  viewport.open(acedActiveViewportId(), AcDb::kForWrite, false);
  return viewport.object() != nullptr;
}

constexpr char kNoViewport[] = "AcDbObjectPointer could not be retrieved!";

} // namespace

void AutoCadProxy::handleCapIsDeflectedIn2DMode(short x, short y, short z) {
  try {
    const bool wasLocked = mIsDocLocked;
    if (mObjectMoveMode && transformSelection2d(x, y))
      return;
    if (!mCapIsMoving) {
      // transformSelection2d may have locked and then failed. A second lock would stay: the release unlocks
      // once.
      const bool hasJustLocked = mIsDocLocked && !wasLocked;
      if (!hasJustLocked) {
        AcApDocManager& manager = documentManager();
        lockDocument(manager, manager.curDocument());
      }
      mIsDocLocked = true;
      OV_LOG(TRC, "AutoCadProxy", "AutoCadProxy::handleCapIsDeflectedIn2DMode", "Document locked");
    }
    const double base = motion::divisor(mTraSensBase, kDefaultTraSensBase);
    // The view moves against the cap, so that the drawing follows it.
    if (x != 0 || y != 0)
      pan2D(-(x / base), -(y / base));
    if (z != 0)
      zoom2D(-(z / base));
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::handleCapIsDeflectedIn2DMode",
           "Error handleCapIsDeflectedIn2DMode()");
  }
}

void AutoCadProxy::pan2D(double dx, double dy) {
  AcDbObjectPointer<AcDbViewport> viewport;
  if (!openViewport(viewport)) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::pan2D", kNoViewport);
    return;
  }
  const double width = viewport->width();
  const double height = viewport->height();
  const double viewHeight = viewport->viewHeight();
  const AcGePoint2d centre = viewport->viewCenter();
  const AcGePoint2d moved(centre.x + width / height * viewHeight * dx, centre.y + viewHeight * dy);
  // NaN and infinity, as of a viewport without a height, would stay in the drawing.
  if (std::isfinite(moved.x) && std::isfinite(moved.y)) {
    viewport->setViewCenter(moved);
    viewport->updateDisplay();
  }
  viewport.close();
}

void AutoCadProxy::zoom2D(double dz) {
  const double factor = motion::zoomFactor(dz);
  AcDbObjectPointer<AcDbViewport> viewport;
  if (!openViewport(viewport)) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::zoom2D", kNoViewport);
    return;
  }
  const double viewHeight = factor * viewport->viewHeight();
  // Zooming on and on would end at infinity or 0, and the drawing would keep a viewport that shows nothing.
  if (std::isfinite(viewHeight) && viewHeight > 0) {
    viewport->setViewHeight(viewHeight);
    viewport->updateDisplay();
  }
  viewport.close();
}
