#ifndef BUILDER_H
#define BUILDER_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <dl_creationadapter.h>

#include "dbents.h"

namespace dxf {

/// Makes the host's entities from what dxflib reads. Blocks may be used before they are defined, so inserts
/// are kept as they are until everything has been read.
class Builder : public DL_CreationAdapter {
public:
  explicit Builder(std::map<std::string, int>& skipped) : mSkipped(skipped) {}

  /// To be called once, at the end: the entities of model space in the file's order.
  std::vector<std::unique_ptr<AcDbEntity>> takeEntities();

  void addBlock(const DL_BlockData& data) override;
  void endBlock() override;
  void addPoint(const DL_PointData& data) override;
  void addLine(const DL_LineData& data) override;
  void addArc(const DL_ArcData& data) override;
  void addCircle(const DL_CircleData& data) override;
  void addEllipse(const DL_EllipseData& data) override;
  void addPolyline(const DL_PolylineData& data) override;
  void addVertex(const DL_VertexData& data) override;
  void endSequence() override;
  void endEntity() override;
  void addSpline(const DL_SplineData& data) override;
  void addControlPoint(const DL_ControlPointData& data) override;
  void addFitPoint(const DL_FitPointData& data) override;
  void addKnot(const DL_KnotData& data) override;
  void addInsert(const DL_InsertData& data) override;
  void addTrace(const DL_TraceData& data) override;
  void add3dFace(const DL_3dFaceData& data) override;
  void addSolid(const DL_SolidData& data) override;

private:
  /// An entity, or an insert that still has to be one.
  struct Item {
    std::unique_ptr<AcDbEntity> entityP; // null: an insert
    DL_InsertData insert{"", 0, 0, 0, 1, 1, 1, 0, 1, 1, 0, 0};
    AcGeVector3d normal;
  };
  struct Block {
    AcGePoint3d base;
    std::vector<Item> items;
    bool isBeingBuilt = false;
    std::shared_ptr<const AcDbBlock> builtP; // null until it has been needed
    double size = 0;                         // entities with those of all blocks in it
  };
  struct Vertex {
    AcGePoint3d point;
    double bulge = 0;
  };
  struct Polyline {
    bool isOpen = false; // vertices are still coming
    int flags = 0;
    int m = 0, n = 0; // size of a mesh
    double elevation = 0;
    AcGeVector3d normal;
    std::vector<Vertex> vertices;
  };
  struct Spline {
    bool isOpen = false;
    int degree = 0;
    bool isClosed = false;
    std::vector<double> knots;
    std::vector<AcGePoint3d> controls;
    std::vector<double> weights;
    std::vector<AcGePoint3d> fits;
  };

  void add(std::unique_ptr<AcDbEntity> entity);
  void addItem(Item item);
  void skip(const std::string& kind) { ++mSkipped[kind]; }
  /// Ends what is still open when something else begins, however the file left it.
  void finishOpen();
  void finishPolyline();
  void finishSpline();
  static std::unique_ptr<AcDbEntity> flatPolyline(const Polyline& polyline);
  static std::vector<AcGePoint3d> pointsOf(const Polyline& polyline, size_t count);
  static std::unique_ptr<AcDbEntity> faceMesh(const Polyline& polyline);
  static std::unique_ptr<AcDbEntity> gridMesh(const Polyline& polyline);
  AcGeVector3d normal();

  std::unique_ptr<AcDbEntity> buildInsert(const Item& item, int depth, double& size);
  Block* built(const std::string& name, int depth);

  std::map<std::string, int>& mSkipped;
  std::vector<Item> mModelSpace;
  std::map<std::string, Block> mBlocks;
  Block* mBlockP = nullptr; // the one that is being read
  Polyline mPolyline;
  Spline mSpline;
};

/// Points along a rational B-spline, ends included; empty if the knots don't fit.
std::vector<AcGePoint3d> splinePoints(int degree, const std::vector<double>& knots,
                                      const std::vector<AcGePoint3d>& controls,
                                      const std::vector<double>& weights);

} // namespace dxf

#endif
