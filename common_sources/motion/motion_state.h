#ifndef MOTION_STATE_H
#define MOTION_STATE_H

#include <cmath>
#include <cstdint>

#include <arxHeaders.h>

/// What exists once for the whole plug-in and is shared by the operations on views and selections. It belongs
/// to the host's main thread.
namespace motion {

/// The view of the last retrieveViewParams, null if that failed. The host's own.
extern AcGsView* viewP;
/// The last value that could be read of the system variable CVPORT.
extern std::int32_t cvportNumber;

/// Centre and axis from the selection: read if the first sample of a deflection rotates the view, and kept
/// until such a sample overwrites them. A deflection that begins to rotate later uses what is there.
extern AcGePoint3d selCenterPoint;
extern AcGeVector3d selAxisVector;
extern bool selCenterValid;
extern bool selAxisValid;

/// Rotation centre of last resort.
extern const AcGePoint3d worldOrigin;

bool isFinite(const AcGeVector3d& v);

bool isFiniteView(const AcGePoint3d& position, const AcGePoint3d& target, const AcGeVector3d& up,
                  double fieldWidth, double fieldHeight);

/// Sets the view, unless a number of it is infinite or none: the host's view doesn't recover from that, so
/// the step is dropped and the view stays what it is.
inline void setFiniteView(AcGsView& view, const AcGePoint3d& position, const AcGePoint3d& target,
                          const AcGeVector3d& up, double fieldWidth, double fieldHeight, bool isPerspective) {
  // A sum is finite only if all that went into it is. One that isn't may also be of large numbers, so only
  // then they are looked at one by one. As vectors first, so that no addition waits for all those before it.
  const AcGeVector3d all = position.asVector() + target.asVector() + up;
  const double sum = (all.x + all.y) + (all.z + (fieldWidth + fieldHeight));
  if (std::isfinite(sum) || isFiniteView(position, target, up, fieldWidth, fieldHeight))
    view.setView(position, target, up, fieldWidth, fieldHeight,
                 isPerspective ? AcGsView::kPerspective : AcGsView::kParallel);
}

/// A divisor from the settings file as it is used. Zero, which the file may hold, would make every motion
/// infinite; the default serves instead.
double divisor(std::int32_t setting, std::int32_t defaultValue);

constexpr std::int32_t kDefaultTraSensBase = 20000; // device counts
constexpr std::int32_t kDefaultRotSensBase = 10000; // device counts

/// Factor of one zoom step: 1 + value, held within 0.8 and 1.2.
double zoomFactor(double value);

} // namespace motion

#endif
