#ifndef DEVICE_RECORD_H
#define DEVICE_RECORD_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

/// What the device's daemon delivered, as it wrote it down.
namespace program {

/// One line of the daemon's record.
struct DeviceEvent {
  enum class Kind { motion, event, mode };

  double mUnixSeconds = 0;
  Kind mKind = Kind::mode;
  /// Of a motion, device counts.
  std::array<int, 6> mSample{};
  /// Of an event.
  std::int64_t mCode = 0;
  /// A mode's name.
  std::string mText;
};

/// Reads a record's motions, events and modes, in order of time. Skips invalid lines, such as a last one that was
/// cut off when the daemon ended. A missing file is an empty record.
std::vector<DeviceEvent> readDeviceRecord(const std::string& path);

/// Returns the number of events of a kind.
std::ptrdiff_t countOf(const std::vector<DeviceEvent>& events, DeviceEvent::Kind kind);

} // namespace program

#endif
