#ifndef ROTATION_MODE_H
#define ROTATION_MODE_H

#include <cstdint>

namespace motion {

// Values of mRotMode. In the camera modes the camera follows the cap, in the others the scene does.
constexpr std::int32_t kObjScreen = 0;   // about the view's target
constexpr std::int32_t kObjOrigin = 1;   // about the world's origin
constexpr std::int32_t kCamStandard = 2; // about the eye in perspective, else about the world's origin
constexpr std::int32_t kCamTarget = 3;   // about the view's target

constexpr bool isCameraMode(std::int32_t rotMode) {
  return rotMode == kCamStandard || rotMode == kCamTarget;
}

/// A rotation code of the device's settings, taken apart.
struct RotationMode {
  std::int32_t rotMode; // 0 to 3
  bool keepHorizon;
  bool hoverMode;
};

/// Takes a rotation code apart: the last digit is the mode, the tens keep the horizon, from 100 up the view
/// hovers. Digit 4 is digit 2 with hovering. Negative codes act as 0, and last digits above 4 as mode 0: they
/// name no mode, and the scene then turns about the point looked at.
RotationMode rotationMode(std::int32_t code);

/// What a view turns about if no selection is the centre.
enum class DefaultCentre { Target, Eye, Origin };
DefaultCentre defaultCentre(std::int32_t rotMode, bool isPerspective);

} // namespace motion

#endif
