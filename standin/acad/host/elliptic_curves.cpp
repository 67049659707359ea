#include <algorithm>
#include <cmath>

#include "state.h"

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kFullTurn = 2 * kPi;
constexpr double kStrokeStep = 6 * kPi / 180; // largest angle of a drawn piece, radians
constexpr double kRoundness = 1e-6;           // largest relative difference of the axes of a circle

/// Widens lo..hi by one coordinate of the curve: c + a cos t + b sin t.
void widen(const AcDbEllipticArc& arc, double c, double a, double b, double& lo, double& hi) {
  const double reach = std::hypot(a, b);
  if (arc.sweep >= kFullTurn) {
    lo = std::min(lo, c - reach);
    hi = std::max(hi, c + reach);
    return;
  }
  for (const double t : {arc.start, arc.start + arc.sweep}) {
    const double value = c + a * std::cos(t) + b * std::sin(t);
    lo = std::min(lo, value);
    hi = std::max(hi, value);
  }
  // The coordinate is greatest where (cos t, sin t) points along (a, b), and least half a turn later.
  const auto isReached = [&arc](double t) {
    const double ahead = std::fmod(t - arc.start, kFullTurn);
    return (ahead < 0 ? ahead + kFullTurn : ahead) <= arc.sweep;
  };
  const double peak = std::atan2(b, a);
  if (isReached(peak))
    hi = std::max(hi, c + reach);
  if (isReached(peak + kPi))
    lo = std::min(lo, c - reach);
}

bool isRound(const AcDbEllipticArc& arc) {
  const double a = arc.major.lengthSqrd();
  const double b = arc.minor.lengthSqrd();
  const double limit = 2 * kRoundness * std::max(a, b);
  return std::fabs(a - b) <= limit && std::fabs(arc.major.dotProduct(arc.minor)) <= limit;
}

/// Returns the angle from start to end, counter-clockwise; a whole turn if they are equal.
double sweepFrom(double start, double end) {
  const double sweep = std::fmod(end - start, kFullTurn);
  return sweep <= 0 ? sweep + kFullTurn : sweep;
}

AcDbEllipticArc roundArc(const AcGePoint3d& centre, const AcGeVector3d& normal, double radius, double start,
                         double sweep) {
  const AcGeMatrix3d plane = AcGeMatrix3d::planeToWorld(normal);
  return {centre, plane * AcGeVector3d(radius, 0, 0), plane * AcGeVector3d(0, radius, 0), start, sweep};
}

} // namespace

AcGePoint3d AcDbEllipticArc::at(double t) const {
  return centre + major * std::cos(t) + minor * std::sin(t);
}

AcDbEllipticArc AcDbEllipticArc::transformedBy(const AcGeMatrix3d& m) const {
  return {m * centre, m * major, m * minor, start, sweep};
}

void AcDbEllipticArc::addExtents(AcDbExtents& extents) const {
  const AcDbExtents none;
  AcGePoint3d low = none.minPoint();
  AcGePoint3d high = none.maxPoint();
  widen(*this, centre.x, major.x, minor.x, low.x, high.x);
  widen(*this, centre.y, major.y, minor.y, low.y, high.y);
  widen(*this, centre.z, major.z, minor.z, low.z, high.z);
  extents.addPoint(low);
  extents.addPoint(high);
}

AcDbStroke AcDbEllipticArc::stroke() const {
  const int pieces = std::max(1, static_cast<int>(std::ceil(sweep / kStrokeStep)));
  AcDbStroke points;
  points.reserve(static_cast<size_t>(pieces) + 1);
  for (int i = 0; i <= pieces; ++i)
    points.push_back(at(start + sweep * i / pieces));
  return points;
}

void AcDbEllipticCurve::subAddExtents(const AcGeMatrix3d& transform, AcDbExtents& extents) const {
  mArc.transformedBy(transform).addExtents(extents);
}

Acad::ErrorStatus AcDbEllipticCurve::subTransformBy(const AcGeMatrix3d& transform) {
  const AcDbEllipticArc moved = mArc.transformedBy(transform);
  if (mMustStayRound && !isRound(moved))
    return Acad::eCannotScaleNonUniformly;
  mArc = moved;
  return Acad::eOk;
}

void AcDbEllipticCurve::subAddStrokes(const AcGeMatrix3d& transform, std::vector<AcDbStroke>& strokes) const {
  strokes.push_back(mArc.transformedBy(transform).stroke());
}

AcDbCircle::AcDbCircle(const AcGePoint3d& centre, const AcGeVector3d& normal, double radius)
    : AcDbEllipticCurve(roundArc(centre, normal, radius, 0, kFullTurn), true) {}

AcDbArc::AcDbArc(const AcGePoint3d& centre, const AcGeVector3d& normal, double radius, double startAngle,
                 double endAngle)
    : AcDbEllipticCurve(roundArc(centre, normal, radius, startAngle, sweepFrom(startAngle, endAngle)), true) {
}

AcDbEllipse::AcDbEllipse(const AcGePoint3d& centre, const AcGeVector3d& normal, const AcGeVector3d& majorAxis,
                         double ratio, double startAngle, double endAngle)
    : AcDbEllipticCurve({centre, majorAxis, normal.normal().crossProduct(majorAxis) * ratio, startAngle,
                         sweepFrom(startAngle, endAngle)},
                        false) {}
