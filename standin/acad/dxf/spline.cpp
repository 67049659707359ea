#include <algorithm>

#include "entities.h"

namespace dxf {

namespace {

constexpr int kMaxDegree = 15;
constexpr int kPiecesASpan = 8;

struct Weighted {
  AcGeVector3d point; // times its weight
  double weight = 0;
};

/// Returns the point at t in a span, by de Boor's algorithm: each round blends neighbours.
/// span  index of the knot at which the span begins
AcGePoint3d pointAt(double t, size_t span, size_t degree, const std::vector<double>& knots,
                    std::vector<Weighted> near) {
  for (size_t round = 1; round <= degree; ++round)
    for (size_t i = degree; i >= round; --i) {
      const double low = knots[span - degree + i];
      const double high = knots[span + 1 + i - round];
      const double share = high > low ? (t - low) / (high - low) : 0;
      near[i].point = near[i - 1].point * (1 - share) + near[i].point * share;
      near[i].weight = near[i - 1].weight * (1 - share) + near[i].weight * share;
    }
  return AcGePoint3d::kOrigin + near[degree].point / near[degree].weight;
}

} // namespace

std::vector<AcGePoint3d> splinePoints(int degree, const std::vector<double>& knots,
                                      const std::vector<AcGePoint3d>& controls,
                                      const std::vector<double>& weights) {
  const size_t p = degree < 1 || degree > kMaxDegree ? 0 : static_cast<size_t>(degree);
  if (p == 0 || controls.size() <= p || knots.size() != controls.size() + p + 1 ||
      weights.size() != controls.size() || !std::is_sorted(knots.begin(), knots.end()))
    return {};
  std::vector<AcGePoint3d> points;
  for (size_t span = p; span < controls.size(); ++span) {
    const double begin = knots[span];
    const double end = knots[span + 1];
    if (!(end > begin))
      continue;
    std::vector<Weighted> near;
    for (size_t i = span - p; i <= span; ++i)
      near.push_back({controls[i].asVector() * weights[i], weights[i]});
    for (int i = points.empty() ? 0 : 1; i <= kPiecesASpan; ++i)
      points.push_back(pointAt(begin + (end - begin) * i / kPiecesASpan, span, p, knots, near));
  }
  return points;
}

} // namespace dxf
