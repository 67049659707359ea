#include "view_step.h"

#include <algorithm>
#include <cmath>

namespace motion {

namespace {

constexpr double kSmallestZoom = 0.8; // factor of one step
constexpr double kLargestZoom = 1.2;

} // namespace

ScreenFrame screenFrame(const AcGePoint3d& position, const AcGePoint3d& target, const AcGeVector3d& up) {
  const AcGeVector3d look = position - target; // towards the viewer
  ScreenFrame frame;
  frame.yAxis = up;
  frame.zAxis = look;
  frame.xAxis = look.crossProduct(up); // in this order it points to the LEFT of the picture
  frame.xAxis.normalize(AcGeContext::gTol);
  frame.yAxis.normalize(AcGeContext::gTol);
  frame.zAxis.normalize(AcGeContext::gTol);
  return frame;
}

AcGeVector3d viewShift(double value, const AcGeVector3d& axis, double width, double height,
                       bool keepsHeight) {
  const double step = value * std::sqrt(height * width);
  return AcGeVector3d(step * axis.x, step * axis.y, keepsHeight ? 0 : step * axis.z);
}

double zoomFactor(double value) {
  return std::clamp(1 + value, kSmallestZoom, kLargestZoom);
}

short shareAlong(const AcGeVector3d& line, const AcGeVector3d& axis, short value) {
  const double share = std::clamp(line.dotProduct(axis), -1.0, 1.0) * value;
  return std::isnan(share) ? short{0} : static_cast<short>((std::min)(share, 32767.0));
}

double divisor(std::int32_t setting, std::int32_t defaultValue) {
  return setting != 0 ? setting : defaultValue;
}

bool isFinite(const AcGePoint3d& position, const AcGePoint3d& target, const AcGeVector3d& up,
              double fieldWidth, double fieldHeight) {
  const double values[] = {position.x, position.y, position.z, target.x,   target.y,   target.z,
                           up.x,       up.y,       up.z,       fieldWidth, fieldHeight};
  return std::all_of(std::begin(values), std::end(values), [](double value) { return std::isfinite(value); });
}

} // namespace motion
