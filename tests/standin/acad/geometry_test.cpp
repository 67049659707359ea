#include <gtest/gtest.h>

#include <cmath>

#include "gemat.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

void expectNear(const AcGePoint3d& a, const AcGePoint3d& b, double tolerance = 1e-9) {
  EXPECT_NEAR(a.x, b.x, tolerance);
  EXPECT_NEAR(a.y, b.y, tolerance);
  EXPECT_NEAR(a.z, b.z, tolerance);
}

TEST(Geometry, TurnsRightHandedAboutAxesOfAnyLength) {
  for (const double length : {1.0, 0.001, 1000.0}) {
    AcGeVector3d x(1, 0, 0);
    x.rotateBy(kPi / 2, AcGeVector3d(0, 0, length));
    expectNear(AcGePoint3d::kOrigin + x, {0, 1, 0});
    AcGePoint3d p(3, 2, 5);
    p.rotateBy(kPi / 2, AcGeVector3d(0, length, 0), AcGePoint3d(2, 0, 5));
    expectNear(p, {2, 2, 4});
    expectNear(AcGeMatrix3d::rotation(kPi / 2, AcGeVector3d(length, 0, 0), {0, 1, 0}) * AcGePoint3d(7, 2, 0),
               {7, 1, 1});
  }
}

TEST(Geometry, AnAxisWithoutLengthTurnsNothing) {
  AcGePoint3d p(1, 2, 3);
  p.rotateBy(1, AcGeVector3d(), AcGePoint3d(5, 5, 5));
  EXPECT_EQ(p.x, 1);
  EXPECT_TRUE(AcGeMatrix3d::rotation(1, AcGeVector3d()) == AcGeMatrix3d::kIdentity);
}

TEST(Geometry, AProductAppliesItsRightSideFirst) {
  const AcGeMatrix3d move = AcGeMatrix3d().setTranslation({10, 0, 0});
  AcGeMatrix3d turn = AcGeMatrix3d::rotation(kPi / 2, AcGeVector3d::kZAxis);
  expectNear(move * turn * AcGePoint3d(1, 0, 0), {10, 1, 0});
  expectNear(turn * move * AcGePoint3d(1, 0, 0), {0, 11, 0});
  expectNear(turn.setTranslation({1, 2, 3}) * AcGePoint3d(1, 0, 0), {1, 3, 3});
}

TEST(Geometry, NormalizeLeavesWhatIsShorterThanTheTolerance) {
  AcGeVector3d tiny(0, 5e-13, 0);
  EXPECT_EQ(tiny.normalize().y, 5e-13);
  AcGeVector3d small(0, 0, -2e-12);
  EXPECT_EQ(&small.normalize(), &small);
  EXPECT_EQ(small.z, -1);
  AcGeTol coarse;
  coarse.setEqualVector(0.5);
  EXPECT_EQ(AcGeVector3d(0.25, 0, 0).normalize(coarse).x, 0.25);
}

TEST(Geometry, PlanesAreRightHandedFramesAndWorldZGivesTheWorld) {
  EXPECT_TRUE(AcGeMatrix3d::planeToWorld(AcGeVector3d(0, 0, 3)) == AcGeMatrix3d::kIdentity);
  for (const AcGeVector3d& normal : {AcGeVector3d(0, 0, -1), AcGeVector3d(1, 0, 0), AcGeVector3d(0, -1, 0),
                                     AcGeVector3d(0.01, 0.01, 1), AcGeVector3d(1, 2, 3)}) {
    const AcGeMatrix3d plane = AcGeMatrix3d::planeToWorld(normal);
    const AcGeVector3d x = plane * AcGeVector3d::kXAxis;
    const AcGeVector3d y = plane * AcGeVector3d::kYAxis;
    expectNear(AcGePoint3d::kOrigin + x.crossProduct(y), AcGePoint3d::kOrigin + normal.normal());
    EXPECT_NEAR(x.length(), 1, 1e-12);
    EXPECT_NEAR(y.length(), 1, 1e-12);
  }
}

} // namespace
