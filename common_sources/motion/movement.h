#ifndef MOVEMENT_H
#define MOVEMENT_H

#include <cstdint>

#include <arxHeaders.h>

/// State that exists once for the whole plug-in, shared by the operations on views and selections. Main
/// thread only.
namespace motion {

/// What a movement remembers of the selection. It is read if the movement's first handled sample rotates and
/// the toggle is on, and kept until such a sample overwrites it: nothing resets it at the release, so a
/// movement that begins to rotate later uses what an earlier one left. Object mode overwrites selCenterValid
/// at every sample. Movements begin and end in AutoCadProxy::handleDeviceCap.
struct Movement {
  AcGePoint3d selCenterPoint; // rotation centre; also the start of the line of selAxisVector
  AcGeVector3d selAxisVector; // direction of the selected line, unit vector
  bool selCenterValid = false;
  bool selAxisValid = false;
};
extern Movement movement;

/// The view of the last retrieveViewParams, null if that failed; the one before if it threw. Owned by the
/// host.
extern AcGsView* viewP;
/// The last value that could be read of the system variable CVPORT.
extern std::int32_t cvportNumber;

} // namespace motion

#endif
