// Centre and axis from what the user has selected. The user is never prompted.

#include "selection.h"

#include "auto_cad_proxy.h"
#include "logging.h"
#include "motion/movement.h"

using namespace host_handles;
using motion::movement;

SelectionSet::~SelectionSet() {
  try {
    free();
  } catch (...) {
  }
}

bool SelectionSet::takeImplied() {
  mIsHeld = acedSSGet(L"I", nullptr, nullptr, nullptr, mName) == RTNORM;
  return mIsHeld;
}

void SelectionSet::free() {
  if (!mIsHeld)
    return;
  acedSSFree(mName);
  mIsHeld = false;
}

Adesk::Int32 host_handles::selectionLength(const ads_name set) {
  Adesk::Int32 length = 0;
  acedSSLength(set, &length);
  return length;
}

namespace {

/// Reads direction and start of a line. Returns false, and leaves both, if the object is no line.
bool readLine(const AcDbObject* objectP, AcGeVector3d& axis, AcGePoint3d& point) {
  if (!objectP || !objectP->isA()->isDerivedFrom(AcDbLine::desc()))
    return false;
  const auto* const lineP = static_cast<const AcDbLine*>(objectP);
  AcGePoint3d start(0, 0, 0);
  AcGePoint3d end(0, 0, 0);
  lineP->getStartPoint(start);
  lineP->getEndPoint(end);
  axis = end - start;
  axis.normalize(AcGeContext::gTol);
  point = start;
  return true;
}

/// Adds the middle of an object's extents. Returns false for an object that can't be opened, or that is
/// endless, as a ray is: such an object is left out of the mean.
bool addMiddle(const ads_name name, AcGePoint3d& sum) {
  OpenObject<AcDbEntity> entity(name, AcDb::kForRead);
  AcDbExtents extents;
  const bool hasExtents = entity.get() && entity.get()->getGeomExtents(extents) == Acad::eOk;
  entity.close();
  if (!hasExtents)
    return false;
  const AcGePoint3d low = extents.minPoint();
  const AcGePoint3d high = extents.maxPoint();
  sum += AcGeVector3d((low.x + high.x) * 0.5, (low.y + high.y) * 0.5, (low.z + high.z) * 0.5);
  return true;
}

} // namespace

bool AutoCadProxy::getSelObjectAxis(AcGeVector3d& axis, AcGePoint3d& point) {
  if (mCapIsMoving)
    return movement.selAxisValid;
  try {
    SelectionSet selection;
    if (!selection.takeImplied())
      return movement.selAxisValid = false;
    ads_name name = {};
    if (selectionLength(selection.name()) != 1 || acedSSName(selection.name(), 0, name) != RTNORM) {
      selection.free();
      return movement.selAxisValid = false;
    }
    OpenObject<AcDbObject> object(name, AcDb::kForRead);
    movement.selAxisValid = false; // also if reading the line throws
    movement.selAxisValid = readLine(object.get(), axis, point);
    object.close();
    selection.free();
    return movement.selAxisValid;
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::getSelObjectAxis", "Error getSelObjectAxis()");
    return false;
  }
}

bool AutoCadProxy::getSelObjectsCenter(const Adesk::Int64* set, AcGePoint3d& centre) {
  if (mCapIsMoving && !set)
    return movement.selCenterValid;
  try {
    SelectionSet implied;
    if (!set) {
      if (!implied.takeImplied())
        return movement.selCenterValid = false;
      set = implied.name();
    }
    centre = AcGePoint3d(0, 0, 0);
    const Adesk::Int32 count = selectionLength(set);
    Adesk::Int32 counted = 0;
    for (Adesk::Int32 i = 0; i < count; ++i) {
      ads_name name = {};
      if (acedSSName(set, i, name) != RTNORM) {
        implied.free();
        return movement.selCenterValid = false;
      }
      counted += addMiddle(name, centre) ? 1 : 0;
    }
    implied.free();
    if (counted == 0)
      return movement.selCenterValid = false;
    centre /= counted;
    OV_LOG(TMP, "AutoCadProxy", "AutoCadProxy::getSelObjectsCenter",
           "selCenterPoint: " << centre.x << ", " << centre.y << ", " << centre.z);
    return movement.selCenterValid = true;
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::getSelObjectsCenter", "Error getSelObjectsCenter()");
    return false;
  }
}
