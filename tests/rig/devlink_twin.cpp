#include "devlink_twin.h"

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <stdexcept>

#include <ov_devlink.h>

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

struct Twin {
  std::mutex mutex;
  std::condition_variable changed;
  bool isPresent = true;
  bool isLinkUp = false;
  int deviceCount = 1;
  std::int32_t rotation = 0;
  bool zoomAllAfterView = false;
  std::deque<Event> events;
  bool isFetchWaiting = false;
  std::map<std::string, Failure> failures;
  std::map<std::string, int> counts;
  std::vector<std::string> calls;
  std::vector<std::string> modes;

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

Twin& twin() {
  static Twin* const twinP = new Twin; // reading threads may outlive static objects
  return *twinP;
}

} // namespace

namespace devlink_twin {

void reset() {
  Twin& t = twin();
  const std::lock_guard<std::mutex> lock(t.mutex);
  t.isPresent = true;
  t.isLinkUp = false;
  t.deviceCount = 1;
  t.rotation = 0;
  t.zoomAllAfterView = false;
  t.events.clear();
  t.failures.clear();
  t.counts.clear();
  t.calls.clear();
  t.modes.clear();
  t.changed.notify_all();
}

void setPresent(bool isPresent) {
  Twin& t = twin();
  const std::lock_guard<std::mutex> lock(t.mutex);
  t.isPresent = isPresent;
  if (!isPresent)
    t.isLinkUp = false;
  t.changed.notify_all();
}

void setDeviceCount(int count) {
  const std::lock_guard<std::mutex> lock(twin().mutex);
  twin().deviceCount = count;
}

void setRotation(std::int32_t code, bool zoomAllAfterView) {
  const std::lock_guard<std::mutex> lock(twin().mutex);
  twin().rotation = code;
  twin().zoomAllAfterView = zoomAllAfterView;
}

void pushMotion(const std::array<short, 6>& axes, std::int32_t code) {
  const std::lock_guard<std::mutex> lock(twin().mutex);
  twin().events.push_back({axes, code});
  twin().changed.notify_all();
}

void pushEvent(std::int32_t code) {
  pushMotion({}, code);
}

bool waitUntilTaken() {
  Twin& t = twin();
  std::unique_lock<std::mutex> lock(t.mutex);
  return t.changed.wait_for(lock, 5s, [&t] { return t.events.empty() && t.isFetchWaiting; });
}

void fail(const std::string& function, int count, int skip, bool isThrow) {
  const std::lock_guard<std::mutex> lock(twin().mutex);
  twin().failures[function] = Failure{skip, count, isThrow};
}

std::vector<std::string> calls() {
  const std::lock_guard<std::mutex> lock(twin().mutex);
  return twin().calls;
}

int callCount(const std::string& function) {
  const std::lock_guard<std::mutex> lock(twin().mutex);
  return twin().counts[function];
}

std::vector<std::string> modes() {
  const std::lock_guard<std::mutex> lock(twin().mutex);
  return twin().modes;
}

} // namespace devlink_twin

extern "C" {

int ovConnect(int, const char* clientName) {
  Twin& t = twin();
  const std::lock_guard<std::mutex> lock(t.mutex);
  if (t.enter("ovConnect", clientName) || !t.isPresent)
    return 1;
  t.isLinkUp = true;
  return 0;
}

int ovDisconnect() {
  Twin& t = twin();
  const std::lock_guard<std::mutex> lock(t.mutex);
  t.isLinkUp = false; // a failure is told, yet nobody stays blocked
  t.changed.notify_all();
  return t.enter("ovDisconnect", "") ? 1 : 0;
}

int ovGetDevNum(int* deviceCount, int*, int*) {
  Twin& t = twin();
  const std::lock_guard<std::mutex> lock(t.mutex);
  if (t.enter("ovGetDevNum", "", false) || !t.isPresent || !t.isLinkUp)
    return 1;
  *deviceCount = t.deviceCount;
  return 0;
}

int ovGetDevInfo(int deviceIndex, void* record96) {
  Twin& t = twin();
  const std::lock_guard<std::mutex> lock(t.mutex);
  if (t.enter("ovGetDevInfo", std::to_string(deviceIndex)) || !t.isPresent)
    return 1;
  std::memset(record96, 0, 96);
  std::memcpy(static_cast<char*>(record96) + 20, "Orvaner twin", 13);
  return 0;
}

int ovGetAdvancedSettings(int deviceIndex, void* record148) {
  Twin& t = twin();
  const std::lock_guard<std::mutex> lock(t.mutex);
  if (t.enter("ovGetAdvancedSettings", std::to_string(deviceIndex)) || !t.isPresent)
    return 1;
  std::memset(record148, 0x55, 148); // what isn't read may hold anything
  std::memcpy(static_cast<char*>(record148) + 132, &t.rotation, 4);
  static_cast<char*>(record148)[138] = t.zoomAllAfterView ? 1 : 0;
  return 0;
}

int ovFetchEvent(int, short* x, short* y, short* z, short* a, short* b, short* c, int*, int*, int* eventCode,
                 int*, int*) {
  Twin& t = twin();
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
  *x = event.axes[0];
  *y = event.axes[1];
  *z = event.axes[2];
  *a = event.axes[3];
  *b = event.axes[4];
  *c = event.axes[5];
  *eventCode = event.code;
  return 0;
}

int ovSetApplMode(const char* application, const char* mode) {
  Twin& t = twin();
  const std::lock_guard<std::mutex> lock(t.mutex);
  if (t.enter("ovSetApplMode", std::string(application) + " " + mode) || !t.isPresent)
    return 1;
  t.modes.push_back(mode);
  return 0;
}

} // extern "C"
