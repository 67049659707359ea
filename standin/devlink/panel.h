#ifndef PANEL_H
#define PANEL_H

#include "protocol.h"
#include "session.h"

namespace devlink {

/// The device's control panel: what a user sets for their own hand. A sample passes through it before it leaves the
/// daemon: axes are swapped, then each loses its dead zone, then, if that is on, all but the strongest become 0,
/// then each is multiplied by its gain.
class Panel {
public:
  /// Takes a setting. Returns false for other lines of the device.
  bool take(const session::Action& action);
  /// Returns the sample as clients get it. Values are limited to 16 bits.
  Axes apply(const Axes& hand) const;

  /// By axis, a factor.
  std::array<double, 6> mGain{1, 1, 1, 1, 1, 1};
  /// By axis, counts by which a deflection is shortened; a smaller one becomes 0.
  std::array<double, 6> mDeadZone{};
  /// By axis, the axis of the hand that moves it.
  std::array<std::size_t, 6> mSource{0, 1, 2, 3, 4, 5};
  bool mIsDominant = false;
};

} // namespace devlink

#endif
