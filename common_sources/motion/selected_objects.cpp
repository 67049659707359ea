// Motion of the selected objects. The step is a fixed amount for each device count: neither the sensitivities
// nor the rotation mode enter.

#include "auto_cad_proxy.h"

#include <cmath>

#include "host_handles.h"
#include "logging.h"
#include "motion_state.h"

using namespace motion;

namespace {

// The frame's x axis points to the LEFT of the picture, hence the sign of the first gain of each pair.
constexpr double kTranslationGainX = -0.5;  // drawing units per count, along the frame's x axis
constexpr double kTranslationGainYZ = 0.5;  // drawing units per count, along y and z axis
constexpr double kRotationGainX = -0.002;   // radians per count, about the frame's x axis
constexpr double kRotationGainYZ = 0.002;   // radians per count, about y and z axis
constexpr double kTranslationGain2D = 5e-5; // drawing units per count, along world X and Y

constexpr int kRedrawShow = 1; // mode of acedRedraw

AcApDocument* currentDocument(AcApDocManager* managerP) {
  return managerP ? managerP->curDocument() : nullptr;
}

bool isFinite(const AcGeMatrix3d& matrix) {
  for (const auto& row : matrix.entry) {
    for (const double value : row) {
      if (!std::isfinite(value))
        return false;
    }
  }
  return true;
}

AcGeMatrix3d translation(const AcGeVector3d& shift) {
  AcGeMatrix3d matrix;
  matrix.setTranslation(shift);
  return matrix;
}

} // namespace

bool AutoCadProxy::transformSelection3d(double x, double y, double z, double a, double b, double c,
                                        const AcGeVector3d& xAxis, const AcGeVector3d& yAxis,
                                        const AcGeVector3d& zAxis, bool hoverMode, bool keepHorizon) {
  try {
    AcApDocManager* const managerP = acDocManagerPtr();
    AcApDocument* const documentP = currentDocument(managerP);
    SelectionSet selection;
    if (!documentP || !selection.takeImplied())
      return false;
    const Adesk::Int32 count = selectionLength(selection.name());
    if (keepHorizon)
      c = 0;
    AcGePoint3d centre(0, 0, 0);
    if (!getSelObjectsCenter(selection.name(), centre))
      centre = AcGePoint3d::kOrigin;
    AcGeVector3d shift =
        xAxis * (x * kTranslationGainX) + yAxis * (y * kTranslationGainYZ) + zAxis * (z * kTranslationGainYZ);
    if (hoverMode)
      shift.y = 0; // world Y here, where the view's hovering keeps world Z
    const AcGeVector3d secondAxis = keepHorizon ? AcGeVector3d(0, 1, 0) : yAxis;

    // A point is turned about the third axis, then the second, then the first, and moved last.
    AcGeMatrix3d matrix = translation(shift);
    if (a != 0)
      matrix = matrix * AcGeMatrix3d::rotation(a * kRotationGainX, xAxis, centre);
    if (b != 0)
      matrix = matrix * AcGeMatrix3d::rotation(b * kRotationGainYZ, secondAxis, centre);
    if (c != 0)
      matrix = matrix * AcGeMatrix3d::rotation(c * kRotationGainYZ, zAxis, centre);

    lockDocument(*managerP, documentP);
    transformObjects(selection.name(), count, matrix, false);
    selection.free();
    return true;
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::transformSelection3d", "Error transformSelection()");
    return false;
  }
}

bool AutoCadProxy::transformSelection2d(double x, double y) {
  try {
    AcApDocManager* const managerP = acDocManagerPtr();
    AcApDocument* const documentP = currentDocument(managerP);
    SelectionSet selection;
    if (!documentP || !selection.takeImplied())
      return false;
    const Adesk::Int32 count = selectionLength(selection.name());
    const AcGeMatrix3d matrix = translation(AcGeVector3d(x * kTranslationGain2D, y * kTranslationGain2D, 0));
    lockDocument(*managerP, documentP);
    transformObjects(selection.name(), count, matrix, true);
    selection.free();
    return true;
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::transformSelection2d", "Error transformSelection()");
    return false;
  }
}

void AutoCadProxy::transformObjects(const Adesk::Int64* set, Adesk::Int32 count, const AcGeMatrix3d& matrix,
                                    bool isToRedraw) {
  if (!isFinite(matrix)) // of a broken view, or of objects at the end of the numbers: they'd never come back
    return;
  for (Adesk::Int32 i = 0; i < count; ++i) {
    ads_name name = {};
    if (acedSSName(set, i, name) != RTNORM)
      continue;
    OpenObject<AcDbEntity> entity(name, AcDb::kForWrite);
    if (!entity.get())
      continue;
    entity.get()->transformBy(matrix); // one that refuses, on a locked layer say, stays where it is
    entity.close();
    if (isToRedraw)
      acedRedraw(name, kRedrawShow);
  }
}

void AutoCadProxy::lockDocument(AcApDocManager& manager, AcApDocument* documentP) {
  if (mIsDocLocked)
    return;
  manager.lockDocument(documentP, AcAp::kWrite, nullptr, nullptr, true);
  mIsDocLocked = true;
}
