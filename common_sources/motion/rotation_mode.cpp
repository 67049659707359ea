#include "rotation_mode.h"

namespace motion {

namespace {

constexpr std::int32_t kHoverDigit = 4; // "camhover": kCamStandard with the hover flag

} // namespace

RotationMode rotationMode(std::int32_t code) {
  if (code < 0)
    code = 0;
  const std::int32_t digits = code % 100;
  RotationMode mode{digits % 10, digits >= 10, code >= 100};
  if (mode.rotMode == kHoverDigit) {
    mode.rotMode = kCamStandard;
    mode.hoverMode = true;
  } else if (mode.rotMode > kCamTarget) {
    mode.rotMode = kObjScreen;
  }
  return mode;
}

DefaultCentre defaultCentre(std::int32_t rotMode, bool isPerspective) {
  if (rotMode == kObjOrigin || (rotMode == kCamStandard && !isPerspective))
    return DefaultCentre::Origin;
  return rotMode == kCamStandard ? DefaultCentre::Eye : DefaultCentre::Target;
}

} // namespace motion
