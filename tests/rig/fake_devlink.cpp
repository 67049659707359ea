#include "fake_devlink.h"

#include <chrono>
#include <cstring>
#include <set>
#include <stdexcept>

#include <ov_devlink.h>

using namespace std::chrono_literals;
using fake_devlink::Event;
using fake_devlink::Failure;
using fake_devlink::Fake;
using fake_devlink::State;

Fake& fake_devlink::fake() {
  static Fake* const fakeP = new Fake; // reading threads may outlive static objects
  return *fakeP;
}

void fake_devlink::reset() {
  *state() = State();
}

void fake_devlink::pushMotion(const std::array<short, 6>& axes, std::int32_t code) {
  state()->events.push_back({axes, code});
}

void fake_devlink::pushEvent(std::int32_t code) {
  pushMotion({}, code);
}

bool fake_devlink::waitUntilTaken() {
  std::unique_lock<std::mutex> lock(fake().mutex);
  return fake().changed.wait_for(lock, 5s, [] { return fake().events.empty() && fake().isFetchWaiting; });
}

namespace {

/// Notes a call and returns whether it must fail. For the holder of the mutex.
bool mustFail(State& state, const std::string& function, const std::string& arguments = {}) {
  static const std::set<std::string> kAtAnyTime = {"ovFetchEvent", "ovGetDevNum", "ovSetApplMode"};
  ++state.counts[function];
  if (kAtAnyTime.count(function) == 0)
    state.calls.push_back(function + arguments);
  const auto found = state.failures.find(function);
  if (found == state.failures.end() || found->second.skip-- > 0)
    return false;
  const bool isThrow = found->second.isThrow;
  if (--found->second.count == 0)
    state.failures.erase(found);
  if (isThrow)
    throw std::runtime_error(function);
  return true;
}

/// A function of the library that needs a daemon. The action returns whether it succeeds.
template <class Action> int call(const char* function, const std::string& arguments, const Action& action) {
  const fake_devlink::Locked locked;
  return mustFail(*locked, function, arguments) || !locked->isPresent || !action(*locked);
}

} // namespace

extern "C" {

int ovConnect(int, const char* clientName) {
  return call("ovConnect", std::string(" ") + clientName, [](State& s) { return s.isLinkUp = true; });
}

int ovDisconnect() {
  const fake_devlink::Locked locked;
  locked->isLinkUp = false; // also if it fails: nobody stays blocked
  return mustFail(*locked, "ovDisconnect");
}

int ovGetDevNum(int* deviceCount, int*, int*) {
  return call("ovGetDevNum", {}, [deviceCount](const State& s) {
    *deviceCount = s.deviceCount;
    return s.isLinkUp;
  });
}

int ovGetDevInfo(int deviceIndex, void* record96) {
  return call("ovGetDevInfo", " " + std::to_string(deviceIndex), [record96](const State&) {
    std::memset(record96, 0, 96);
    return std::memcpy(static_cast<char*>(record96) + 20, "Orvaner fake", 13);
  });
}

int ovGetAdvancedSettings(int deviceIndex, void* record148) {
  return call("ovGetAdvancedSettings", " " + std::to_string(deviceIndex), [record148](const State& s) {
    std::memset(record148, 0x55, 148); // what isn't read may hold anything
    static_cast<char*>(record148)[138] = s.zoomAllAfterView ? 1 : 0;
    return std::memcpy(static_cast<char*>(record148) + 132, &s.rotation, 4);
  });
}

int ovFetchEvent(int, short* x, short* y, short* z, short* a, short* b, short* c, int*, int*, int* eventCode,
                 int*, int*) {
  const call_log::Entered standIn(call_log::Code::StandIn);
  Fake& f = fake_devlink::fake();
  std::unique_lock<std::mutex> lock(f.mutex);
  if (mustFail(f, "ovFetchEvent"))
    return 1;
  f.isFetchWaiting = f.events.empty();
  f.changed.notify_all();
  if (f.isLinkUp)
    f.changed.wait(lock, [&f] { return !f.events.empty() || !f.isLinkUp; });
  else
    f.changed.wait_for(lock, 20ms, [&f] { return !f.events.empty(); });
  f.isFetchWaiting = false;
  if (f.events.empty())
    return 1;
  const Event event = f.events.front();
  f.events.pop_front();
  std::size_t i = 0;
  for (short* const axis : {x, y, z, a, b, c})
    *axis = event.axes.at(i++);
  *eventCode = event.code;
  return 0;
}

int ovSetApplMode(const char* application, const char* mode) {
  return call("ovSetApplMode", {}, [&](State& s) {
    s.modes.push_back(application == std::string("AutoCAD") ? mode : application);
    return true;
  });
}

} // extern "C"
