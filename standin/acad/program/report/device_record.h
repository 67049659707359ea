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
  enum class Kind { motion, event, mode, other };

  double mUnixSeconds = 0;
  Kind mKind = Kind::other;
  /// Of a motion, device counts.
  std::array<int, 6> mSample{};
  /// Of an event.
  std::int64_t mCode = 0;
  /// A mode's name; of another line all after the time.
  std::string mText;
};

/// Reads a record. Lines that are no record lines are passed over: the last one may have been cut off when
/// the daemon ended. The events come in order of time. A missing file is an empty record.
std::vector<DeviceEvent> readDeviceRecord(const std::string& path);

/// The sample in force at a time: the one of the last motion at or before it, six zeros before the first.
/// Walks forwards only; ask in order of time.
class SampleCursor {
public:
  /// The events must outlive the cursor.
  explicit SampleCursor(const std::vector<DeviceEvent>& events) : mEvents(events) {}
  const std::array<int, 6>& at(double unixSeconds);

private:
  const std::vector<DeviceEvent>& mEvents;
  std::size_t mNext = 0;
  std::array<int, 6> mSample{};
};

} // namespace program

#endif
