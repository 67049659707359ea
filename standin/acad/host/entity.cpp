#include "dbentity.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "frames.h"
#include "trace_types.h"

AcDbExtents::AcDbExtents() {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  mMin.set(kInfinity, kInfinity, kInfinity);
  mMax.set(-kInfinity, -kInfinity, -kInfinity);
}

void AcDbExtents::addPoint(const AcGePoint3d& p) {
  mMin.set(std::min(mMin.x, p.x), std::min(mMin.y, p.y), std::min(mMin.z, p.z));
  mMax.set(std::max(mMax.x, p.x), std::max(mMax.y, p.y), std::max(mMax.z, p.z));
}

Acad::ErrorStatus AcDbEntity::getGeomExtents(AcDbExtents& extents) const {
  call_log::Call call("getGeomExtents", this);
  const auto status = [&] {
    if (call.mustFail() || mHost.hasNoExtents)
      return Acad::eInvalidExtents;
    if (!objectId().isNull() && !isReadEnabled())
      return Acad::eNotOpen;
    AcDbExtents own;
    subAddExtents({}, own);
    if (own.isEmpty()) // an insert of an empty block
      return Acad::eInvalidExtents;
    extents = own;
    return Acad::eOk;
  }();
  return call.returns(status, extents.minPoint(), extents.maxPoint());
}

void AcDbEntity::subAddExtents(const AcGeMatrix3d&, AcDbExtents&) const {}

Acad::ErrorStatus AcDbEntity::subTransformBy(const AcGeMatrix3d&) {
  return Acad::eNotApplicable;
}

void AcDbEntity::subAddStrokes(const AcGeMatrix3d&, std::vector<AcDbStroke>&) const {}

Acad::ErrorStatus AcDbEntity::transformBy(const AcGeMatrix3d& transform) {
  call_log::Call call("transformBy", this, transform);
  if (call.mustFail())
    return call.returns(Acad::eNotApplicable);
  const double* const values = &transform.entry[0][0];
  if (!std::all_of(values, values + 16, [](double value) { return std::isfinite(value); }))
    ++host::document().nonFiniteCalls;
  if (!objectId().isNull() && !isWriteEnabled())
    return call.returns(Acad::eNotOpenForWrite);
  if (mHost.refusesTransform)
    return call.returns(Acad::eOnLockedLayer);
  const Acad::ErrorStatus status = subTransformBy(transform);
  if (status == Acad::eOk)
    host::noteMotion(mHost.number, transform);
  return call.returns(status);
}
