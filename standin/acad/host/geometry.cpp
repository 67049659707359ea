#include "gemat.h"
#include "gepnt.h"

AcGeTol AcGeContext::gTol;
const AcGePoint3d AcGePoint3d::kOrigin;
const AcGeVector3d AcGeVector3d::kXAxis(1, 0, 0);
const AcGeVector3d AcGeVector3d::kYAxis(0, 1, 0);
const AcGeVector3d AcGeVector3d::kZAxis(0, 0, 1);

AcGeVector3d& AcGeVector3d::rotateBy(double angle, const AcGeVector3d& axis) {
  const double size = axis.length();
  if (!(size > 0))
    return *this;
  const AcGeVector3d a = axis / size;
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  return *this = *this * c + a.crossProduct(*this) * s + a * (a.dotProduct(*this) * (1 - c));
}

AcGeMatrix3d& AcGeMatrix3d::setTranslation(const AcGeVector3d& v) {
  entry[0][3] = v.x;
  entry[1][3] = v.y;
  entry[2][3] = v.z;
  return *this;
}

AcGeMatrix3d AcGeMatrix3d::rotation(double angle, const AcGeVector3d& axis, const AcGePoint3d& centre) {
  AcGeMatrix3d m;
  const double size = axis.length();
  if (!(size > 0))
    return m;
  const AcGeVector3d a = axis / size;
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  const double r = 1 - c;
  auto& e = m.entry;
  e[0][0] = c + a.x * a.x * r;
  e[0][1] = a.x * a.y * r - a.z * s;
  e[0][2] = a.x * a.z * r + a.y * s;
  e[1][0] = a.y * a.x * r + a.z * s;
  e[1][1] = c + a.y * a.y * r;
  e[1][2] = a.y * a.z * r - a.x * s;
  e[2][0] = a.z * a.x * r - a.y * s;
  e[2][1] = a.z * a.y * r + a.x * s;
  e[2][2] = c + a.z * a.z * r;
  // The translation keeps the centre in place.
  return m.setTranslation(centre.asVector() - m * centre.asVector());
}

AcGeMatrix3d AcGeMatrix3d::alignCoordSys(const AcGePoint3d& origin, const AcGeVector3d& x,
                                         const AcGeVector3d& y, const AcGeVector3d& z) {
  AcGeMatrix3d m;
  const AcGeVector3d columns[] = {x, y, z, origin.asVector()};
  for (int i = 0; i < 4; ++i) {
    m.entry[0][i] = columns[i].x;
    m.entry[1][i] = columns[i].y;
    m.entry[2][i] = columns[i].z;
  }
  return m;
}

AcGeMatrix3d AcGeMatrix3d::operator*(const AcGeMatrix3d& r) const {
  AcGeMatrix3d m;
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j)
      m.entry[i][j] = entry[i][0] * r.entry[0][j] + entry[i][1] * r.entry[1][j] +
                      entry[i][2] * r.entry[2][j] + entry[i][3] * r.entry[3][j];
  return m;
}

bool AcGeMatrix3d::isEqualTo(const AcGeMatrix3d& m, const AcGeTol& tol) const {
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j)
      if (!(std::fabs(entry[i][j] - m.entry[i][j]) <= tol.equalPoint()))
        return false;
  return true;
}

AcGeMatrix3d AcGeMatrix3d::planeToWorld(const AcGeVector3d& normal) {
  // The rule of the DXF format: the x axis is perpendicular to world Y if the normal is near world Z,
  // otherwise to world Z.
  constexpr double kNearZ = 1.0 / 64;
  AcGeVector3d z = normal.isZeroLength() ? AcGeVector3d::kZAxis : normal;
  z.normalize();
  const bool isNearZ = std::fabs(z.x) < kNearZ && std::fabs(z.y) < kNearZ;
  const AcGeVector3d x = (isNearZ ? AcGeVector3d::kYAxis : AcGeVector3d::kZAxis).crossProduct(z).normalize();
  return AcGeMatrix3d::alignCoordSys(AcGePoint3d::kOrigin, x, z.crossProduct(x), z);
}
