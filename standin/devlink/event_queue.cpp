#include "event_queue.h"

namespace devlink {

namespace {
constexpr Axes kRelease{};
}

void EventQueue::addMotion(const Axes& axes) {
  if (!mHasMotion) {
    mMotionArrival = mArrivals;
    mHasRelease = false;
  } else if (mNewest == kRelease) {
    mHasRelease = true;
  }
  // A release that comes last makes an earlier one needless.
  if (axes == kRelease)
    mHasRelease = false;
  mNewest = axes;
  mHasMotion = true;
  ++mArrivals;
}

bool EventQueue::add(std::int32_t code) {
  if (mEvents.size() == kMaxEvents)
    return false;
  mEvents.emplace_back(mArrivals++, code);
  return true;
}

bool EventQueue::take(Event& event) {
  if (mHasMotion && (mEvents.empty() || mMotionArrival < mEvents.front().first)) {
    event.mCode = kMotionCode;
    event.mAxes = mHasRelease ? kRelease : mNewest;
    mHasMotion = mHasRelease;
    mHasRelease = false;
    return true;
  }
  if (mEvents.empty())
    return false;
  event.mCode = mEvents.front().second;
  event.mAxes = kRelease;
  mEvents.pop_front();
  return true;
}

} // namespace devlink
