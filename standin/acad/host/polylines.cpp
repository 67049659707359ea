#include <algorithm>
#include <cmath>
#include <utility>

#include "state.h"

namespace {

void addPoints(const AcGeMatrix3d* transform, const std::vector<AcGePoint3d>& points, AcDbExtents& extents) {
  for (const AcGePoint3d& p : points)
    extents.addPoint(host::apply(transform, p));
}

void movePoints(const AcGeMatrix3d& transform, std::vector<AcGePoint3d>& points) {
  for (AcGePoint3d& p : points)
    p = transform * p;
}

/// The arc from p to q whose bulge is given, counter-clockwise about the normal if that is positive.
AcDbEllipticArc bulgeArc(const AcGePoint3d& p, const AcGePoint3d& q, double bulge,
                         const AcGeVector3d& normal) {
  const AcGeVector3d chord = q - p;
  const AcGeVector3d left = normal.crossProduct(chord); // as long as the chord
  AcDbEllipticArc arc;
  arc.centre = p + chord * 0.5 + left * ((1 / bulge - bulge) / 4);
  arc.major = p - arc.centre;
  arc.minor = normal.crossProduct(arc.major) * (bulge > 0 ? 1 : -1);
  arc.sweep = 4 * std::atan(std::fabs(bulge));
  return arc;
}

} // namespace

AcDbPolyline::AcDbPolyline(const std::vector<Vertex>& vertices, bool isClosed, double elevation,
                           const AcGeVector3d& normal)
    : mIsClosed(isClosed) {
  const AcGeMatrix3d plane = AcGeMatrix3d::planeToWorld(normal);
  const AcGeVector3d up = plane * AcGeVector3d::kZAxis;
  mPoints.reserve(vertices.size());
  for (const Vertex& v : vertices)
    mPoints.push_back(plane * AcGePoint3d(v.x, v.y, elevation));
  const size_t count = mPoints.size();
  for (size_t i = 0; i < count; ++i) {
    const AcGePoint3d& next = mPoints[(i + 1) % count];
    const bool hasPiece = i + 1 < count || isClosed;
    if (!hasPiece || vertices[i].bulge == 0 || mPoints[i] == next)
      continue;
    // A piece with next to no bulge has its centre beyond all numbers: it is straight, too.
    const AcDbEllipticArc arc = bulgeArc(mPoints[i], next, vertices[i].bulge, up);
    if (std::isfinite(arc.centre.x) && std::isfinite(arc.centre.y) && std::isfinite(arc.centre.z))
      mRoundPieces.push_back({i, arc});
  }
}

void AcDbPolyline::subAddExtents(const AcGeMatrix3d* transform, AcDbExtents& extents) const {
  addPoints(transform, mPoints, extents);
  for (const RoundPiece& piece : mRoundPieces)
    (transform ? piece.arc.transformedBy(*transform) : piece.arc).addExtents(extents);
}

Acad::ErrorStatus AcDbPolyline::subTransformBy(const AcGeMatrix3d& transform) {
  movePoints(transform, mPoints);
  for (RoundPiece& piece : mRoundPieces)
    piece.arc = piece.arc.transformedBy(transform);
  return Acad::eOk;
}

void AcDbPolyline::subAddStrokes(const AcGeMatrix3d* transform, std::vector<AcDbStroke>& strokes) const {
  AcDbStroke stroke;
  auto round = mRoundPieces.begin();
  for (size_t i = 0; i < mPoints.size(); ++i) {
    stroke.push_back(host::apply(transform, mPoints[i]));
    if (round == mRoundPieces.end() || round->from != i)
      continue;
    const AcDbStroke arc = (transform ? round->arc.transformedBy(*transform) : round->arc).stroke();
    stroke.insert(stroke.end(), arc.begin() + 1, arc.end() - 1); // the corners come by themselves
    ++round;
  }
  if (mIsClosed && !mPoints.empty())
    stroke.push_back(stroke.front());
  strokes.push_back(std::move(stroke));
}

AcDb3dPolyline::AcDb3dPolyline(std::vector<AcGePoint3d> points, bool isClosed)
    : mPoints(std::move(points)), mIsClosed(isClosed) {}

void AcDb3dPolyline::subAddExtents(const AcGeMatrix3d* transform, AcDbExtents& extents) const {
  addPoints(transform, mPoints, extents);
}

Acad::ErrorStatus AcDb3dPolyline::subTransformBy(const AcGeMatrix3d& transform) {
  movePoints(transform, mPoints);
  return Acad::eOk;
}

void AcDb3dPolyline::subAddStrokes(const AcGeMatrix3d* transform, std::vector<AcDbStroke>& strokes) const {
  AcDbStroke stroke = mPoints;
  if (transform)
    movePoints(*transform, stroke);
  if (mIsClosed && !stroke.empty())
    stroke.push_back(AcGePoint3d(stroke.front()));
  strokes.push_back(std::move(stroke));
}

AcDbPolyFaceMesh::AcDbPolyFaceMesh(std::vector<AcGePoint3d> vertices, const std::vector<Face>& faces)
    : mVertices(std::move(vertices)) {
  const int count = static_cast<int>(mVertices.size());
  for (const Face& face : faces) {
    const bool isComplete =
        std::all_of(face.corner, face.corner + 3, [count](int c) { return c >= 0 && c < count; });
    if (isComplete && face.corner[3] < count)
      mFaces.push_back(face);
  }
}

void AcDbPolyFaceMesh::subAddExtents(const AcGeMatrix3d* transform, AcDbExtents& extents) const {
  addPoints(transform, mVertices, extents);
}

Acad::ErrorStatus AcDbPolyFaceMesh::subTransformBy(const AcGeMatrix3d& transform) {
  movePoints(transform, mVertices);
  return Acad::eOk;
}

void AcDbPolyFaceMesh::subAddStrokes(const AcGeMatrix3d* transform, std::vector<AcDbStroke>& strokes) const {
  std::vector<std::pair<int, int>> edges;
  for (const Face& face : mFaces) {
    const int corners = face.corner[3] < 0 ? 3 : 4;
    for (int i = 0; i < corners; ++i)
      edges.push_back(std::minmax({face.corner[i], face.corner[(i + 1) % corners]}));
  }
  std::sort(edges.begin(), edges.end());
  edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
  for (const auto& edge : edges)
    strokes.push_back({host::apply(transform, mVertices[static_cast<size_t>(edge.first)]),
                       host::apply(transform, mVertices[static_cast<size_t>(edge.second)])});
}
