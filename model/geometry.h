#ifndef MODEL_GEOMETRY_H
#define MODEL_GEOMETRY_H

#include <algorithm>
#include <cmath>

namespace model {

/// A point or a vector.
/// scale  the largest operand that went into it, 0 for one as the host returned it
struct Vec3 {
  double x = 0, y = 0, z = 0, scale = 0;

  /// Returns the largest magnitude of a coordinate or an operand; NaN doesn't count.
  friend double largest(const Vec3& a) {
    return std::max({a.scale, std::abs(a.x), std::abs(a.y), std::abs(a.z)});
  }
  friend Vec3 operator+(const Vec3& a, const Vec3& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z, std::max(largest(a), largest(b))};
  }
  friend Vec3 operator-(const Vec3& a, const Vec3& b) { return a + b * -1; }
  friend Vec3 operator*(const Vec3& a, double factor) {
    return {a.x * factor, a.y * factor, a.z * factor, largest(a) * std::abs(factor)};
  }
  friend double dot(const Vec3& a, const Vec3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
  friend Vec3 cross(const Vec3& a, const Vec3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x, largest(a) * largest(b)};
  }
  friend double length(const Vec3& a) { return std::sqrt(dot(a, a)); }
  /// Returns whether a vector is long enough to have a direction.
  friend bool hasDirection(const Vec3& a) { return length(a) > 1e-12; }
  /// Returns the vector with length 1, or unchanged if it has no direction, as the host does.
  friend Vec3 normalized(const Vec3& a) {
    const double size = hasDirection(a) ? length(a) : 1;
    return {a.x / size, a.y / size, a.z / size};
  }
  /// Rotates a vector by the right-hand rule; about a zero axis, returns it unchanged.
  friend Vec3 rotateBy(const Vec3& v, double angle, const Vec3& axis) {
    const double size = length(axis), c = std::cos(angle);
    const Vec3 a = axis * (1 / size);
    return size == 0 ? v : v * c + cross(a, v) * std::sin(angle) + a * (dot(a, v) * (1 - c));
  }
};

} // namespace model

#endif
