// Points, lines, open or closed lines in space, faces: entities that their points define.

#include "state.h"
#include "trace_types.h"

void AcDbPointShape::subAddExtents(const AcGeMatrix3d& transform, AcDbExtents& extents) const {
  for (const AcGePoint3d& point : mPoints)
    extents.addPoint(transform * point);
}

Acad::ErrorStatus AcDbPointShape::subTransformBy(const AcGeMatrix3d& transform) {
  for (AcGePoint3d& point : mPoints)
    point = transform * point;
  return Acad::eOk;
}

void AcDbPointShape::subAddStrokes(const AcGeMatrix3d& transform, std::vector<AcDbStroke>& strokes) const {
  AcDbStroke stroke;
  for (const AcGePoint3d& point : mPoints)
    stroke.push_back(transform * point);
  if (mIsClosed && !stroke.empty())
    stroke.push_back(AcGePoint3d(stroke.front()));
  strokes.push_back(std::move(stroke));
}

Acad::ErrorStatus AcDbLine::getStartPoint(AcGePoint3d& point) const {
  call_log::Call call("getStartPoint", this);
  if (!call.mustFail())
    point = mPoints[0];
  return call.returns(call.mustFail() ? Acad::eNotApplicable : Acad::eOk, point);
}

Acad::ErrorStatus AcDbLine::getEndPoint(AcGePoint3d& point) const {
  call_log::Call call("getEndPoint", this);
  if (!call.mustFail())
    point = mPoints[1];
  return call.returns(call.mustFail() ? Acad::eNotApplicable : Acad::eOk, point);
}

AcDbFace::AcDbFace(const AcGePoint3d& a, const AcGePoint3d& b, const AcGePoint3d& c, const AcGePoint3d& d)
    : AcDbPointShape(c == d ? std::vector{a, b, c} : std::vector{a, b, c, d}, true) {}
