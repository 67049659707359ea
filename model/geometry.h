#ifndef MODEL_GEOMETRY_H
#define MODEL_GEOMETRY_H

#include <algorithm>
#include <array>
#include <cmath>

namespace model {

constexpr double SHORTEST = 1e-12; // a vector that isn't longer has no direction

/// A point or a vector.
struct Vec3 {
  double x = 0;
  double y = 0;
  double z = 0;
};

inline Vec3 operator+(const Vec3& a, const Vec3& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vec3 operator-(const Vec3& a, const Vec3& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vec3 operator*(const Vec3& a, double factor) {
  return {a.x * factor, a.y * factor, a.z * factor};
}
inline Vec3 operator/(const Vec3& a, double divisor) {
  return {a.x / divisor, a.y / divisor, a.z / divisor};
}
inline double dot(const Vec3& a, const Vec3& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Vec3 cross(const Vec3& a, const Vec3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double length(const Vec3& a) {
  return std::sqrt(dot(a, a));
}

/// Give the largest magnitude of a coordinate; NaN doesn't count.
inline double largest(const Vec3& a) {
  double result = 0;
  for (const double coordinate : {a.x, a.y, a.z}) {
    result = std::max(result, std::abs(coordinate));
  }
  return result;
}

/// Scale a vector to length 1; leave one without direction, as the host does.
inline Vec3 normalized(const Vec3& a) {
  const double size = length(a);
  return size > SHORTEST ? a / size : a;
}

/// Turn a vector by the right-hand rule; a zero axis leaves it.
inline Vec3 rotateBy(const Vec3& v, double angle, const Vec3& axis) {
  const double size = length(axis);
  if (size == 0) {
    return v;
  }
  const Vec3 a = axis / size;
  return v * std::cos(angle) + cross(a, v) * std::sin(angle) + a * (dot(a, v) * (1 - std::cos(angle)));
}

/// A 4 by 4 transform of column vectors, row by row; a new one is the identity.
struct Matrix {
  std::array<double, 16> entry = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
};

inline void setColumn(Matrix& m, std::size_t column, const Vec3& v) {
  m.entry[column] = v.x;
  m.entry[4 + column] = v.y;
  m.entry[8 + column] = v.z;
}

/// Give the product that applies b first.
inline Matrix operator*(const Matrix& a, const Matrix& b) {
  Matrix product;
  for (std::size_t row = 0; row < 4; ++row) {
    for (std::size_t column = 0; column < 4; ++column) {
      double sum = 0;
      for (std::size_t i = 0; i < 4; ++i) {
        sum += a.entry[4 * row + i] * b.entry[4 * i + column];
      }
      product.entry[4 * row + column] = sum;
    }
  }
  return product;
}

/// Build a turn about the line through the centre; the identity for a zero axis.
inline Matrix rotation(double angle, const Vec3& axis, const Vec3& centre) {
  Matrix turn;
  if (length(axis) == 0) {
    return turn;
  }
  setColumn(turn, 0, rotateBy({1, 0, 0}, angle, axis));
  setColumn(turn, 1, rotateBy({0, 1, 0}, angle, axis));
  setColumn(turn, 2, rotateBy({0, 0, 1}, angle, axis));
  setColumn(turn, 3, centre - rotateBy(centre, angle, axis));
  return turn;
}

} // namespace model

#endif
