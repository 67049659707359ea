#ifndef TURN_H
#define TURN_H

#include <cmath>

#include <arxHeaders.h>

namespace motion {

/// A turn by an angle about an axis, right-handed, as rotateBy of the host's geometry does it.
///
/// A view is three things turned in the same way; this works out sine and cosine once for all three, which is
/// most of what a turn costs. It is kept as where it takes the world's axes: a vector is turned as the sum of
/// these, and the compiler has no reason to read a vector in other pieces than it was written in.
class Turn {
public:
  /// angle  radians
  /// axis   of any length but zero
  Turn(double angle, const AcGeVector3d& axis) {
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const AcGeVector3d a = axis / axis.length();
    const AcGeVector3d r = a * (1 - c);
    mX = AcGeVector3d(r.x * a.x + c, r.x * a.y + a.z * s, r.x * a.z - a.y * s);
    mY = AcGeVector3d(r.y * a.x - a.z * s, r.y * a.y + c, r.y * a.z + a.x * s);
    mZ = AcGeVector3d(r.z * a.x + a.y * s, r.z * a.y - a.x * s, r.z * a.z + c);
  }

  AcGeVector3d operator()(const AcGeVector3d& v) const { return mX * v.x + mY * v.y + mZ * v.z; }
  AcGePoint3d operator()(const AcGePoint3d& p, const AcGePoint3d& centre) const {
    return centre + (*this)(p - centre);
  }

private:
  AcGeVector3d mX, mY, mZ;
};

} // namespace motion

#endif
