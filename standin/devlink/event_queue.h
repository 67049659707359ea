#ifndef EVENT_QUEUE_H
#define EVENT_QUEUE_H

#include "protocol.h"

#include <cstdint>
#include <deque>
#include <utility>

namespace devlink {

/// One event of the device, as a client receives it.
struct Event {
  /// kMotionCode, or 0 or more.
  std::int32_t mCode = 0;
  /// Device counts; zeros unless it is a motion sample.
  Axes mAxes{};
};

constexpr std::int32_t kMotionCode = -1;

/// Events on their way, on either side of the link. Not for several threads at once.
///
/// Motion is a level: a sample that hasn't gone out yet is overwritten by the next one, which takes its place in
/// the order. Only a release (six zeros) isn't overwritten by the deflection after it: it goes out first, so that
/// whoever counts movements sees the movement end. All other events go out one by one, in order.
///
/// It holds two samples and kMaxEvents other events at most. A reader that is so far behind isn't coming back; the
/// owner of the queue then ends the connection rather than lose events silently.
class EventQueue {
public:
  static constexpr std::size_t kMaxEvents = 65536;

  void addMotion(const Axes& axes);
  /// Returns false, and drops the event, if the queue is full.
  bool add(std::int32_t code);
  /// Removes the oldest event. Returns false if there is none.
  bool take(Event& event);

  bool isEmpty() const { return !mHasMotion && mEvents.empty(); }
  /// Number of events other than motion.
  std::size_t size() const { return mEvents.size(); }

private:
  /// Arrival and code of each.
  std::deque<std::pair<std::uint64_t, std::int32_t>> mEvents;
  std::uint64_t mArrivals = 0;
  bool mHasMotion = false;
  /// A release is due before mNewest.
  bool mHasRelease = false;
  Axes mNewest{};
  /// Arrival of the first sample that waits.
  std::uint64_t mMotionArrival = 0;
};

} // namespace devlink

#endif
