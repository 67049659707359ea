#include "motion_state.h"

#include <algorithm>
#include <cmath>

namespace motion {

namespace {

constexpr double kSmallestZoom = 0.8; // factor of one step
constexpr double kLargestZoom = 1.2;

} // namespace

AcGsView* viewP = nullptr;
std::int32_t cvportNumber = 0;
AcGePoint3d selCenterPoint(0, 0, 0);
AcGeVector3d selAxisVector(0, 0, 0);
bool selCenterValid = false;
bool selAxisValid = false;
const AcGePoint3d worldOrigin(0, 0, 0);

bool isFinite(const AcGeVector3d& v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

bool isFiniteView(const AcGePoint3d& position, const AcGePoint3d& target, const AcGeVector3d& up,
                  double fieldWidth, double fieldHeight) {
  return isFinite(position - worldOrigin) && isFinite(target - worldOrigin) && isFinite(up) &&
         std::isfinite(fieldWidth) && std::isfinite(fieldHeight);
}

double divisor(std::int32_t setting, std::int32_t defaultValue) {
  return setting != 0 ? setting : defaultValue;
}

double zoomFactor(double value) {
  return std::clamp(1 + value, kSmallestZoom, kLargestZoom);
}

} // namespace motion
