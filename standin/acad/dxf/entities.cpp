#include "entities.h"

#include <cmath>
#include <map>

namespace dxf {

namespace {

typedef std::unique_ptr<AcDbEntity> EntityPtr;

constexpr double kPi = 3.14159265358979323846;
constexpr double kDegree = kPi / 180;
constexpr double kMinWeight = 1e-9;

// Bits of a polyline's flags.
constexpr int kClosed = 1;
constexpr int kIs3d = 8;
constexpr int kIsGrid = 16;
constexpr int kClosedAcross = 32;
constexpr int kIsFaceMesh = 64;

// Bits of a vertex's flags.
constexpr int kShapesOnly = 16; // a control point, not on the line
constexpr int kMeshCorner = 64;
constexpr int kFaceMeshPart = 128;

EntityPtr makePoint(const Record& record) {
  return std::make_unique<AcDbPoint>(record.point(10));
}

EntityPtr makeLine(const Record& record) {
  return std::make_unique<AcDbLine>(record.point(10), record.point(11));
}

/// Returns the centre of a circle or an arc. The file holds it in the coordinates of the entity's plane.
AcGePoint3d centreOf(const Record& record) {
  return AcGeMatrix3d::planeToWorld(record.normal()) * record.point(10);
}

EntityPtr makeCircle(const Record& record) {
  const double radius = record.number(40);
  if (!(radius > 0))
    return nullptr;
  return std::make_unique<AcDbCircle>(centreOf(record), record.normal(), radius);
}

EntityPtr makeArc(const Record& record) {
  const double radius = record.number(40);
  if (!(radius > 0))
    return nullptr;
  return std::make_unique<AcDbArc>(centreOf(record), record.normal(), radius, record.number(50) * kDegree,
                                   record.number(51) * kDegree);
}

EntityPtr makeEllipse(const Record& record) {
  const AcGeVector3d major = record.point(11).asVector();
  if (major.isZeroLength())
    return nullptr;
  return std::make_unique<AcDbEllipse>(record.point(10), record.normal(), major, record.number(40, 1),
                                       record.number(41), record.number(42, 2 * kPi));
}

/// Returns the fourth corner of a face, the third if there is none.
AcGePoint3d lastCorner(const Record& record) {
  return record.point(record.find(13) ? 13 : 12);
}

EntityPtr makeFace(const Record& record) {
  return std::make_unique<AcDbFace>(record.point(10), record.point(11), record.point(12), lastCorner(record));
}

EntityPtr makeSolid(const Record& record) {
  // The file holds the fourth corner before the third, and all in the coordinates of the entity's plane.
  const AcGeMatrix3d plane = AcGeMatrix3d::planeToWorld(record.normal());
  return std::make_unique<AcDbFace>(plane * record.point(10), plane * record.point(11),
                                    plane * lastCorner(record), plane * record.point(12));
}

EntityPtr makeLightPolyline(const Record& record) {
  std::vector<AcDbPolyline::Vertex> vertices;
  for (const Pair& pair : record.pairs)
    if (pair.code == 10)
      vertices.push_back({pair.number(), 0, 0});
    else if (pair.code == 20 && !vertices.empty())
      vertices.back().y = pair.number();
    else if (pair.code == 42 && !vertices.empty())
      vertices.back().bulge = pair.number();
  if (vertices.empty())
    return nullptr;
  return std::make_unique<AcDbPolyline>(vertices, (record.integer(70) & kClosed) != 0, record.number(38),
                                        record.normal());
}

EntityPtr makeFaceMesh(const Record& record) {
  std::vector<AcGePoint3d> points;
  std::vector<AcDbPolyFaceMesh::Face> faces;
  for (const Record& vertex : record.vertices) {
    const int flags = vertex.integer(70);
    if ((flags & kFaceMeshPart) && !(flags & kMeshCorner)) {
      AcDbPolyFaceMesh::Face& face = faces.emplace_back();
      // Corners count from 1, 0 for none; negative if the edge from there isn't drawn.
      for (int i = 0; i < 4; ++i)
        face.corner[i] = std::abs(vertex.integer(71 + i)) - 1;
    } else {
      points.push_back(vertex.point(10));
    }
  }
  if (points.empty())
    return nullptr;
  return std::make_unique<AcDbPolyFaceMesh>(std::move(points), faces);
}

EntityPtr makeGridMesh(const Record& record, std::vector<AcGePoint3d> points) {
  const int flags = record.integer(70);
  const int m = record.integer(71);
  const int n = record.integer(72);
  if (m < 2 || n < 2 || static_cast<double>(m) * n != static_cast<double>(points.size()))
    return nullptr;
  std::vector<AcDbPolyFaceMesh::Face> faces;
  const int rows = flags & kClosed ? m : m - 1;
  const int columns = flags & kClosedAcross ? n : n - 1;
  for (int i = 0; i < rows; ++i)
    for (int j = 0; j < columns; ++j) {
      const int below = (i + 1) % m * n;
      const int beside = (j + 1) % n;
      faces.push_back({{i * n + j, below + j, below + beside, i * n + beside}});
    }
  return std::make_unique<AcDbPolyFaceMesh>(std::move(points), faces);
}

EntityPtr makePolyline(const Record& record) {
  const int flags = record.integer(70);
  if (flags & kIsFaceMesh)
    return makeFaceMesh(record);
  std::vector<AcGePoint3d> points;
  std::vector<AcDbPolyline::Vertex> flat;
  for (const Record& vertex : record.vertices) {
    if (vertex.integer(70) & kShapesOnly)
      continue;
    points.push_back(vertex.point(10));
    flat.push_back({points.back().x, points.back().y, vertex.number(42)});
  }
  if (points.empty())
    return nullptr;
  if (flags & kIsGrid)
    return makeGridMesh(record, std::move(points));
  const bool isClosed = (flags & kClosed) != 0;
  if (flags & kIs3d)
    return std::make_unique<AcDb3dPolyline>(std::move(points), isClosed);
  // The file holds the height of a flat line in its first record, in its points, or in both.
  const double height = record.number(30);
  return std::make_unique<AcDbPolyline>(flat, isClosed, height != 0 ? height : points[0].z, record.normal());
}

EntityPtr makeSpline(const Record& record) {
  const std::vector<AcGePoint3d> controls = record.points(10);
  std::vector<double> weights = record.numbers(41);
  weights.resize(controls.size(), 1);
  for (double& weight : weights)
    weight = weight > kMinWeight ? weight : 1;
  std::vector<AcGePoint3d> points = splinePoints(record.integer(71), record.numbers(40), controls, weights);
  if (points.empty())
    points = record.points(11); // the points that the curve was fitted to
  if (points.size() < 2)
    return nullptr;
  return std::make_unique<AcDb3dPolyline>(std::move(points), (record.integer(70) & kClosed) != 0);
}

} // namespace

Maker makerOf(std::string_view kind) {
  static const std::map<std::string_view, Maker> kMakers = {
      {"POINT", makePoint},       {"LINE", makeLine},       {"CIRCLE", makeCircle},
      {"ARC", makeArc},           {"ELLIPSE", makeEllipse}, {"3DFACE", makeFace},
      {"SOLID", makeSolid},       {"TRACE", makeSolid},     {"LWPOLYLINE", makeLightPolyline},
      {"POLYLINE", makePolyline}, {"SPLINE", makeSpline}};
  const auto found = kMakers.find(kind);
  return found == kMakers.end() ? nullptr : found->second;
}

} // namespace dxf
