#include <algorithm>
#include <cmath>
#include <utility>

#include "state.h"

namespace {

std::vector<AcGePoint3d> cornersOf(const std::vector<AcDbPolyline::Vertex>& vertices, double elevation,
                                   const AcGeVector3d& normal) {
  const AcGeMatrix3d plane = AcGeMatrix3d::planeToWorld(normal);
  std::vector<AcGePoint3d> corners;
  corners.reserve(vertices.size());
  for (const AcDbPolyline::Vertex& v : vertices)
    corners.push_back(plane * AcGePoint3d(v.x, v.y, elevation));
  return corners;
}

/// Returns the arc from p to q with that bulge, counter-clockwise about the normal if it is positive.
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
    : AcDbPointShape(cornersOf(vertices, elevation, normal), isClosed) {
  const AcGeVector3d up = AcGeMatrix3d::planeToWorld(normal) * AcGeVector3d::kZAxis;
  for (size_t i = 0; i + (isClosed ? 0 : 1) < vertices.size(); ++i) {
    const AcGePoint3d& from = mPoints[i];
    const AcGePoint3d& to = mPoints[(i + 1) % vertices.size()];
    if (vertices[i].bulge == 0 || from == to)
      continue;
    // The centre of a piece with hardly any bulge overflows: such a piece counts as straight.
    const AcDbEllipticArc arc = bulgeArc(from, to, vertices[i].bulge, up);
    if (host::isFinite(arc.centre))
      mRoundPieces.push_back({i, arc});
  }
}

void AcDbPolyline::subAddExtents(const AcGeMatrix3d& transform, AcDbExtents& extents) const {
  AcDbPointShape::subAddExtents(transform, extents);
  for (const RoundPiece& piece : mRoundPieces)
    piece.arc.transformedBy(transform).addExtents(extents);
}

Acad::ErrorStatus AcDbPolyline::subTransformBy(const AcGeMatrix3d& transform) {
  for (RoundPiece& piece : mRoundPieces)
    piece.arc = piece.arc.transformedBy(transform);
  return AcDbPointShape::subTransformBy(transform);
}

void AcDbPolyline::subAddStrokes(const AcGeMatrix3d& transform, std::vector<AcDbStroke>& strokes) const {
  AcDbStroke stroke;
  auto round = mRoundPieces.begin();
  for (size_t i = 0; i < mPoints.size(); ++i) {
    stroke.push_back(transform * mPoints[i]);
    if (round == mRoundPieces.end() || round->from != i)
      continue;
    const AcDbStroke arc = round->arc.transformedBy(transform).stroke();
    stroke.insert(stroke.end(), arc.begin() + 1, arc.end() - 1); // without the corners
    ++round;
  }
  if (mIsClosed && !stroke.empty())
    stroke.push_back(stroke.front());
  strokes.push_back(std::move(stroke));
}

AcDbPolyFaceMesh::AcDbPolyFaceMesh(std::vector<AcGePoint3d> vertices, const std::vector<Face>& faces)
    : AcDbPointShape(std::move(vertices), false) {
  const int count = static_cast<int>(mPoints.size());
  for (const Face& face : faces) {
    const bool isComplete =
        std::all_of(face.corner, face.corner + 3, [count](int c) { return c >= 0 && c < count; });
    if (isComplete && face.corner[3] < count)
      mFaces.push_back(face);
  }
}

void AcDbPolyFaceMesh::subAddStrokes(const AcGeMatrix3d& transform, std::vector<AcDbStroke>& strokes) const {
  std::vector<std::pair<int, int>> edges;
  for (const Face& face : mFaces) {
    const int corners = face.corner[3] < 0 ? 3 : 4;
    for (int i = 0; i < corners; ++i)
      edges.push_back(std::minmax({face.corner[i], face.corner[(i + 1) % corners]}));
  }
  std::sort(edges.begin(), edges.end());
  edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
  for (const auto& edge : edges)
    strokes.push_back({transform * mPoints[static_cast<size_t>(edge.first)],
                       transform * mPoints[static_cast<size_t>(edge.second)]});
}
