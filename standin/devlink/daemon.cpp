#include "daemon.h"

#include "peer.h"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <future>
#include <optional>
#include <utility>

namespace devlink {

namespace {

using asio::ip::tcp;
using session::Action;
using session::Verb;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr std::size_t kMaxPeers = 16;
/// Pause before the next attempt when a connection can't be taken or the port can't be had again.
constexpr std::chrono::milliseconds kRetryPause{100};
/// How long a daemon that has been away waits for its clients before it takes them for gone; they look every
/// 2 s.
constexpr std::chrono::seconds kReturnPatience{5};
/// How often play() looks whether there is still somebody who plays.
constexpr std::chrono::milliseconds kPlayCheck{50};

Clock::duration ticks(double seconds) {
  return std::chrono::duration_cast<Clock::duration>(Seconds(seconds));
}

std::string secondsText(double seconds) {
  char text[64];
  std::snprintf(text, sizeof text, "%.3f", seconds);
  return text;
}

std::string unixSeconds() {
  return secondsText(Seconds(std::chrono::system_clock::now().time_since_epoch()).count());
}

std::string motionText(const Axes& axes) {
  std::string text = "motion";
  for (const std::int16_t axis : axes)
    text += " " + std::to_string(axis);
  return text;
}

/// Calls the action after a while, unless the timer is set anew before.
template <class After> void wait(asio::steady_timer& timer, Clock::duration length, After action) {
  timer.expires_after(length);
  timer.async_wait([action](const asio::error_code& cancelled) {
    if (!cancelled)
      action();
  });
}

} // namespace

class Daemon::Implementation : public PeerOwner {
public:
  explicit Implementation(DaemonOptions options);

  void run();
  void play(const Action& action);
  void endOfInput();

  const DeviceState& device() const override { return mDevice; }
  void onGreeted(Peer& peer) override;
  void onMode(const std::string& mode) override { report("mode: " + mode, "mode " + mode); }
  void onGone(Peer& peer, const std::string& reason) override;

  asio::io_context mIo;
  std::uint16_t mPort;

private:
  void listen();
  void accept();
  void startClock();
  void playDue();
  void goAway(double seconds);
  void comeBack();
  void dropAll(const std::string& reason);
  void checkEnd();
  void report(const std::string& said, const std::string& recorded);

  const DaemonOptions mOptions;
  tcp::acceptor mAcceptor{mIo};
  asio::signal_set mSignals{mIo};
  asio::steady_timer mActionTimer{mIo};
  asio::steady_timer mReturnTimer{mIo};
  asio::steady_timer mRetryTimer{mIo};
  std::vector<std::shared_ptr<Peer>> mPeers;
  DeviceState mDevice;
  std::optional<Axes> mCap; ///< empty until the first motion
  bool mIsRunning = false;  ///< the session's clock runs
  Clock::time_point mStart;
  std::size_t mNextAction = 0;
  bool mIsInputOver = false;
  bool mIsAwaited = false; ///< clients may still come: for the first time, or during and after an absence
};

Daemon::Implementation::Implementation(DaemonOptions options)
    : mPort(options.mPort), mOptions(std::move(options)), mIsAwaited(mOptions.mStartsOnConnect) {
  listen();
  mPort = mAcceptor.local_endpoint().port();
  accept();
  if (mOptions.mStopsAtSignals) {
    mSignals.add(SIGINT);
    mSignals.add(SIGTERM);
    mSignals.async_wait([this](const asio::error_code& error, int) {
      if (!error)
        mIo.stop();
    });
  }
}

void Daemon::Implementation::run() {
  if (!mOptions.mStartsOnConnect)
    startClock();
  checkEnd();
  mIo.run();
  asio::error_code ignored;
  mAcceptor.close(ignored);
  dropAll("daemon ends");
}

void Daemon::Implementation::listen() {
  mAcceptor.open(tcp::v4());
#ifndef _WIN32
  // After a restart the port is in use by the connections of before. Windows understands the option
  // otherwise: there it would let two daemons have the port.
  mAcceptor.set_option(tcp::acceptor::reuse_address(true));
#endif
  mAcceptor.bind(tcp::endpoint(asio::ip::address_v4::loopback(), mPort));
  mAcceptor.listen();
}

void Daemon::Implementation::accept() {
  mAcceptor.async_accept([this](const asio::error_code& error, tcp::socket socket) {
    if (!mAcceptor.is_open() || error == asio::error::operation_aborted)
      return; // away, or at the end
    // No descriptors left, for instance. To ask again at once would only burn time.
    if (error)
      return wait(mRetryTimer, kRetryPause, [this] {
        if (mAcceptor.is_open())
          accept();
      });
    if (mPeers.size() < kMaxPeers) {
      mPeers.push_back(std::make_shared<Peer>(std::move(socket), *this));
      mPeers.back()->start();
    }
    accept();
  });
}

void Daemon::Implementation::onGreeted(Peer& peer) {
  mIsAwaited = false;
  report("client connected: " + peer.name(), "client connected " + peer.name());
  if (mCap)
    peer.giveMotion(*mCap);
  // The client is at rest in its wait for events, perhaps for long, and tells its mode between two of them.
  peer.giveEvent(session::kEventAnnounceMode);
  startClock();
}

void Daemon::Implementation::onGone(Peer& peer, const std::string& reason) {
  if (peer.isGreeted())
    report("client gone: " + peer.name(), "client gone " + peer.name());
  if (mOptions.mIsVerbose)
    report("connection ended: " + reason, {});
  mPeers.erase(std::remove(mPeers.begin(), mPeers.end(), peer.shared_from_this()), mPeers.end());
  checkEnd();
}

void Daemon::Implementation::startClock() {
  if (mIsRunning)
    return;
  mIsRunning = true;
  mStart = Clock::now();
  // Not from here: who starts the clock may be in the middle of a peer's greeting.
  asio::post(mIo, [this] { playDue(); });
}

/// Plays all lines whose time has come, and sets the timer for the next.
void Daemon::Implementation::playDue() {
  const auto& actions = mOptions.mActions;
  while (mNextAction < actions.size()) {
    const auto left = mStart + ticks(actions[mNextAction].mSeconds) - Clock::now();
    if (left > Clock::duration::zero())
      return wait(mActionTimer, left, [this] { playDue(); });
    play(actions[mNextAction++]);
  }
  checkEnd();
}

void Daemon::Implementation::play(const Action& action) {
  if (action.mVerb == Verb::away)
    return goAway(action.mDuration);
  const bool isMotion = action.mVerb == Verb::motion;
  if (isMotion)
    mCap = action.mAxes;
  if (action.mVerb == Verb::rotation)
    mDevice = {action.mRotationCode, action.mIsOn};
  const std::string text = isMotion ? motionText(action.mAxes) : "event " + std::to_string(action.mEventCode);
  const auto peers = mPeers; // one that is dropped for its backlog leaves the list
  const auto isGreeted = [](const auto& peer) { return peer->isGreeted(); };
  report(mOptions.mIsVerbose ? text : "", std::any_of(peers.begin(), peers.end(), isGreeted) ? text : "");
  for (const auto& peer : peers) {
    if (!peer->isGreeted())
      continue;
    if (isMotion)
      peer->giveMotion(action.mAxes);
    else
      peer->giveEvent(action.mEventCode);
  }
}

void Daemon::Implementation::goAway(double seconds) {
  const std::string length = secondsText(seconds);
  report(mOptions.mIsVerbose ? "away for " + length + " s" : "", "away " + length);
  mIsAwaited = true;
  asio::error_code ignored;
  mAcceptor.close(ignored);
  dropAll("daemon goes away");
  wait(mReturnTimer, ticks(seconds), [this] { comeBack(); });
}

void Daemon::Implementation::comeBack() {
  try {
    listen();
  } catch (const std::system_error&) {
    // Somebody else has taken the port; it is ours again as soon as they leave.
    asio::error_code ignored;
    mAcceptor.close(ignored);
    return wait(mReturnTimer, kRetryPause, [this] { comeBack(); });
  }
  report({}, "back");
  accept();
  wait(mReturnTimer, kReturnPatience, [this] {
    mIsAwaited = false;
    checkEnd();
  });
}

void Daemon::Implementation::dropAll(const std::string& reason) {
  const auto peers = mPeers;
  for (const auto& peer : peers)
    peer->close(reason);
}

void Daemon::Implementation::endOfInput() {
  mIsInputOver = true;
  checkEnd();
}

void Daemon::Implementation::checkEnd() {
  const bool isOver = mOptions.mHasSession ? mNextAction == mOptions.mActions.size() : mIsInputOver;
  if (isOver && !mIsAwaited && mPeers.empty() && !mOptions.mLingers)
    mIo.stop();
}

/// Says and records a line, if it isn't empty.
void Daemon::Implementation::report(const std::string& said, const std::string& recorded) {
  if (mOptions.mSay && !said.empty())
    mOptions.mSay(said);
  if (mOptions.mRecord && !recorded.empty())
    mOptions.mRecord(unixSeconds() + " " + recorded);
}

Daemon::Daemon(DaemonOptions options)
    : mImplementationP(std::make_unique<Implementation>(std::move(options))) {}

Daemon::~Daemon() = default;

std::uint16_t Daemon::port() const {
  return mImplementationP->mPort;
}

void Daemon::run() {
  mImplementationP->run();
}

void Daemon::stop() {
  mImplementationP->mIo.stop();
}

bool Daemon::play(const Action& action) {
  const auto played = std::make_shared<std::promise<void>>();
  std::future<void> result = played->get_future();
  asio::post(mImplementationP->mIo, [this, action, played] {
    mImplementationP->play(action);
    played->set_value();
  });
  while (result.wait_for(kPlayCheck) != std::future_status::ready)
    if (mImplementationP->mIo.stopped())
      return false;
  return true;
}

void Daemon::endOfInput() {
  asio::post(mImplementationP->mIo, [this] { mImplementationP->endOfInput(); });
}

} // namespace devlink
