// The screen frame of the view, and centre and axis from what the user has selected. The user is never
// prompted.

#include "auto_cad_proxy.h"

#include "host_handles.h"
#include "logging.h"
#include "motion_state.h"

using namespace motion;

bool AutoCadProxy::calcScreenAxesRelativeToObject(AcGsView* view, AcGeVector3d& xAxis, AcGeVector3d& yAxis,
                                                  AcGeVector3d& zAxis) {
  try {
    const AcGePoint3d position = view->position();
    const AcGePoint3d target = view->target();
    const AcGeVector3d up = view->upVector();
    const AcGeVector3d look = position - target; // towards the viewer
    yAxis = up;
    zAxis = look;
    xAxis = look.crossProduct(up); // in this order it points to the LEFT of the picture
    xAxis.normalize(AcGeContext::gTol);
    yAxis.normalize(AcGeContext::gTol);
    zAxis.normalize(AcGeContext::gTol);
    return true;
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::calcScreenAxesRelativeToObject",
           "Error calcScreenAxesRelativeToObject()");
    return false;
  }
}

bool AutoCadProxy::getSelObjectAxis(AcGeVector3d& axis, AcGePoint3d& point) {
  if (mCapIsMoving)
    return selAxisValid;
  try {
    SelectionSet selection;
    if (!selection.takeImplied())
      return selAxisValid = false;
    ads_name name = {};
    if (selectionLength(selection.name()) != 1 || acedSSName(selection.name(), 0, name) != RTNORM) {
      selection.free();
      return selAxisValid = false;
    }
    OpenObject<AcDbObject> object(name, AcDb::kForRead);
    selAxisValid = false;
    if (object.get() && object.get()->isA()->isDerivedFrom(AcDbLine::desc())) {
      const auto* const lineP = static_cast<const AcDbLine*>(object.get());
      AcGePoint3d start(0, 0, 0);
      AcGePoint3d end(0, 0, 0);
      lineP->getStartPoint(start);
      lineP->getEndPoint(end);
      const AcGeVector3d direction = end - start;
      // A line without a length has no direction to turn about; the next rule for the centre serves then.
      if (!direction.isZeroLength() && isFinite(direction)) {
        axis = direction;
        axis.normalize(AcGeContext::gTol);
        point = start;
        selAxisValid = true;
      }
    }
    object.close();
    selection.free();
    return selAxisValid;
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::getSelObjectAxis", "Error getSelObjectAxis()");
    return false;
  }
}

bool AutoCadProxy::getSelObjectsCenter(const Adesk::Int64* set, AcGePoint3d& centre) {
  if (mCapIsMoving && !set)
    return selCenterValid;
  try {
    SelectionSet implied;
    if (!set) {
      if (!implied.takeImplied())
        return selCenterValid = false;
      set = implied.name();
    }
    centre = AcGePoint3d(0, 0, 0);
    const Adesk::Int32 count = selectionLength(set);
    Adesk::Int32 counted = 0;
    for (Adesk::Int32 i = 0; i < count; ++i) {
      ads_name name = {};
      if (acedSSName(set, i, name) != RTNORM) {
        implied.free();
        return selCenterValid = false;
      }
      OpenObject<AcDbEntity> entity(name, AcDb::kForRead);
      AcDbExtents extents;
      const bool hasExtents = entity.get() && entity.get()->getGeomExtents(extents) == Acad::eOk;
      entity.close();
      if (!hasExtents)
        continue; // can't be opened, or is endless as a ray is: the others make the centre
      const AcGePoint3d low = extents.minPoint();
      const AcGePoint3d high = extents.maxPoint();
      const AcGeVector3d middle((low.x + high.x) * 0.5, (low.y + high.y) * 0.5, (low.z + high.z) * 0.5);
      if (!isFinite(middle))
        continue;
      centre += middle;
      ++counted;
    }
    implied.free();
    if (counted == 0)
      return selCenterValid = false;
    centre /= counted;
    OV_LOG(TMP, "AutoCadProxy", "AutoCadProxy::getSelObjectsCenter",
           "selCenterPoint: " << centre.x << ", " << centre.y << ", " << centre.z);
    return selCenterValid = true;
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::getSelObjectsCenter", "Error getSelObjectsCenter()");
    return false;
  }
}
