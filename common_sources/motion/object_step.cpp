#include "object_step.h"

#include <cmath>

namespace motion {

namespace {

// The frame's x axis points to the LEFT of the picture, hence the sign of the first gain of each pair.
constexpr double kTranslationGainX = -0.5;  // drawing units per count, along the frame's x axis
constexpr double kTranslationGainYZ = 0.5;  // drawing units per count, along y and z axis
constexpr double kRotationGainX = -0.002;   // radians per count, about the frame's x axis
constexpr double kRotationGainYZ = 0.002;   // radians per count, about y and z axis
constexpr double kTranslationGain2D = 5e-5; // drawing units per count, along world X and Y

} // namespace

AcGeMatrix3d objectMatrix(const Counts& counts, const ScreenFrame& frame, const AcGePoint3d& centre,
                          bool hoverMode, bool keepHorizon) {
  AcGeVector3d shift = frame.xAxis * (counts.x * kTranslationGainX) +
                       frame.yAxis * (counts.y * kTranslationGainYZ) +
                       frame.zAxis * (counts.z * kTranslationGainYZ);
  if (hoverMode)
    shift.y = 0; // world Y here, where the view's hovering keeps world Z
  const AcGeVector3d secondAxis = keepHorizon ? AcGeVector3d(0, 1, 0) : frame.yAxis;
  AcGeMatrix3d matrix;
  matrix.setTranslation(shift);
  if (counts.a != 0)
    matrix = matrix * AcGeMatrix3d::rotation(counts.a * kRotationGainX, frame.xAxis, centre);
  if (counts.b != 0)
    matrix = matrix * AcGeMatrix3d::rotation(counts.b * kRotationGainYZ, secondAxis, centre);
  if (counts.c != 0 && !keepHorizon)
    matrix = matrix * AcGeMatrix3d::rotation(counts.c * kRotationGainYZ, frame.zAxis, centre);
  return matrix;
}

AcGeMatrix3d layoutObjectMatrix(double x, double y) {
  AcGeMatrix3d matrix;
  matrix.setTranslation(AcGeVector3d(x * kTranslationGain2D, y * kTranslationGain2D, 0));
  return matrix;
}

bool isFinite(const AcGeMatrix3d& matrix) {
  for (const auto& row : matrix.entry) {
    for (const double value : row) {
      if (!std::isfinite(value))
        return false;
    }
  }
  return true;
}

} // namespace motion
