#include <random>

#include "host_test.h"

namespace {

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
  blockP->entities.push_back(std::make_unique<AcDbCircle>(AcGePoint3d(2, 0, 0), AcGeVector3d::kZAxis, 1));
  all.push_back(std::make_unique<AcDbBlockReference>(blockP, AcGeMatrix3d::scaling(1, 2, 1)));
  return all;
}

/// Curves are drawn in pieces of 6 degrees, so a drawn curve falls short of the true one by that share of its
/// size.
constexpr double kDrawnShortfall = 0.0014;

TEST(EntitiesTest, PointsTurnAndExtentsFit) {
  std::mt19937 random(3);
  std::uniform_real_distribution<double> any(-3, 3);
  for (auto& entityP : oneOfEachKind()) {
    for (int i = 0; i < 40; ++i) {
      const auto before = host::strokes(*entityP);
      const AcGeMatrix3d m = AcGeMatrix3d::translation({any(random), any(random), any(random)}) *
                             AcGeMatrix3d::rotation(any(random), {any(random), any(random), any(random)});
      ASSERT_EQ(entityP->transformBy(m), Acad::eOk);
      AcDbExtents box, drawn;
      ASSERT_EQ(entityP->getGeomExtents(box), Acad::eOk);
      const auto strokes = host::strokes(*entityP);
      ASSERT_EQ(before.size(), strokes.size());
      for (std::size_t k = 0; k < strokes.size(); ++k)
        for (std::size_t n = 0; n < strokes[k].size(); ++n) {
          EXPECT_LT((m * before[k][n]).distanceTo(strokes[k][n]), 1e-9);
          drawn.addPoint(strokes[k][n]);
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

} // namespace
