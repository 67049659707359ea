#include "builder.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "pairs.h"

namespace dxf {

namespace {

constexpr double kDegree = 3.14159265358979323846 / 180;
constexpr int kMaxDepth = 32;       // blocks in blocks
constexpr double kMaxSize = 5e6;    // entities that one insert may stand for, all told
constexpr double kMaxTotal = 2e7;   // ... and all of model space
constexpr double kMaxCells = 10000; // places of an insert in rows and columns

// Bits of a polyline's flags.
constexpr int kClosed = 1;
constexpr int kIs3d = 8;
constexpr int kIsGrid = 16;
constexpr int kClosedAcross = 32;
constexpr int kIsFaceMesh = 64;

} // namespace

AcGeVector3d Builder::normal() {
  double direction[3] = {0, 0, 1};
  if (const DL_Extrusion* const extrusionP = getExtrusion())
    extrusionP->getDirection(direction);
  const AcGeVector3d result(direction[0], direction[1], direction[2]);
  return result.isZeroLength() ? AcGeVector3d::kZAxis : result.normal();
}

void Builder::addItem(Item item) {
  (mBlockP ? mBlockP->items : mModelSpace).push_back(std::move(item));
}

void Builder::add(std::unique_ptr<AcDbEntity> entity) {
  finishOpen();
  Item item;
  item.entityP = std::move(entity);
  addItem(std::move(item));
}

void Builder::finishOpen() {
  if (mPolyline.isOpen)
    finishPolyline();
  if (mSpline.isOpen)
    finishSpline();
}

void Builder::addBlock(const DL_BlockData& data) {
  finishOpen();
  mBlockP = &mBlocks[data.name];
  mBlockP->base.set(data.bpx, data.bpy, data.bpz);
}

void Builder::endBlock() {
  finishOpen();
  mBlockP = nullptr;
}

void Builder::addPoint(const DL_PointData& data) {
  add(std::make_unique<AcDbPoint>(AcGePoint3d(data.x, data.y, data.z)));
}

void Builder::addLine(const DL_LineData& data) {
  add(std::make_unique<AcDbLine>(AcGePoint3d(data.x1, data.y1, data.z1),
                                 AcGePoint3d(data.x2, data.y2, data.z2)));
}

void Builder::addArc(const DL_ArcData& data) {
  if (!(data.radius > 0)) {
    skip("ARC without a radius");
    return;
  }
  const AcGeVector3d up = normal();
  add(std::make_unique<AcDbArc>(AcGeMatrix3d::planeToWorld(up) * AcGePoint3d(data.cx, data.cy, data.cz), up,
                                data.radius, data.angle1 * kDegree, data.angle2 * kDegree));
}

void Builder::addCircle(const DL_CircleData& data) {
  if (!(data.radius > 0)) {
    skip("CIRCLE without a radius");
    return;
  }
  const AcGeVector3d up = normal();
  add(std::make_unique<AcDbCircle>(AcGeMatrix3d::planeToWorld(up) * AcGePoint3d(data.cx, data.cy, data.cz),
                                   up, data.radius));
}

void Builder::addEllipse(const DL_EllipseData& data) {
  const AcGeVector3d major(data.mx, data.my, data.mz);
  if (major.isZeroLength()) {
    skip("ELLIPSE without an axis");
    return;
  }
  add(std::make_unique<AcDbEllipse>(AcGePoint3d(data.cx, data.cy, data.cz), normal(), major, data.ratio,
                                    data.angle1, data.angle2));
}

void Builder::add3dFace(const DL_3dFaceData& data) {
  AcGePoint3d corners[4];
  for (int i = 0; i < 4; ++i)
    corners[i].set(data.x[i], data.y[i], data.z[i]);
  add(std::make_unique<AcDbFace>(corners[0], corners[1], corners[2], corners[3]));
}

void Builder::addTrace(const DL_TraceData& data) {
  // The third and the fourth corner stand crosswise in the file, and all lie in the entity's own plane.
  const AcGeMatrix3d plane = AcGeMatrix3d::planeToWorld(normal());
  AcGePoint3d corners[4];
  for (int i = 0; i < 4; ++i)
    corners[i] = plane * AcGePoint3d(data.x[i], data.y[i], data.z[i]);
  add(std::make_unique<AcDbFace>(corners[0], corners[1], corners[3], corners[2]));
}

void Builder::addSolid(const DL_SolidData& data) {
  addTrace(data);
}

void Builder::addPolyline(const DL_PolylineData& data) {
  finishOpen();
  mPolyline = {};
  mPolyline.isOpen = true;
  mPolyline.flags = data.flags;
  mPolyline.m = static_cast<int>(data.m);
  mPolyline.n = static_cast<int>(data.n);
  mPolyline.elevation = data.elevation;
  mPolyline.normal = normal();
}

void Builder::addVertex(const DL_VertexData& data) {
  if (!mPolyline.isOpen) {
    skip("VERTEX without a polyline");
    return;
  }
  mPolyline.vertices.push_back({AcGePoint3d(data.x, data.y, data.z), data.bulge});
}

void Builder::endSequence() {
  finishOpen();
}

void Builder::endEntity() {
  finishOpen();
}

void Builder::finishPolyline() {
  mPolyline.isOpen = false;
  const Polyline polyline = std::move(mPolyline);
  mPolyline = {};
  std::unique_ptr<AcDbEntity> entityP;
  if (polyline.flags & kIsFaceMesh)
    entityP = faceMesh(polyline);
  else if (polyline.flags & kIsGrid)
    entityP = gridMesh(polyline);
  else
    entityP = flatPolyline(polyline);
  if (entityP)
    add(std::move(entityP));
  else
    skip("polyline without points");
}

std::unique_ptr<AcDbEntity> Builder::flatPolyline(const Polyline& polyline) {
  if (polyline.vertices.empty())
    return nullptr;
  const bool isClosed = (polyline.flags & kClosed) != 0;
  if (polyline.flags & kIs3d)
    return std::make_unique<AcDb3dPolyline>(pointsOf(polyline, polyline.vertices.size()), isClosed);
  std::vector<AcDbPolyline::Vertex> flat;
  for (const Vertex& vertex : polyline.vertices)
    flat.push_back({vertex.point.x, vertex.point.y, vertex.bulge});
  // One kind of line has its height in its head, the other in its points; the other place holds 0.
  const double elevation = polyline.elevation + polyline.vertices[0].point.z;
  return std::make_unique<AcDbPolyline>(flat, isClosed, elevation, polyline.normal);
}

std::vector<AcGePoint3d> Builder::pointsOf(const Polyline& polyline, size_t count) {
  std::vector<AcGePoint3d> points;
  for (size_t i = 0; i < count; ++i)
    points.push_back(polyline.vertices[i].point);
  return points;
}

/// The first m vertices are points. The rest are faces in the guise of points: see EntityWriter.
std::unique_ptr<AcDbEntity> Builder::faceMesh(const Polyline& polyline) {
  const size_t count = std::min(polyline.vertices.size(), static_cast<size_t>(std::max(0, polyline.m)));
  if (count == 0)
    return nullptr;
  std::vector<AcDbPolyFaceMesh::Face> faces;
  for (size_t i = count; i < polyline.vertices.size(); ++i) {
    const Vertex& v = polyline.vertices[i];
    const double corners[] = {v.point.x, v.point.y, v.point.z, v.bulge}; // numbers from 1; 0 for none
    AcDbPolyFaceMesh::Face face;
    for (int k = 0; k < 4; ++k)
      face.corner[k] =
          std::fabs(corners[k]) <= static_cast<double>(count) ? static_cast<int>(corners[k]) - 1 : -1;
    faces.push_back(face);
  }
  return std::make_unique<AcDbPolyFaceMesh>(pointsOf(polyline, count), faces);
}

std::unique_ptr<AcDbEntity> Builder::gridMesh(const Polyline& polyline) {
  std::vector<AcGePoint3d> points = pointsOf(polyline, polyline.vertices.size());
  const int m = polyline.m;
  const int n = polyline.n;
  if (m < 2 || n < 2 || static_cast<double>(m) * n != static_cast<double>(points.size()))
    return nullptr;
  std::vector<AcDbPolyFaceMesh::Face> faces;
  const int rows = polyline.flags & kClosed ? m : m - 1;
  const int columns = polyline.flags & kClosedAcross ? n : n - 1;
  for (int i = 0; i < rows; ++i)
    for (int j = 0; j < columns; ++j) {
      const int below = (i + 1) % m * n;
      const int beside = (j + 1) % n;
      faces.push_back({{i * n + j, below + j, below + beside, i * n + beside}});
    }
  return std::make_unique<AcDbPolyFaceMesh>(std::move(points), faces);
}

void Builder::addSpline(const DL_SplineData& data) {
  finishOpen();
  mSpline = {};
  mSpline.isOpen = true;
  mSpline.degree = static_cast<int>(data.degree);
  mSpline.isClosed = (data.flags & kClosed) != 0;
}

void Builder::addControlPoint(const DL_ControlPointData& data) {
  mSpline.controls.push_back({data.x, data.y, data.z});
  mSpline.weights.push_back(data.w > 0 ? data.w : 1);
}

void Builder::addFitPoint(const DL_FitPointData& data) {
  mSpline.fits.push_back({data.x, data.y, data.z});
}

void Builder::addKnot(const DL_KnotData& data) {
  mSpline.knots.push_back(data.k);
}

void Builder::finishSpline() {
  const Spline spline = std::move(mSpline);
  mSpline = {};
  std::vector<AcGePoint3d> points =
      splinePoints(spline.degree, spline.knots, spline.controls, spline.weights);
  if (points.empty())
    points = spline.fits;
  if (points.size() < 2)
    skip("SPLINE without points");
  else
    add(std::make_unique<AcDb3dPolyline>(std::move(points), spline.isClosed));
}

void Builder::addInsert(const DL_InsertData& data) {
  finishOpen();
  Item item;
  item.insert = data;
  item.normal = normal();
  addItem(std::move(item));
}

Builder::Block* Builder::built(const std::string& name, int depth) {
  const auto found = mBlocks.find(name);
  if (found == mBlocks.end() || found->second.isBeingBuilt || depth > kMaxDepth)
    return nullptr; // unknown, or a block inside itself
  Block& block = found->second;
  if (block.builtP)
    return &block;
  block.isBeingBuilt = true;
  auto builtP = std::make_shared<AcDbBlock>();
  builtP->base = block.base;
  for (Item& item : block.items) {
    double size = 1;
    std::unique_ptr<AcDbEntity> entityP =
        item.entityP ? std::move(item.entityP) : buildInsert(item, depth + 1, size);
    if (!entityP)
      continue;
    builtP->entities.push_back(std::move(entityP));
    block.size += size;
  }
  block.items.clear();
  block.isBeingBuilt = false;
  block.builtP = std::move(builtP);
  return &block;
}

std::unique_ptr<AcDbEntity> Builder::buildInsert(const Item& item, int depth, double& size) {
  const DL_InsertData& data = item.insert;
  const int columns = std::max(1, data.cols);
  const int rows = std::max(1, data.rows);
  const double cells = static_cast<double>(columns) * rows;
  Block* const blockP = built(data.name, depth);
  if (!blockP) {
    skip("INSERT of an unknown or circular block");
    return nullptr;
  }
  size = cells * std::max(1.0, blockP->size);
  if (cells > kMaxCells || size > kMaxSize) {
    skip("INSERT that stands for too much");
    return nullptr;
  }
  const AcGeMatrix3d place = AcGeMatrix3d::planeToWorld(item.normal) *
                             AcGeMatrix3d::translation({data.ipx, data.ipy, data.ipz}) *
                             AcGeMatrix3d::rotation(data.angle * kDegree, AcGeVector3d::kZAxis);
  const AcGeMatrix3d scale = AcGeMatrix3d::scaling(data.sx, data.sy, data.sz);
  if (cells == 1)
    return std::make_unique<AcDbBlockReference>(blockP->builtP, place * scale);
  auto arrayP = std::make_shared<AcDbBlock>();
  for (int row = 0; row < rows; ++row)
    for (int column = 0; column < columns; ++column)
      arrayP->entities.push_back(std::make_unique<AcDbBlockReference>(
          blockP->builtP, AcGeMatrix3d::translation({column * data.colSp, row * data.rowSp, 0}) * scale));
  return std::make_unique<AcDbBlockReference>(arrayP, place);
}

std::vector<std::unique_ptr<AcDbEntity>> Builder::takeEntities() {
  finishOpen();
  std::vector<std::unique_ptr<AcDbEntity>> entities;
  double total = 0;
  for (Item& item : mModelSpace) {
    double size = 1;
    std::unique_ptr<AcDbEntity> entityP = item.entityP ? std::move(item.entityP) : buildInsert(item, 0, size);
    if (!entityP)
      continue;
    total += size;
    if (total > kMaxTotal)
      throw BadFile("its inserts stand for too many entities");
    AcDbExtents box;
    entityP->subAddExtents(nullptr, box);
    if (box.isEmpty())
      skip("INSERT of an empty block");
    else
      entities.push_back(std::move(entityP));
  }
  return entities;
}

} // namespace dxf
