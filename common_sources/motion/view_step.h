#ifndef VIEW_STEP_H
#define VIEW_STEP_H

#include <cstdint>

#include <arxHeaders.h>

/// The arithmetic of one step of a view: values in, values out. Nothing here calls the host.
namespace motion {

/// Axes of the picture in world coordinates: x to the LEFT of the picture, y up, z towards the viewer. Unit
/// vectors; x has no length if the view looks along its up vector.
struct ScreenFrame {
  AcGeVector3d xAxis{1, 0, 0};
  AcGeVector3d yAxis{0, 1, 0};
  AcGeVector3d zAxis{0, 0, 1};
};
ScreenFrame screenFrame(const AcGePoint3d& position, const AcGePoint3d& target, const AcGeVector3d& up);

// Gains of move3D: its value is sample / mTraSensBase * gain, in units of the view's size. The frame's x axis
// points to the LEFT of the picture, hence its other sign: a positive sample moves the eye left, down and
// forwards, so the scene moves right, up and towards the viewer. The signs of the rotation are set in
// AutoCadProxy::rotateView.
constexpr double kViewGainX = 5.0;
constexpr double kViewGainYZ = -5.0;

/// Returns the shift of eye and target along an axis.
/// value         signed step in units of the view's size, sqrt(height * width)
/// keepsHeight   a hovering eye keeps its height above the ground, world Z
AcGeVector3d viewShift(double value, const AcGeVector3d& axis, double width, double height, bool keepsHeight);

/// Returns the factor of one zoom step: 1 + value, held within 0.8 and 1.2. Above 1 enlarges a 3D view.
double zoomFactor(double value);

/// Returns the share of a sample's value along a selected line, rounded towards zero. 32768 becomes 32767: as
/// a short it would be -32768 and turn the view backwards. A NaN axis yields 0.
/// line, axis  unit vectors
short shareAlong(const AcGeVector3d& line, const AcGeVector3d& axis, short value);

/// Returns a sensitivity divisor as it is used: 0, which the settings file may hold, acts as the default.
double divisor(std::int32_t setting, std::int32_t defaultValue);

bool isFinite(const AcGePoint3d& position, const AcGePoint3d& target, const AcGeVector3d& up,
              double fieldWidth, double fieldHeight);

} // namespace motion

#endif
