// Motion of the selected objects.

#include "auto_cad_proxy.h"

#include <stdexcept>

#include "logging.h"
#include "motion/object_step.h"
#include "selection.h"

using namespace host_handles;

namespace {

constexpr int kRedrawShow = 1; // mode of acedRedraw

/// Moves every selected object that can be opened. One that refuses, on a locked layer say, stays where it
/// is. Objects moved by NaN or infinity would be lost, so such a matrix moves nothing.
void transformObjects(const SelectionSet& selection, Adesk::Int32 count, const AcGeMatrix3d& matrix,
                      bool isToRedraw) {
  if (!motion::isFinite(matrix))
    return;
  for (Adesk::Int32 i = 0; i < count; ++i) {
    ads_name name = {};
    if (acedSSName(selection.name(), i, name) != RTNORM)
      continue;
    OpenObject<AcDbEntity> entity(name, AcDb::kForWrite);
    if (!entity.get())
      continue;
    entity.get()->transformBy(matrix);
    entity.close();
    if (isToRedraw)
      acedRedraw(name, kRedrawShow);
  }
}

} // namespace

template <class MatrixOf> bool AutoCadProxy::transformSelection(bool isToRedraw, const MatrixOf& matrixOf) {
  AcApDocManager* const managerP = acDocManagerPtr();
  AcApDocument* const documentP = managerP ? managerP->curDocument() : nullptr;
  SelectionSet selection;
  if (!documentP || !selection.takeImplied())
    return false;
  const Adesk::Int32 count = selectionLength(selection.name());
  if (count == 0) {
    selection.free();
    return false;
  }
  const AcGeMatrix3d matrix = matrixOf(selection);
  if (!mIsDocLocked)
    lockDocument(*managerP, documentP);
  transformObjects(selection, count, matrix, isToRedraw);
  selection.free();
  return true;
}

bool AutoCadProxy::transformSelection3d(double x, double y, double z, double a, double b, double c,
                                        const AcGeVector3d& xAxis, const AcGeVector3d& yAxis,
                                        const AcGeVector3d& zAxis, bool hoverMode, bool keepHorizon) {
  try {
    return transformSelection(false, [&](const SelectionSet& selection) {
      AcGePoint3d centre(0, 0, 0);
      if (!getSelObjectsCenter(selection.name(), centre))
        centre = AcGePoint3d::kOrigin;
      return motion::objectMatrix({x, y, z, a, b, c}, {xAxis, yAxis, zAxis}, centre, hoverMode, keepHorizon);
    });
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::transformSelection3d", "Error transformSelection()");
    return false;
  }
}

bool AutoCadProxy::transformSelection2d(double x, double y) {
  try {
    return transformSelection(true, [&](const SelectionSet&) { return motion::layoutObjectMatrix(x, y); });
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::transformSelection2d", "Error transformSelection()");
    return false;
  }
}

void AutoCadProxy::lockDocument(AcApDocManager& manager, AcApDocument* documentP) {
  manager.lockDocument(documentP, AcAp::kWrite, nullptr, nullptr, true);
  mIsDocLocked = true;
  mLockedDocumentP = documentP;
}

void AutoCadProxy::unlockDocument() {
  AcApDocManager& manager = documentManager();
  AcApDocument* const documentP = manager.curDocument();
  if (mIsDocLocked)
    manager.unlockDocument(documentP);
  mIsDocLocked = false;
}

AcApDocManager& AutoCadProxy::documentManager() {
  AcApDocManager* const managerP = acDocManagerPtr();
  if (!managerP)
    throw std::runtime_error("no document manager");
  return *managerP;
}
