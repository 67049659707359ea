#include "fake_devlink.h"

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <stdexcept>

#include <ov_devlink.h>

#include "call_log.h"

namespace {

using namespace std::chrono_literals;

struct Event {
  std::array<short, 6> axes{};
  std::int32_t code = 0;
};

struct Failure {
  int skip = 0;
  int count = 0;
  bool isThrow = false;
};

/// What reset() makes anew.
struct State {
  bool isPresent = true;
  bool isLinkUp = false;
  int deviceCount = 1;
  std::int32_t rotation = 0;
  bool zoomAllAfterView = false;
  std::deque<Event> events;
  std::map<std::string, Failure> failures;
  std::map<std::string, int> counts;
  std::vector<std::string> calls;
  std::vector<std::string> modes;
};

struct FakeDevlink : State {
  std::mutex mutex;
  std::condition_variable changed;
  bool isFetchWaiting = false;

  /// For the holder of the mutex. True: the call has to fail.
  bool enter(const std::string& function, const std::string& arguments, bool isNoted = true) {
    ++counts[function];
    if (isNoted)
      calls.push_back(arguments.empty() ? function : function + " " + arguments);
    Failure& failure = failures[function];
    if (failure.count == 0)
      return false;
    if (failure.skip > 0) {
      --failure.skip;
      return false;
    }
    --failure.count;
    if (failure.isThrow)
      throw std::runtime_error(function);
    return true;
  }
};

FakeDevlink& fake() {
  static FakeDevlink* const fakeP = new FakeDevlink; // reading threads may outlive static objects
  return *fakeP;
}

using call_log::Code;
using call_log::Entered;

/// The fake, nobody else's until the statement's end.
struct Held {
  FakeDevlink* operator->() const { return &fake(); }
  const Entered mEntered{Code::StandIn};
  const std::lock_guard<std::mutex> mLock{fake().mutex};
};

/// A function of the library that needs a daemon.
template <class Action> int call(const char* function, const std::string& arguments, const Action& action) {
  const Held held;
  if (fake().enter(function, arguments) || !fake().isPresent)
    return 1;
  action(fake());
  return 0;
}

} // namespace

namespace fake_devlink {

void reset() {
  const Held held;
  static_cast<State&>(fake()) = State();
  fake().changed.notify_all();
}

void setPresent(bool isPresent) {
  const Held held;
  held->isPresent = isPresent;
  held->isLinkUp = held->isLinkUp && isPresent;
  held->changed.notify_all();
}

void setDeviceCount(int count) {
  Held()->deviceCount = count;
}

void setRotation(std::int32_t code, bool zoomAllAfterView) {
  const Held held;
  held->rotation = code;
  held->zoomAllAfterView = zoomAllAfterView;
}

void pushMotion(const std::array<short, 6>& axes, std::int32_t code) {
  const Held held;
  held->events.push_back({axes, code});
  held->changed.notify_all();
}

void pushEvent(std::int32_t code) {
  pushMotion({}, code);
}

bool waitUntilTaken() {
  FakeDevlink& t = fake();
  std::unique_lock<std::mutex> lock(t.mutex);
  return t.changed.wait_for(lock, 5s, [&t] { return t.events.empty() && t.isFetchWaiting; });
}

void fail(const std::string& function, int count, int skip, bool isThrow) {
  Held()->failures[function] = Failure{skip, count, isThrow};
}

std::vector<std::string> calls() {
  return Held()->calls;
}

int callCount(const std::string& function) {
  return Held()->counts[function];
}

std::vector<std::string> modes() {
  return Held()->modes;
}

} // namespace fake_devlink

extern "C" {

int ovConnect(int, const char* clientName) {
  return call("ovConnect", clientName, [](FakeDevlink& t) { t.isLinkUp = true; });
}

int ovDisconnect() {
  const Held held;
  held->isLinkUp = false; // a failure is told, yet nobody stays blocked
  held->changed.notify_all();
  return held->enter("ovDisconnect", "") ? 1 : 0;
}

int ovGetDevNum(int* deviceCount, int*, int*) {
  const Held held;
  if (held->enter("ovGetDevNum", "", false) || !held->isPresent || !held->isLinkUp)
    return 1;
  *deviceCount = held->deviceCount;
  return 0;
}

int ovGetDevInfo(int deviceIndex, void* record96) {
  return call("ovGetDevInfo", std::to_string(deviceIndex), [record96](FakeDevlink&) {
    std::memset(record96, 0, 96);
    std::memcpy(static_cast<char*>(record96) + 20, "Orvaner fake", 13);
  });
}

int ovGetAdvancedSettings(int deviceIndex, void* record148) {
  return call("ovGetAdvancedSettings", std::to_string(deviceIndex), [record148](const FakeDevlink& t) {
    std::memset(record148, 0x55, 148); // what isn't read may hold anything
    std::memcpy(static_cast<char*>(record148) + 132, &t.rotation, 4);
    static_cast<char*>(record148)[138] = t.zoomAllAfterView ? 1 : 0;
  });
}

int ovFetchEvent(int, short* x, short* y, short* z, short* a, short* b, short* c, int*, int*, int* eventCode,
                 int*, int*) {
  const Entered standIn(Code::StandIn);
  FakeDevlink& t = fake();
  std::unique_lock<std::mutex> lock(t.mutex);
  if (t.enter("ovFetchEvent", "", false))
    return 1;
  t.isFetchWaiting = t.events.empty();
  t.changed.notify_all();
  if (t.isLinkUp)
    t.changed.wait(lock, [&t] { return !t.events.empty() || !t.isLinkUp; });
  else
    t.changed.wait_for(lock, 20ms, [&t] { return !t.events.empty(); });
  t.isFetchWaiting = false;
  if (t.events.empty())
    return 1;
  const Event event = t.events.front();
  t.events.pop_front();
  short* const axes[] = {x, y, z, a, b, c};
  for (std::size_t i = 0; i < event.axes.size(); ++i)
    *axes[i] = event.axes[i];
  *eventCode = event.code;
  return 0;
}

int ovSetApplMode(const char* application, const char* mode) {
  const Entered standIn(Code::StandIn);
  return call("ovSetApplMode", std::string(application) + " " + mode,
              [mode](FakeDevlink& t) { t.modes.push_back(mode); });
}

} // extern "C"
