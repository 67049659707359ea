#ifndef OBJECT_STEP_H
#define OBJECT_STEP_H

#include <arxHeaders.h>

#include "view_step.h"

/// The arithmetic of one step of selected objects: a fixed amount for each device count. The
/// sensitivities and the rotation mode have no effect. Nothing here calls the host.
namespace motion {

/// A sample's values, device counts.
struct Counts {
  double x, y, z; // translation
  double a, b, c; // rotation
};

/// Returns the matrix that moves the objects as one rigid body: a point is turned about the third axis, then
/// the second, then the first, all through the centre, and shifted last.
/// hoverMode    drops the shift along world Y
/// keepHorizon  drops the third turn; the second goes about world Y
AcGeMatrix3d objectMatrix(const Counts& counts, const ScreenFrame& frame, const AcGePoint3d& centre,
                          bool hoverMode, bool keepHorizon);
/// Returns the shift of objects on a layout, along world X and Y.
AcGeMatrix3d layoutObjectMatrix(double x, double y);

bool isFinite(const AcGeMatrix3d& matrix);

} // namespace motion

#endif
