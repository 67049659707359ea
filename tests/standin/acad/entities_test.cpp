#include <cmath>
#include <random>

#include "host_test.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

void expectBox(const AcDbEntity& entity, const AcGePoint3d& low, const AcGePoint3d& high) {
  AcDbExtents box;
  ASSERT_EQ(entity.getGeomExtents(box), Acad::eOk);
  expectBox(box, low, high);
}

AcGeMatrix3d turnZ(double angle) {
  return AcGeMatrix3d::rotation(angle, AcGeVector3d::kZAxis);
}

std::vector<std::unique_ptr<AcDbEntity>> oneOfEachKind() {
  std::vector<std::unique_ptr<AcDbEntity>> all;
  const AcGeVector3d tilted(1, 2, 3);
  all.push_back(std::make_unique<AcDbPoint>(AcGePoint3d(1, 2, 3)));
  all.push_back(std::make_unique<AcDbLine>(AcGePoint3d(1, 2, 3), AcGePoint3d(-4, 0, 9)));
  all.push_back(std::make_unique<AcDbCircle>(AcGePoint3d(1, 1, 1), tilted, 5));
  all.push_back(std::make_unique<AcDbArc>(AcGePoint3d(1, 1, 1), tilted, 5, 5.5, 1.2));
  all.push_back(std::make_unique<AcDbEllipse>(AcGePoint3d(0, 3, 0), AcGeVector3d(0, -1, 0),
                                              AcGeVector3d(4, 0, 3), 0.3, 1, 5));
  all.push_back(std::make_unique<AcDbPolyline>(
      std::vector<AcDbPolyline::Vertex>{{0, 0, 0.7}, {4, 0, 0}, {4, 4, -0.3}, {0, 4, 2}}, true, 2, tilted));
  all.push_back(
      std::make_unique<AcDb3dPolyline>(std::vector<AcGePoint3d>{{0, 0, 0}, {1, 5, 2}, {3, 1, 7}}, true));
  all.push_back(std::make_unique<AcDbPolyFaceMesh>(
      std::vector<AcGePoint3d>{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
      std::vector<AcDbPolyFaceMesh::Face>{{{0, 1, 2, -1}}, {{0, 1, 3, -1}}, {{0, 2, 3, -1}}}));
  all.push_back(std::make_unique<AcDbFace>(AcGePoint3d(0, 0, 0), AcGePoint3d(2, 0, 0), AcGePoint3d(2, 2, 1),
                                           AcGePoint3d(0, 2, 1)));
  auto blockP = std::make_shared<AcDbBlock>();
  blockP->base.set(1, 0, 0);
  blockP->entities.push_back(std::make_unique<AcDbCircle>(AcGePoint3d(2, 0, 0), AcGeVector3d::kZAxis, 1));
  blockP->entities.push_back(std::make_unique<AcDbLine>(AcGePoint3d(0, 0, 0), AcGePoint3d(0, 0, 4)));
  all.push_back(std::make_unique<AcDbBlockReference>(blockP, turnZ(0.5) * AcGeMatrix3d::scaling(1, 2, 1)));
  return all;
}

/// Curves are drawn in pieces of 6 degrees, so a drawn curve falls short of the true one by that share of its
/// size.
constexpr double kDrawnShortfall = 0.0014;

TEST(Entities, PointsGoWithTheTurnAndExtentsFitTheShape) {
  std::mt19937 random(3);
  std::uniform_real_distribution<double> any(-3, 3);
  for (auto& entityP : oneOfEachKind()) {
    for (int i = 0; i < 40; ++i) {
      const auto before = host::strokes(*entityP);
      const AcGeMatrix3d m = AcGeMatrix3d::translation({any(random), any(random), any(random)}) *
                             AcGeMatrix3d::rotation(any(random), {any(random), any(random), any(random)});
      ASSERT_EQ(entityP->transformBy(m), Acad::eOk);
      AcDbExtents box;
      ASSERT_EQ(entityP->getGeomExtents(box), Acad::eOk);
      AcDbExtents drawn;
      const auto strokes = host::strokes(*entityP);
      ASSERT_EQ(before.size(), strokes.size());
      for (std::size_t k = 0; k < strokes.size(); ++k) {
        ASSERT_EQ(before[k].size(), strokes[k].size());
        for (std::size_t n = 0; n < strokes[k].size(); ++n) {
          EXPECT_LT((m * before[k][n]).distanceTo(strokes[k][n]), 1e-9);
          drawn.addPoint(strokes[k][n]);
        }
      }
      const double slack = 1e-9 + kDrawnShortfall * (box.maxPoint() - box.minPoint()).length();
      for (const auto axis : {&AcGePoint3d::x, &AcGePoint3d::y, &AcGePoint3d::z})
        for (const double beyond :
             {drawn.minPoint().*axis - box.minPoint().*axis, box.maxPoint().*axis - drawn.maxPoint().*axis}) {
          EXPECT_GE(beyond, -1e-9);
          EXPECT_LE(beyond, slack);
        }
    }
  }
}

TEST(Entities, CirclesAndArcsHaveExactExtents) {
  AcDbCircle circle({1, 2, 3}, AcGeVector3d::kZAxis, 2);
  expectBox(circle, {-1, 0, 3}, {3, 4, 3});
  circle.transformBy(AcGeMatrix3d::rotation(kPi / 4, AcGeVector3d::kXAxis, {1, 2, 3}));
  expectBox(circle, {-1, 2 - std::sqrt(2), 3 - std::sqrt(2)}, {3, 2 + std::sqrt(2), 3 + std::sqrt(2)});

  AcDbArc arc({0, 0, 0}, AcGeVector3d::kZAxis, 1, 0, kPi / 2);
  expectBox(arc, {0, 0, 0}, {1, 1, 0});
  arc.transformBy(turnZ(kPi / 4)); // now its highest point lies inside
  expectBox(arc, {-std::sqrt(0.5), std::sqrt(0.5), 0}, {std::sqrt(0.5), 1, 0});
  // Seen from below, an arc runs the other way round, and its angles start at minus x.
  expectBox(AcDbArc({0, 0, 0}, -AcGeVector3d::kZAxis, 1, 0, kPi / 2), {-1, 0, 0}, {0, 1, 0});
}

TEST(Entities, RoundThingsRefuseToBeDistortedAndStayAsTheyAre) {
  AcDbCircle circle({1, 0, 0}, AcGeVector3d::kZAxis, 2);
  EXPECT_EQ(circle.transformBy(AcGeMatrix3d::scaling(1, 3, 1)), Acad::eCannotScaleNonUniformly);
  expectBox(circle, {-1, -2, 0}, {3, 2, 0});
  AcDbEllipse ellipse({0, 0, 0}, AcGeVector3d::kZAxis, {4, 0, 0}, 0.5, 0, 2 * kPi);
  EXPECT_EQ(ellipse.transformBy(AcGeMatrix3d::scaling(1, 3, 1)), Acad::eOk);
  expectBox(ellipse, {-4, -6, 0}, {4, 6, 0});
  expectBox(AcDbEllipse({0, 0, 0}, AcGeVector3d::kZAxis, {4, 0, 0}, 0.5, kPi / 2, kPi), {-4, 0, 0},
            {0, 2, 0});
}

TEST(Entities, BulgesAreArcsOnTheRightSide) {
  using Vertices = std::vector<AcDbPolyline::Vertex>;
  expectBox(AcDbPolyline(Vertices{{0, 0, 1}, {2, 0, 0}}, false), {0, -1, 0}, {2, 0, 0});
  expectBox(AcDbPolyline(Vertices{{0, 0, -1}, {2, 0, 0}}, false), {0, 0, 0}, {2, 1, 0});
  expectBox(AcDbPolyline(Vertices{{0, 0, 0.5}, {2, 0, 0}}, false, 3), {0, -0.5, 3}, {2, 0, 3});
  // The last bulge counts only if the line goes back to its start.
  expectBox(AcDbPolyline(Vertices{{0, 0, 0}, {2, 0, 1}}, false), {0, 0, 0}, {2, 0, 0});
  expectBox(AcDbPolyline(Vertices{{0, 0, 0}, {2, 0, 1}}, true), {0, 0, 0}, {2, 1, 0});
  // More than half a turn reaches beyond the corners.
  expectBox(AcDbPolyline(Vertices{{0, 0, 2}, {2, 0, 0}}, false), {-0.25, -2, 0}, {2.25, 0, 0});
  EXPECT_EQ(host::strokes(AcDbPolyline(Vertices{{1, 1, 1}, {1, 1, 0}}, false))[0].size(), 2u);
}

TEST(Entities, AMeshDrawsEachEdgeOnceAndLeavesOutFacesThatCannotBe) {
  const AcDbPolyFaceMesh mesh(
      {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}},
      {{{0, 1, 2, -1}}, {{0, 2, 3, -1}}, {{0, 1, 7, -1}}, {{0, -1, 2, 3}}, {{0, 1, 2, 9}}});
  EXPECT_EQ(mesh.numFaces(), 2u);
  EXPECT_EQ(host::strokes(mesh).size(), 5u);
}

TEST(Entities, InsertsNestAndScaleAboutTheBase) {
  auto innerP = std::make_shared<AcDbBlock>();
  innerP->base.set(10, 0, 0);
  innerP->entities.push_back(std::make_unique<AcDbCircle>(AcGePoint3d(11, 0, 0), AcGeVector3d::kZAxis, 1));
  auto outerP = std::make_shared<AcDbBlock>();
  outerP->entities.push_back(std::make_unique<AcDbBlockReference>(innerP, AcGeMatrix3d::scaling(2, 1, 1)));
  const AcDbBlockReference insert(outerP, AcGeMatrix3d::translation({100, 0, 0}) * turnZ(kPi / 2));
  expectBox(insert, {99, 0, 0}, {101, 4, 0}); // a circle made an ellipse of 2 by 1, on end
  EXPECT_EQ(insert.position().x, 100);

  AcDbExtents box({1, 2, 3}, {4, 5, 6});
  const AcDbBlockReference empty(std::make_shared<AcDbBlock>(), AcGeMatrix3d());
  EXPECT_EQ(empty.getGeomExtents(box), Acad::eInvalidExtents);
  EXPECT_EQ(box.maxPoint().z, 6);
}

} // namespace
