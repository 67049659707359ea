#include "event_queue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using devlink::Axes;
using devlink::Event;
using devlink::EventQueue;
using testing::ElementsAre;

namespace {

Axes push(int z) {
  return {0, 0, static_cast<std::int16_t>(z), 0, 0, 0};
}

/// What the queue gives until it is empty: "z" of a sample, "#code" of any other event.
std::vector<std::string> drained(EventQueue& queue) {
  std::vector<std::string> found;
  Event event;
  while (queue.take(event))
    found.push_back(event.mCode < 0 ? std::to_string(event.mAxes[2]) : "#" + std::to_string(event.mCode));
  return found;
}

TEST(EventQueueTest, theNewestSampleTakesThePlaceOfTheOneThatWaits) {
  EventQueue queue;
  queue.add(1);
  queue.addMotion(push(100));
  queue.add(2);
  queue.addMotion(push(200));
  queue.addMotion(push(300));
  EXPECT_THAT(drained(queue), ElementsAre("#1", "300", "#2"));
  EXPECT_TRUE(queue.isEmpty());
  queue.addMotion(push(5));
  EXPECT_THAT(drained(queue), ElementsAre("5"));
}

TEST(EventQueueTest, aReleaseIsNeverOverwrittenByTheNextDeflection) {
  EventQueue queue;
  queue.addMotion(push(100));
  queue.addMotion(push(0));
  queue.addMotion(push(200));
  queue.addMotion(push(300));
  queue.add(1);
  EXPECT_THAT(drained(queue), ElementsAre("0", "300", "#1"));
  for (int z : {100, 0, 200, 0, 300, 0})
    queue.addMotion(push(z));
  EXPECT_THAT(drained(queue), ElementsAre("0"));
  // A release that has gone out doesn't come back with the next sample.
  queue.addMotion(push(7));
  EXPECT_THAT(drained(queue), ElementsAre("7"));
}

TEST(EventQueueTest, holdsSoManyEventsAndRefusesTheNext) {
  EventQueue queue;
  for (std::size_t i = 0; i < EventQueue::kMaxEvents; ++i)
    ASSERT_TRUE(queue.add(static_cast<std::int32_t>(i)));
  EXPECT_FALSE(queue.add(-7));
  queue.addMotion(push(9)); // motion needs no room
  const auto found = drained(queue);
  ASSERT_EQ(found.size(), EventQueue::kMaxEvents + 1);
  EXPECT_EQ(found[EventQueue::kMaxEvents - 1], "#65535");
}

} // namespace
