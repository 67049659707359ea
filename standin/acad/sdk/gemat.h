#ifndef GEMAT_H
#define GEMAT_H

#include "gepnt.h"

/// A transform of space, 4 by 4, acting on columns: p' = M p. entry[row][column].
class AcGeMatrix3d {
public:
  double entry[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

  /// The identity.
  AcGeMatrix3d() = default;

  /// Sets the translation part and leaves the rest.
  AcGeMatrix3d& setTranslation(const AcGeVector3d& v);
  AcGeVector3d translation() const { return {entry[0][3], entry[1][3], entry[2][3]}; }

  static AcGeMatrix3d translation(const AcGeVector3d& v) { return AcGeMatrix3d().setTranslation(v); }
  /// A right-handed turn about the line through the centre along the axis. angle in radians; the axis may
  /// have any length but zero, which yields the identity.
  static AcGeMatrix3d rotation(double angle, const AcGeVector3d& axis,
                               const AcGePoint3d& centre = AcGePoint3d::kOrigin);
  /// Takes the world's axes and origin to the given ones.
  static AcGeMatrix3d alignCoordSys(const AcGePoint3d& origin, const AcGeVector3d& x, const AcGeVector3d& y,
                                    const AcGeVector3d& z);

  /// From the coordinates of a flat entity with that normal to the world's. Such entities have a system of
  /// their own, whose x axis follows from the normal alone; world Z yields the identity.
  static AcGeMatrix3d planeToWorld(const AcGeVector3d& normal);

  /// M * R applies R first.
  AcGeMatrix3d operator*(const AcGeMatrix3d& r) const;
  bool isEqualTo(const AcGeMatrix3d& m, const AcGeTol& tol = AcGeContext::gTol) const;
  bool operator==(const AcGeMatrix3d& m) const { return isEqualTo(m); }

  AcGePoint3d operator*(const AcGePoint3d& p) const {
    const auto& e = entry;
    return {e[0][0] * p.x + e[0][1] * p.y + e[0][2] * p.z + e[0][3],
            e[1][0] * p.x + e[1][1] * p.y + e[1][2] * p.z + e[1][3],
            e[2][0] * p.x + e[2][1] * p.y + e[2][2] * p.z + e[2][3]};
  }
  /// A vector is turned and scaled, not moved.
  AcGeVector3d operator*(const AcGeVector3d& v) const {
    const auto& e = entry;
    return {e[0][0] * v.x + e[0][1] * v.y + e[0][2] * v.z, e[1][0] * v.x + e[1][1] * v.y + e[1][2] * v.z,
            e[2][0] * v.x + e[2][1] * v.y + e[2][2] * v.z};
  }
};

#endif
