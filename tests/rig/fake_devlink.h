#ifndef FAKE_DEVLINK_H
#define FAKE_DEVLINK_H

#include <array>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "call_log.h"

/// The device library in memory: the same seven functions, with a daemon that tests script. Linked in the
/// real library's place. Everything may be called on any thread.
namespace fake_devlink {

struct Event {
  std::array<short, 6> axes{};
  std::int32_t code = 0;
};

/// After `skip` more calls the next `count` fail or throw.
struct Failure {
  int count = 1, skip = 0;
  bool isThrow = false;
};

/// State of the scripted daemon: what it answers and sends, and the calls that it got.
struct State {
  bool isPresent = true; // if not, all but ovDisconnect fail
  bool isLinkUp = false;
  int deviceCount = 1;
  std::int32_t rotation = 0;
  bool zoomAllAfterView = false;
  std::deque<Event> events; // for ovFetchEvent
  std::map<std::string, Failure> failures;
  /// As in "ovConnect acad", without ovFetchEvent, ovGetDevNum and ovSetApplMode, which come at any time.
  std::vector<std::string> calls;
  std::map<std::string, int> counts; // of the calls of each function
  std::vector<std::string> modes;    // announced with success
};

struct Fake : State {
  std::mutex mutex;
  std::condition_variable changed;
  bool isFetchWaiting = false;
};
Fake& fake();

/// The fake's state, locked until the statement's end. Waiting threads are then woken.
struct Locked {
  ~Locked() { fake().changed.notify_all(); }
  State* operator->() const { return &fake(); }
  State& operator*() const { return fake(); }
  const call_log::Entered mEntered{call_log::Code::StandIn};
  const std::lock_guard<std::mutex> mLock{fake().mutex};
};
inline Locked state() {
  return {};
}

inline void fail(const std::string& function, const Failure& failure = {}) {
  state()->failures[function] = failure;
}

/// Resets to a daemon that is there, with one device, rotation code 0 and no event; clears all records.
void reset();
/// Queues an event for ovFetchEvent.
void pushMotion(const std::array<short, 6>& axes, std::int32_t code = -1);
void pushEvent(std::int32_t code);
/// Waits until the reading loop has taken all events and asks for more. Returns false after some seconds.
bool waitUntilTaken();

} // namespace fake_devlink

#endif
