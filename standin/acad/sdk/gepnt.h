#ifndef GEPNT_H
#define GEPNT_H

#include <cmath>

/// Points, vectors and tolerances. Operations that change their object return it by reference.

/// The largest difference that counts as equal.
class AcGeTol {
public:
  double equalVector() const { return mEqualVector; }
  double equalPoint() const { return mEqualPoint; }

private:
  double mEqualVector = 1e-12;
  double mEqualPoint = 1e-10;
};

struct AcGeContext {
  /// The default tolerance.
  static AcGeTol gTol;
};

class AcGePoint2d {
public:
  double x = 0;
  double y = 0;

  AcGePoint2d() = default;
  AcGePoint2d(double xx, double yy) : x(xx), y(yy) {}
};

class AcGeVector3d {
public:
  double x = 0;
  double y = 0;
  double z = 0;
  static const AcGeVector3d kXAxis;
  static const AcGeVector3d kYAxis;
  static const AcGeVector3d kZAxis;

  AcGeVector3d() = default;
  AcGeVector3d(double xx, double yy, double zz) : x(xx), y(yy), z(zz) {}

  AcGeVector3d operator+(const AcGeVector3d& v) const { return {x + v.x, y + v.y, z + v.z}; }
  AcGeVector3d operator-(const AcGeVector3d& v) const { return {x - v.x, y - v.y, z - v.z}; }
  AcGeVector3d operator-() const { return {-x, -y, -z}; }
  AcGeVector3d operator*(double f) const { return {x * f, y * f, z * f}; }
  AcGeVector3d operator/(double f) const { return {x / f, y / f, z / f}; }
  AcGeVector3d& operator+=(const AcGeVector3d& v) { return *this = *this + v; }
  AcGeVector3d& operator/=(double f) { return *this = *this / f; }
  bool operator==(const AcGeVector3d& v) const { return isEqualTo(v); }

  double dotProduct(const AcGeVector3d& v) const { return x * v.x + y * v.y + z * v.z; }
  AcGeVector3d crossProduct(const AcGeVector3d& v) const {
    return {y * v.z - z * v.y, z * v.x - x * v.z, x * v.y - y * v.x};
  }
  double lengthSqrd() const { return dotProduct(*this); }
  double length() const { return std::sqrt(lengthSqrd()); }
  bool isZeroLength(const AcGeTol& tol = AcGeContext::gTol) const { return !(length() > tol.equalVector()); }
  bool isEqualTo(const AcGeVector3d& v, const AcGeTol& tol = AcGeContext::gTol) const {
    return (*this - v).isZeroLength(tol);
  }
  /// Makes the length 1. A vector no longer than the tolerance stays as it is.
  AcGeVector3d& normalize(const AcGeTol& tol = AcGeContext::gTol) {
    const double size = length();
    return size > tol.equalVector() ? *this /= size : *this;
  }
  AcGeVector3d normal(const AcGeTol& tol = AcGeContext::gTol) const {
    return AcGeVector3d(*this).normalize(tol);
  }
  /// Turns about the axis, right-handed. angle in radians; the axis may have any length but zero, which turns
  /// nothing.
  AcGeVector3d& rotateBy(double angle, const AcGeVector3d& axis);
};

class AcGePoint3d {
public:
  double x = 0;
  double y = 0;
  double z = 0;
  static const AcGePoint3d kOrigin;

  AcGePoint3d() = default;
  AcGePoint3d(double xx, double yy, double zz) : x(xx), y(yy), z(zz) {}

  AcGeVector3d operator-(const AcGePoint3d& p) const { return {x - p.x, y - p.y, z - p.z}; }
  AcGePoint3d operator+(const AcGeVector3d& v) const { return {x + v.x, y + v.y, z + v.z}; }
  AcGePoint3d operator-(const AcGeVector3d& v) const { return {x - v.x, y - v.y, z - v.z}; }
  AcGePoint3d operator/(double f) const { return {x / f, y / f, z / f}; }
  AcGePoint3d& operator+=(const AcGeVector3d& v) { return *this = *this + v; }
  AcGePoint3d& operator/=(double f) { return *this = *this / f; }
  bool operator==(const AcGePoint3d& p) const { return isEqualTo(p); }

  AcGePoint3d& set(double xx, double yy, double zz) { return *this = AcGePoint3d(xx, yy, zz); }
  AcGeVector3d asVector() const { return {x, y, z}; }
  bool isEqualTo(const AcGePoint3d& p, const AcGeTol& tol = AcGeContext::gTol) const {
    return (*this - p).length() <= tol.equalPoint();
  }
  /// Turns about the line through the centre along the axis, as AcGeVector3d::rotateBy does.
  AcGePoint3d& rotateBy(double angle, const AcGeVector3d& axis, const AcGePoint3d& centre = kOrigin) {
    return *this = centre + (*this - centre).rotateBy(angle, axis);
  }
};

#endif
