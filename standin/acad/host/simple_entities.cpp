#include "state.h"
#include "trace_types.h"

// Points, lines and faces: shapes that are their corners.

void AcDbPoint::subAddExtents(const AcGeMatrix3d* transform, AcDbExtents& extents) const {
  extents.addPoint(host::apply(transform, mPosition));
}

Acad::ErrorStatus AcDbPoint::subTransformBy(const AcGeMatrix3d& transform) {
  mPosition = transform * mPosition;
  return Acad::eOk;
}

void AcDbPoint::subAddStrokes(const AcGeMatrix3d* transform, std::vector<AcDbStroke>& strokes) const {
  strokes.push_back({host::apply(transform, mPosition)});
}

AcGePoint3d AcDbLine::startPoint() const {
  const call_log::Call call("startPoint");
  return mStart;
}

AcGePoint3d AcDbLine::endPoint() const {
  const call_log::Call call("endPoint");
  return mEnd;
}

Acad::ErrorStatus AcDbLine::getStartPoint(AcGePoint3d& point) const {
  call_log::Call call("getStartPoint", this);
  if (!call.mustFail())
    point = mStart;
  return call.returns(call.mustFail() ? Acad::eNotApplicable : Acad::eOk, point);
}

Acad::ErrorStatus AcDbLine::getEndPoint(AcGePoint3d& point) const {
  call_log::Call call("getEndPoint", this);
  if (!call.mustFail())
    point = mEnd;
  return call.returns(call.mustFail() ? Acad::eNotApplicable : Acad::eOk, point);
}

void AcDbLine::subAddExtents(const AcGeMatrix3d* transform, AcDbExtents& extents) const {
  extents.addPoint(host::apply(transform, mStart));
  extents.addPoint(host::apply(transform, mEnd));
}

Acad::ErrorStatus AcDbLine::subTransformBy(const AcGeMatrix3d& transform) {
  mStart = transform * mStart;
  mEnd = transform * mEnd;
  return Acad::eOk;
}

void AcDbLine::subAddStrokes(const AcGeMatrix3d* transform, std::vector<AcDbStroke>& strokes) const {
  strokes.push_back({host::apply(transform, mStart), host::apply(transform, mEnd)});
}

AcDbFace::AcDbFace(const AcGePoint3d& a, const AcGePoint3d& b, const AcGePoint3d& c, const AcGePoint3d& d)
    : mCorners{a, b, c, d} {}

void AcDbFace::subAddExtents(const AcGeMatrix3d* transform, AcDbExtents& extents) const {
  for (const AcGePoint3d& corner : mCorners)
    extents.addPoint(host::apply(transform, corner));
}

Acad::ErrorStatus AcDbFace::subTransformBy(const AcGeMatrix3d& transform) {
  for (AcGePoint3d& corner : mCorners)
    corner = transform * corner;
  return Acad::eOk;
}

void AcDbFace::subAddStrokes(const AcGeMatrix3d* transform, std::vector<AcDbStroke>& strokes) const {
  const bool isTriangle = mCorners[2] == mCorners[3];
  AcDbStroke outline;
  for (int i = 0; i < (isTriangle ? 3 : 4); ++i)
    outline.push_back(host::apply(transform, mCorners[i]));
  outline.push_back(outline.front());
  strokes.push_back(std::move(outline));
}
