// The road of an event: from the daemon to the shared event state, and on to a view that has moved.

#include "bench.h"

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sched.h>
#include <semaphore.h>
#include <sys/socket.h>
#include <unistd.h>

#include "daemon.h"
#include "host.h"
#include "surroundings.h"

namespace bench {

namespace {

using Clock = std::chrono::steady_clock;
using Moments = std::vector<Clock::time_point>;

constexpr int kEvents = 2000;
constexpr int kBatch = 20;             // events, or round trips, of one go
constexpr int kLargest = 1000;         // device counts; samples begin anew behind it
constexpr int kWarmUp = 50;            // events that aren't measured
constexpr std::size_t kPingBytes = 17; // what a motion sample takes on the wire
constexpr double kStepOfOne = 0.005;   // what one count shifts a fresh view by in one pass

double nanoseconds(Clock::duration d) {
  return std::chrono::duration<double, std::nano>(d).count();
}

/// When the reading thread had written a sample to the shared state and came back for the next one: noted in
/// front of the device library, through which the linker leads the engine's calls.
struct Noted {
  Noted() { sem_init(&arrived, 0, 0); }

  std::atomic<int> awaited{0}; // x axis of the sample, either sign; 0: none
  Clock::time_point moment;
  sem_t arrived;
};

Noted& noted() {
  static Noted sNoted;
  return sNoted;
}

/// A daemon inside this process, on a port of its own, and the engine made anew, so that it connects at once.
class DaemonHere {
public:
  DaemonHere() {
    stopEngine();
    devlink::DaemonOptions options;
    options.mPort = 0;
    options.mRecord = [this](const std::string& text) {
      if (text.find(" motion ") != std::string::npos)
        mSent = Clock::now();
    };
    mDaemonP = std::make_unique<devlink::Daemon>(std::move(options));
    setenv("OV_DEVLINK_PORT", std::to_string(mDaemonP->port()).c_str(), 1);
    mThread = std::thread([this] { mDaemonP->run(); });
    plugin();
  }
  ~DaemonHere() {
    mDaemonP->stop();
    mThread.join();
    stopEngine();
    setenv("OV_DEVLINK_PORT", kNoDaemon, 1);
  }

  /// Sends a sample and waits until it is in the shared state. Gives nanoseconds from the daemon to there.
  double send(int x) {
    session::Action action;
    action.mVerb = session::Verb::motion;
    action.mAxes[0] = static_cast<std::int16_t>(x);
    noted().awaited = x;
    mDaemonP->enqueue(action); // with nobody to wake behind it who would be in the reading thread's way
    if (x == 0)
      return 0;
    sem_wait(&noted().arrived);
    return nanoseconds(noted().moment - mSent);
  }

  Clock::time_point mSent; // of the last sample, when it left for the client

private:
  std::unique_ptr<devlink::Daemon> mDaemonP;
  std::thread mThread;
};

/// A bare loopback connection.
struct Connection {
  Connection() {
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const addressP = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener, addressP, size) != 0 || listen(listener, 1) != 0 ||
        getsockname(listener, addressP, &size) != 0)
      std::abort();
    near = socket(AF_INET, SOCK_STREAM, 0);
    if (connect(near, addressP, size) != 0)
      std::abort();
    far = accept(listener, nullptr, nullptr);
    close(listener);
    const int on = 1;
    for (const int end : {near, far})
      setsockopt(end, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  }
  ~Connection() {
    close(near);
    close(far);
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  static void put(int end) {
    const char text[kPingBytes] = {};
    ::send(end, text, sizeof text, MSG_NOSIGNAL);
  }
  static bool get(int end) {
    char text[kPingBytes];
    return recv(end, text, sizeof text, MSG_WAITALL) == static_cast<ssize_t>(sizeof text);
  }

  int near = -1;
  int far = -1;
};

/// A connection with a thread at its far end that sends back what comes.
class Echo {
public:
  Echo() {
    mThread = std::thread([this] {
      while (Connection::get(mConnection.far))
        Connection::put(mConnection.far);
    });
  }
  ~Echo() {
    shutdown(mConnection.near, SHUT_RDWR);
    mThread.join();
  }

  /// Nanoseconds of a round trip.
  double trip() {
    const Clock::time_point start = Clock::now();
    Connection::put(mConnection.near);
    if (!Connection::get(mConnection.near))
      std::abort();
    return nanoseconds(Clock::now() - start);
  }

private:
  Connection mConnection;
  std::thread mThread;
};

/// A connection whose near end belongs to a thread that is woken to send, as the daemon is, and whose far end
/// belongs to one that waits, as the reading thread does.
class Road {
public:
  Road() {
    for (sem_t* const semaphoreP : {&mToSend, &mArrived})
      sem_init(semaphoreP, 0, 0);
    mSender = std::thread([this] {
      while (sem_wait(&mToSend) == 0 && !mIsDone) {
        mSent = Clock::now();
        Connection::put(mConnection.near);
      }
    });
    mReceiver = std::thread([this] {
      while (Connection::get(mConnection.far)) {
        mReceived = Clock::now();
        sem_post(&mArrived);
      }
    });
  }
  ~Road() {
    mIsDone = true;
    sem_post(&mToSend);
    mSender.join();
    shutdown(mConnection.near, SHUT_RDWR);
    mReceiver.join();
  }

  /// Nanoseconds from one thread to the other.
  double oneWay() {
    sem_post(&mToSend);
    sem_wait(&mArrived);
    return nanoseconds(mReceived - mSent);
  }

private:
  Connection mConnection;
  sem_t mToSend, mArrived;
  std::atomic<bool> mIsDone{false};
  Clock::time_point mSent, mReceived;
  std::thread mSender, mReceiver;
};

/// Keeps this thread, and all that it starts, on one core as long as it lives. Where sender and receiver have
/// a core each, the receiver's has gone to sleep, and waking it takes anything from 2 to 25 microseconds on
/// top of what is measured, for one side of a pair and not for the other.
class OneCore {
public:
  OneCore() {
    sched_getaffinity(0, sizeof mBefore, &mBefore);
    cpu_set_t one;
    CPU_ZERO(&one);
    int core = CPU_SETSIZE - 1; // the last one: the first serves most of the machine's interrupts
    while (core > 0 && !CPU_ISSET(core, &mBefore))
      --core;
    CPU_SET(core, &one);
    sched_setaffinity(0, sizeof one, &one);
  }
  ~OneCore() { sched_setaffinity(0, sizeof mBefore, &mBefore); }
  OneCore(const OneCore&) = delete;
  OneCore& operator=(const OneCore&) = delete;

private:
  cpu_set_t mBefore;
};

/// Events in turns with what they are compared with.
Result eventAgainst(const char* reference, const std::function<double()>& bareRoad) {
  DaemonHere daemon;
  std::vector<double> roads, bare, ratios;
  int x = 0;
  for (int pair = -kWarmUp / kBatch; pair < kEvents / kBatch; ++pair) {
    std::vector<double> own, other;
    for (int i = 0; i < kBatch; ++i)
      own.push_back(daemon.send(1 + x++ % kLargest));
    for (int i = 0; i < kBatch; ++i)
      other.push_back(bareRoad());
    if (pair < 0)
      continue;
    roads.push_back(median(own));
    bare.push_back(median(other));
    ratios.push_back(roads.back() / bare.back());
  }
  return {"an event from the daemon to the shared state",
          reference,
          "ns",
          median(roads),
          median(bare),
          median(ratios),
          1.5,
          false};
}

/// The main thread makes passes all the time, another one sends. Each sample shifts the view by its own step,
/// so that a frame tells which sample it shows.
Result eventToView() {
  DaemonHere daemon;
  setQuietLog();
  host::reset(); // looks along world z: the cap moves it along world x
  Noted shown;   // the same for the view
  double lastX = 0;
  std::int64_t passes = 0;
  host::setFrameSink([&](const host::Frame& frame) {
    const double step = frame.view.target.x - lastX;
    lastX = frame.view.target.x;
    ++passes;
    const int awaited = shown.awaited;
    if (awaited == 0 || std::abs(awaited) != std::lround(std::fabs(step) / kStepOfOne))
      return;
    shown.moment = Clock::now();
    shown.awaited = 0;
    sem_post(&shown.arrived);
  });
  std::vector<double> roads, views;
  std::atomic<bool> isDone{false};
  std::thread sender([&] {
    for (int i = -kWarmUp; i < kEvents; ++i) {
      const int x = 1 + (i + kWarmUp) % kLargest;
      const int signedX = i % 2 == 0 ? x : -x; // forth and back
      shown.awaited = signedX;
      const double road = daemon.send(signedX);
      sem_wait(&shown.arrived);
      if (i < 0)
        continue;
      roads.push_back(road);
      views.push_back(nanoseconds(shown.moment - daemon.mSent));
    }
    daemon.send(0);
    isDone = true;
  });
  const Clock::time_point start = Clock::now();
  while (!isDone)
    engine().doTransform();
  const double pass = nanoseconds(Clock::now() - start) / static_cast<double>(passes);
  sender.join();
  setSample(0, 0, 0, 0, 0, 0);
  engine().handleDeviceCap();
  host::setFrameSink(nullptr);
  std::vector<double> bare, ratios;
  for (std::size_t i = 0; i < roads.size(); ++i) {
    bare.push_back(roads[i] + pass);
    ratios.push_back(views[i] / bare.back());
  }
  return {"an event to a moved view while the cap moves",
          "the same event's road to the state, and a pass",
          "ns",
          median(views),
          median(bare),
          median(ratios),
          1.2,
          false};
}

} // namespace

void addDeviceRows() {
  add("an event from the daemon to the shared state", [] {
    const OneCore oneCore;
    Echo echo;
    return eventAgainst("a bare loopback round trip, halved", [&echo] { return echo.trip() / 2; });
  });
  add("an event from the daemon to the shared state, one way", [] {
    const OneCore oneCore;
    Road road;
    Result result = eventAgainst("a bare message to a waiting thread, sent by a woken one",
                                 [&road] { return road.oneWay(); });
    result.what += ", one way";
    return result;
  });
  add("an event to a moved view while the cap moves", eventToView);
}

} // namespace bench

extern "C" {

int __real_ovFetchEvent(int, short*, short*, short*, short*, short*, short*, int*, int*, int*, int*, int*);
int __wrap_ovFetchEvent(int, short*, short*, short*, short*, short*, short*, int*, int*, int*, int*, int*);

int __wrap_ovFetchEvent(int device, short* x, short* y, short* z, short* a, short* b, short* c, int* unused1,
                        int* unused2, int* code, int* unused3, int* unused4) {
  bench::Noted& noted = bench::noted();
  thread_local int sLast = 0;
  if (sLast != 0 && sLast == noted.awaited) {
    noted.moment = bench::Clock::now();
    noted.awaited = 0;
    sem_post(&noted.arrived);
  }
  const int status = __real_ovFetchEvent(device, x, y, z, a, b, c, unused1, unused2, code, unused3, unused4);
  sLast = status == 0 && *code < 0 ? *x : 0;
  return status;
}

} // extern "C"
