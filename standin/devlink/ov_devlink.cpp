#include "ov_devlink.h"

#include "link.h"

#include "call_log.h"

#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <thread>

// Each function but ovFetchEvent writes to the journal of calls. How often that one is called depends on the link and
// the clock, so counts of calls would, too. The trace records all of them, with what ovFetchEvent and
// ovGetAdvancedSettings delivered.

namespace {

using devlink::Event;
using devlink::Kind;
using devlink::Link;
using devlink::MessageWriter;
using std::chrono::milliseconds;
using AddArguments = std::function<void(MessageWriter&)>;
using Clock = Link::Clock;

constexpr int kSuccess = 0;
constexpr int kFailure = -1;

constexpr milliseconds kOpenTimeout{1000};
constexpr milliseconds kRequestTimeout{500};
/// How long ovFetchEvent waits for a link to appear.
constexpr milliseconds kNoLinkWait{100};
/// With this number of waiting events a fetch no longer reads the socket for newer motion: they have to go out first.
constexpr std::size_t kEnoughEvents = 1024;

void addNothing(MessageWriter&) {}

/// The library's whole state, behind one lock. It has no thread: of the callers that wait for something, one reads
/// the socket for all of them, and the others wait until it has read something.
class Client {
public:
  bool connect(std::uint16_t port, const std::string& name);
  bool disconnect();
  bool fetch(Event& event);
  /// Asks the daemon, and waits for its answer.
  bool ask(Kind kind, const AddArguments& addArguments, Link::Question& answer);
  void closeAtUnload();

private:
  using Lock = std::unique_lock<std::mutex>;
  using LinkPointer = std::shared_ptr<Link>; // a thread that waits at a socket keeps it alive

  bool isFetchable() const {
    return mLinkP && (mLinkP->mState == Link::State::up || !mLinkP->mEvents.isEmpty());
  }
  template <class IsDone>
  bool waitFor(Lock& lock, const LinkPointer& link, Clock::time_point deadline, IsDone isDone);
  bool askOver(Lock& lock, const LinkPointer& link, Kind kind, const AddArguments& addArguments,
               Link::Question& answer);
  void close();

  std::mutex mMutex;
  std::condition_variable mChanged;
  /// Is opening, up, or broken and not closed yet; null otherwise.
  LinkPointer mLinkP;
  /// The last sample delivered wasn't a release.
  bool mIsDeflected = false;
};

/// Waits until isDone(), called with the lock held. Returns false at the deadline or at the link's end.
template <class IsDone>
bool Client::waitFor(Lock& lock, const LinkPointer& link, Clock::time_point deadline, IsDone isDone) {
  while (!isDone()) {
    if (link->mState == Link::State::down || Clock::now() >= deadline)
      return false;
    if (link->mIsAwaited) {
      if (deadline == Clock::time_point::max())
        mChanged.wait(lock);
      else
        mChanged.wait_until(lock, deadline);
      continue;
    }
    link->await(lock, false, deadline);
    link->read();
    mChanged.notify_all(); // something may be for the others, and one of them reads next
  }
  return true;
}

bool Client::connect(std::uint16_t port, const std::string& name) {
  Lock lock(mMutex);
  const auto deadline = Clock::now() + kOpenTimeout;
  while (const LinkPointer old = mLinkP) {
    if (old->mState == Link::State::opening) { // another thread is connecting
      mChanged.wait_until(lock, deadline, [&] { return old->mState != Link::State::opening; });
      return old->mState == Link::State::up;
    }
    Link::Question ignored; // nobody reads a link between the calls, so its end may not have been noticed
    if (askOver(lock, old, Kind::askDevices, addNothing, ignored))
      return true;
    if (mLinkP == old)
      close();
  }
  const auto link = std::make_shared<Link>();
  if (mIsDeflected)
    link->mEvents.addMotion({});
  mLinkP = link;
  link->connect(port);
  if (link->mState == Link::State::opening) {
    link->await(lock, true, deadline);
    link->greet(name);
    waitFor(lock, link, deadline, [&] { return link->mState != Link::State::opening; });
  }
  const bool isUp = link->mState == Link::State::up;
  if (!isUp && mLinkP == link)
    close();
  mChanged.notify_all();
  return isUp;
}

bool Client::disconnect() {
  const Lock lock(mMutex);
  const bool hasLink = mLinkP != nullptr;
  if (hasLink)
    close();
  return hasLink;
}

void Client::close() {
  mLinkP->mEvents = {};
  mLinkP->drop();
  mLinkP.reset();
  mChanged.notify_all();
}

bool Client::fetch(Event& event) {
  Lock lock(mMutex);
  if (!isFetchable() && !mIsDeflected)
    mChanged.wait_for(lock, kNoLinkWait, [this] { return isFetchable(); });
  const LinkPointer link = mLinkP;
  bool isFound = false;
  if (isFetchable()) {
    if (link->mState == Link::State::up && link->mEvents.size() < kEnoughEvents && !link->mIsAwaited)
      link->read(); // a newer sample may wait in the socket
    waitFor(lock, link, Clock::time_point::max(), [&] { return !link->mEvents.isEmpty(); });
    isFound = link->mEvents.take(event);
  }
  // With the link gone nobody would ever end the movement. A newer link has a release as its first event.
  if (!isFound && mIsDeflected && (!mLinkP || mLinkP == link)) {
    event = {devlink::kMotionCode, {}};
    isFound = true;
  }
  if (isFound && event.mCode == devlink::kMotionCode)
    mIsDeflected = event.mAxes != devlink::Axes{};
  return isFound;
}

bool Client::ask(Kind kind, const AddArguments& addArguments, Link::Question& answer) {
  Lock lock(mMutex);
  const LinkPointer link = mLinkP;
  return link && askOver(lock, link, kind, addArguments, answer);
}

bool Client::askOver(Lock& lock, const LinkPointer& link, Kind kind, const AddArguments& addArguments,
                     Link::Question& answer) {
  if (link->mState != Link::State::up)
    return false;
  const std::uint32_t number = link->ask(kind, addArguments);
  const Link::Question& question = link->mQuestions[number];
  waitFor(lock, link, Clock::now() + kRequestTimeout, [&] { return question.mIsAnswered; });
  answer = question;
  link->mQuestions.erase(number);
  return answer.mIsAnswered;
}

/// A thread that was ended by force may still hold the lock. The system closes the socket then.
void Client::closeAtUnload() {
  const Lock lock(mMutex, std::try_to_lock);
  if (lock.owns_lock() && mLinkP)
    close();
}

/// Returns the state. It is never destroyed, since a thread may still be in the library while the process ends; its
/// memory is part of the library's, and goes with it.
Client& client() {
  alignas(Client) static unsigned char memory[sizeof(Client)];
  static Client* const only = new (memory) Client;
  return *only;
}

/// Closes a link that the program has left open, when library or process end.
struct CloserAtUnload {
  ~CloserAtUnload() { client().closeAtUnload(); }
} gCloserAtUnload;

/// Reports the call and catches all exceptions, ours and those that a test has ordered.
/// out  what the trace shows after the status, as it is after the call
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

/// Asks for one of a device's records. On failure the caller's record isn't changed.
bool askRecord(Kind question, int deviceIndex, void* record) {
  Link::Question answer;
  const auto addIndex = [=](MessageWriter& message) {
    message.number32(static_cast<std::uint32_t>(deviceIndex));
  };
  if (!client().ask(question, addIndex, answer) || answer.mStatus != 0)
    return false;
  if (question == Kind::askInfo)
    answer.mRecord.back() = 0; // the name ends inside the record, whatever the daemon says
  if (record)
    std::memcpy(record, answer.mRecord.data(), answer.mRecord.size());
  return true;
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
    return port != 0 && client().connect(port, clientName);
  });
}

int ovDisconnect() {
  return guarded("ovDisconnect", [] { return client().disconnect(); });
}

int ovGetDevNum(int* deviceCount, int* unused1, int* unused2) {
  return guarded("ovGetDevNum", [&] {
    Link::Question answer;
    if (!client().ask(Kind::askDevices, addNothing, answer) || answer.mStatus > devlink::kMaxDevices)
      return false;
    put(deviceCount, static_cast<int>(answer.mStatus));
    put(unused1, 0);
    put(unused2, 0);
    return true;
  });
}

int ovGetDevInfo(int deviceIndex, void* record96) {
  return guarded("ovGetDevInfo", [&] { return askRecord(Kind::askInfo, deviceIndex, record96); });
}

int ovGetAdvancedSettings(int deviceIndex, void* record148) {
  std::int32_t rotationCode = 0;
  bool isZoomAfterView = false;
  const auto askSettings = [&] {
    char record[devlink::kSettingsBytes] = {};
    if (!askRecord(Kind::askSettings, deviceIndex, record))
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
    Event event;
    if (!client().fetch(event))
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
    Link::Question answer;
    const auto addNames = [&](MessageWriter& message) { message.text(application).text(mode); };
    return client().ask(Kind::setMode, addNames, answer) && answer.mStatus == 0;
  });
}
