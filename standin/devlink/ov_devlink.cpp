#include "ov_devlink.h"

#include "link.h"

#include "call_log.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <thread>

// Each function but ovFetchEvent reports itself to the journal of calls. That one is called as often as the
// link and the clock decide, and would make counts of calls depend on them. The trace knows all of them, with
// what ovFetchEvent and ovGetAdvancedSettings delivered.

namespace {

using devlink::Bytes;
using devlink::Event;
using devlink::FrameReader;
using devlink::FrameWriter;
using devlink::Kind;
using devlink::Link;
using std::chrono::milliseconds;

constexpr int kSuccess = 0;
constexpr int kFailure = -1;

/// How long ovFetchEvent waits for a link to appear.
constexpr milliseconds kNoLinkWait{100};
/// How long the unloading waits for a lock, which a thread that was ended by force may hold for good.
constexpr milliseconds kUnloadWait{100};

/// The library's whole state. Locks are taken in this order: its own, then the link's.
struct Client {
  std::mutex mMutex;
  std::condition_variable mIsLinked; ///< a link has come up
  std::shared_ptr<Link> mLinkP;      ///< opening, up, or broken and not closed yet; null otherwise
};

/// A thread may still be in the library while the process ends, so the state isn't destroyed: its memory is
/// part of the library's, and goes with it.
Client& client() {
  alignas(Client) static unsigned char memory[sizeof(Client)];
  static Client* const only = new (memory) Client;
  return *only;
}

/// Closes a link that the program has left open, when library or process end.
struct CloserAtUnload {
  ~CloserAtUnload() {
    Client& state = client();
    std::unique_lock<std::mutex> lock(state.mMutex, std::try_to_lock);
    for (int waited = 0; !lock.owns_lock() && waited < kUnloadWait.count(); ++waited) {
      std::this_thread::sleep_for(milliseconds(1));
      if (lock.try_lock())
        break;
    }
    if (lock.owns_lock() && state.mLinkP) {
      state.mLinkP->closeIfUnlocked();
      state.mLinkP.reset();
    }
  }
} gCloserAtUnload;

std::shared_ptr<Link> currentLink() {
  Client& state = client();
  const std::lock_guard<std::mutex> lock(state.mMutex);
  return state.mLinkP;
}

/// Reports the call and keeps exceptions inside, be they ours or ordered by a test.
/// out  what the trace shows behind the status, as it is after the call
template <class Operation, class... Out>
int guarded(const char* name, Operation operation, const Out&... out) {
  try {
    call_log::Call call(name);
    const bool isGood = !call.mustFail() && operation();
    return call.returns(isGood ? kSuccess : kFailure, out...);
  } catch (...) {
    return kFailure;
  }
}

/// Asks the daemon over the current link, if there is one.
template <class AddArguments>
bool ask(Kind question, AddArguments addArguments, Kind answerKind, Bytes& answer) {
  const std::shared_ptr<Link> link = currentLink();
  return link && link->ask(question, addArguments, answerKind, answer);
}

FrameReader readerOf(const Bytes& answer, Kind kind) {
  devlink::Frame frame;
  frame.mKind = kind;
  frame.mPayloadP = answer.data();
  frame.mSize = answer.size();
  return FrameReader(frame);
}

/// Asks for one of the records of a device; false leaves the caller's record as it was.
template <std::size_t size> bool askRecord(Kind question, int deviceIndex, Kind answerKind, void* record) {
  Bytes answer;
  const auto addIndex = [deviceIndex](FrameWriter& frame) {
    frame.number32(static_cast<std::uint32_t>(deviceIndex));
  };
  if (!ask(question, addIndex, answerKind, answer))
    return false;
  FrameReader payload = readerOf(answer, answerKind);
  std::uint8_t found[size] = {};
  const std::int32_t status = payload.signed32();
  payload.record(found, size);
  if (status != 0 || !payload.isGood())
    return false;
  if (answerKind == Kind::info)
    found[size - 1] = 0; // the name ends inside the record, whatever the daemon says
  if (record)
    std::memcpy(record, found, size);
  return true;
}

/// A link may have ended without anybody having noticed: nobody reads it between the calls.
bool isAlive(Link& link) {
  Bytes ignored;
  return link.ask(
      Kind::askDevices, [](FrameWriter&) {}, Kind::devices, ignored);
}

/// Puts a new link in the place of the given one, or of none; null if another thread was quicker.
std::shared_ptr<Link> replace(const std::shared_ptr<Link>& old) {
  const auto link = std::make_shared<Link>();
  {
    Client& state = client();
    const std::lock_guard<std::mutex> lock(state.mMutex);
    if (state.mLinkP != old)
      return nullptr;
    state.mLinkP = link;
  }
  if (old)
    old->close();
  return link;
}

bool connect(std::uint16_t port, const std::string& clientName) {
  std::shared_ptr<Link> link;
  while (!link) {
    const std::shared_ptr<Link> old = currentLink();
    if (old && old->isOpening())
      return old->awaitOpen(); // another thread is at it
    if (old && isAlive(*old))
      return true;
    link = replace(old);
  }
  const bool isOpen = link->open(port, clientName); // ovDisconnect can end the attempt
  Client& state = client();
  const std::lock_guard<std::mutex> lock(state.mMutex);
  if (isOpen)
    state.mIsLinked.notify_all();
  else if (state.mLinkP == link)
    state.mLinkP.reset();
  return isOpen;
}

template <class Value> void put(Value* target, Value value) {
  if (target)
    *target = value;
}

} // namespace

int ovConnect(int, const char* clientName) {
  return guarded("ovConnect", [&] {
    if (!clientName || !*clientName || !devlink::isText(clientName, devlink::kMaxNameBytes))
      return false;
    const char* wanted = std::getenv(devlink::kPortVariable);
    const std::uint16_t port = wanted && *wanted ? devlink::portFrom(wanted) : devlink::kDefaultPort;
    return port != 0 && connect(port, clientName);
  });
}

int ovDisconnect() {
  return guarded("ovDisconnect", [] {
    Client& state = client();
    std::shared_ptr<Link> link;
    {
      const std::lock_guard<std::mutex> lock(state.mMutex);
      link.swap(state.mLinkP);
    }
    if (link)
      link->close();
    return link != nullptr;
  });
}

int ovGetDevNum(int* deviceCount, int* unused1, int* unused2) {
  return guarded("ovGetDevNum", [&] {
    Bytes answer;
    if (!ask(
            Kind::askDevices, [](FrameWriter&) {}, Kind::devices, answer))
      return false;
    FrameReader payload = readerOf(answer, Kind::devices);
    const std::int32_t count = payload.signed32();
    if (!payload.isGood() || count < 0 || count > devlink::kMaxDevices)
      return false;
    put(deviceCount, static_cast<int>(count));
    put(unused1, 0);
    put(unused2, 0);
    return true;
  });
}

int ovGetDevInfo(int deviceIndex, void* record96) {
  return guarded("ovGetDevInfo", [&] {
    return askRecord<devlink::kInfoBytes>(Kind::askInfo, deviceIndex, Kind::info, record96);
  });
}

int ovGetAdvancedSettings(int deviceIndex, void* record148) {
  std::int32_t rotationCode = 0;
  bool isZoomAfterView = false;
  const auto askSettings = [&] {
    char record[devlink::kSettingsBytes] = {};
    if (!askRecord<devlink::kSettingsBytes>(Kind::askSettings, deviceIndex, Kind::settings, record))
      return false;
    std::memcpy(&rotationCode, record + devlink::kSettingsRotationOffset, sizeof rotationCode);
    isZoomAfterView = record[devlink::kSettingsZoomOffset] != 0;
    if (record148)
      std::memcpy(record148, record, sizeof record);
    return true;
  };
  return guarded("ovGetAdvancedSettings", askSettings, rotationCode, isZoomAfterView);
}

int ovFetchEvent(int deviceIndex, short* x, short* y, short* z, short* a, short* b, short* c, int* unused1,
                 int* unused2, int* eventCode, int* unused3, int* unused4) {
  call_log::Traced call("ovFetchEvent");
  try {
    if (deviceIndex != 0) {
      std::this_thread::sleep_for(kNoLinkWait);
      return kFailure;
    }
    Client& state = client();
    std::shared_ptr<Link> link;
    {
      std::unique_lock<std::mutex> lock(state.mMutex);
      const auto canFetch = [&] { return state.mLinkP && state.mLinkP->canFetch(); };
      if (!canFetch() && !state.mIsLinked.wait_for(lock, kNoLinkWait, canFetch))
        return kFailure;
      link = state.mLinkP;
    }
    Event event;
    if (!link->fetch(event))
      return kFailure;
    short* const axes[] = {x, y, z, a, b, c};
    for (std::size_t i = 0; i < event.mAxes.size(); ++i)
      put(axes[i], static_cast<short>(event.mAxes[i]));
    put(eventCode, static_cast<int>(event.mCode));
    for (int* unused : {unused1, unused2, unused3, unused4})
      put(unused, 0);
    const auto& v = event.mAxes;
    return call.returns(kSuccess, v[0], v[1], v[2], v[3], v[4], v[5], event.mCode);
  } catch (...) {
    return kFailure;
  }
}

int ovSetApplMode(const char* application, const char* mode) {
  return guarded("ovSetApplMode", [&] {
    if (!application || !mode || !devlink::isText(application, devlink::kMaxModeBytes) ||
        !devlink::isText(mode, devlink::kMaxModeBytes))
      return false;
    Bytes answer;
    if (!ask(
            Kind::setMode, [&](FrameWriter& frame) { frame.text(application).text(mode); }, Kind::modeTaken,
            answer))
      return false;
    FrameReader payload = readerOf(answer, Kind::modeTaken);
    return payload.signed32() == 0 && payload.isGood();
  });
}
