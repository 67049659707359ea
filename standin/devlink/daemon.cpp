#include "daemon.h"

#include "peer.h"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <future>
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

} // namespace

class Daemon::Implementation : public PeerOwner {
public:
  explicit Implementation(DaemonOptions options);
  ~Implementation() override;

  void run();
  void play(const Action& action);
  void checkEnd();

  const DeviceState& device() const override { return mDevice; }
  void onGreeted(Peer& peer) override;
  void onMode(Peer& peer, const std::string& mode) override;
  void onGone(Peer& peer, const std::string& reason) override;

  asio::io_context mIo;
  std::uint16_t mPort = 0;
  bool mIsInputOver = false;

private:
  void listen();
  void accept();
  void takeConnection(const asio::error_code& error, tcp::socket socket);
  void startClock();
  void playDue();
  void goAway(double seconds);
  void comeBack();
  void dropAll(const std::string& reason);
  bool hasGreeted() const;
  void record(const std::string& text);
  void say(const std::string& text);

  DaemonOptions mOptions;
  tcp::acceptor mAcceptor;
  asio::steady_timer mActionTimer;
  asio::steady_timer mReturnTimer;
  asio::steady_timer mRetryTimer;
  std::vector<std::shared_ptr<Peer>> mPeers;
  DeviceState mDevice;
  Axes mCap{};
  bool mHasMoved = false;
  bool mIsRunning = false; ///< the session's clock runs
  Clock::time_point mStart;
  std::size_t mNextAction = 0;
  bool mIsAway = false;
  bool mIsAwaited = false; ///< clients may still come back after an absence
  bool mWasVisited = false;
};

Daemon::Implementation::Implementation(DaemonOptions options)
    : mPort(options.mPort), mOptions(std::move(options)), mAcceptor(mIo), mActionTimer(mIo),
      mReturnTimer(mIo), mRetryTimer(mIo) {
  listen();
  mPort = mAcceptor.local_endpoint().port();
  accept();
}

Daemon::Implementation::~Implementation() {
  dropAll("daemon ends");
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
    takeConnection(error, std::move(socket));
  });
}

void Daemon::Implementation::takeConnection(const asio::error_code& error, tcp::socket socket) {
  if (!mAcceptor.is_open() || error == asio::error::operation_aborted)
    return; // away, or at the end
  if (error) {
    // No descriptors left, for instance. To ask again at once would only burn time.
    mRetryTimer.expires_after(kRetryPause);
    mRetryTimer.async_wait([this](const asio::error_code& cancelled) {
      if (!cancelled && mAcceptor.is_open())
        accept();
    });
    return;
  }
  if (mPeers.size() < kMaxPeers) {
    mPeers.push_back(std::make_shared<Peer>(std::move(socket), *this));
    mPeers.back()->start();
  }
  accept();
}

void Daemon::Implementation::onGreeted(Peer& peer) {
  mWasVisited = true;
  mIsAwaited = false;
  say("client connected: " + peer.name());
  record("client connected " + peer.name());
  if (mHasMoved)
    peer.giveMotion(mCap);
  // The client is at rest in its wait for events, perhaps for long, and tells its mode between two of them.
  peer.giveEvent(session::kEventAnnounceMode);
  startClock();
}

void Daemon::Implementation::onMode(Peer&, const std::string& mode) {
  say("mode: " + mode);
  record("mode " + mode);
}

void Daemon::Implementation::onGone(Peer& peer, const std::string& reason) {
  if (peer.isGreeted()) {
    say("client gone: " + peer.name());
    record("client gone " + peer.name());
  }
  if (mOptions.mIsVerbose)
    say("connection ended: " + reason);
  mPeers.erase(std::remove_if(mPeers.begin(), mPeers.end(),
                              [&](const std::shared_ptr<Peer>& held) { return held.get() == &peer; }),
               mPeers.end());
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
  while (mNextAction < actions.size() && mStart + ticks(actions[mNextAction].mSeconds) <= Clock::now())
    play(actions[mNextAction++]);
  if (mNextAction == actions.size())
    return checkEnd();
  mActionTimer.expires_at(mStart + ticks(actions[mNextAction].mSeconds));
  mActionTimer.async_wait([this](const asio::error_code& cancelled) {
    if (!cancelled)
      playDue();
  });
}

void Daemon::Implementation::play(const Action& action) {
  if (action.mVerb == Verb::away)
    return goAway(action.mDuration);
  const bool isMotion = action.mVerb == Verb::motion;
  if (isMotion) {
    mCap = action.mAxes;
    mHasMoved = true;
  }
  if (action.mVerb == Verb::rotation) {
    mDevice.mRotationCode = action.mRotationCode;
    mDevice.mZoomsAfterView = action.mIsOn;
  }
  const std::string text = isMotion ? motionText(action.mAxes) : "event " + std::to_string(action.mEventCode);
  if (mOptions.mIsVerbose)
    say(text);
  if (hasGreeted())
    record(text);
  const auto peers = mPeers; // one that is dropped for its backlog leaves the list
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
  record("away " + secondsText(seconds));
  if (mOptions.mIsVerbose)
    say("away for " + secondsText(seconds) + " s");
  mIsAway = true;
  asio::error_code ignored;
  mAcceptor.close(ignored);
  dropAll("daemon goes away");
  mReturnTimer.expires_after(ticks(seconds));
  mReturnTimer.async_wait([this](const asio::error_code& cancelled) {
    if (!cancelled)
      comeBack();
  });
}

void Daemon::Implementation::comeBack() {
  try {
    listen();
  } catch (const std::system_error&) {
    // Somebody else has taken the port; it is ours again as soon as they leave.
    asio::error_code ignored;
    mAcceptor.close(ignored);
    mReturnTimer.expires_after(kRetryPause);
    mReturnTimer.async_wait([this](const asio::error_code& cancelled) {
      if (!cancelled)
        comeBack();
    });
    return;
  }
  mIsAway = false;
  mIsAwaited = true;
  record("back");
  accept();
  mReturnTimer.expires_after(kReturnPatience);
  mReturnTimer.async_wait([this](const asio::error_code& cancelled) {
    if (cancelled)
      return;
    mIsAwaited = false;
    checkEnd();
  });
}

void Daemon::Implementation::dropAll(const std::string& reason) {
  const auto peers = mPeers;
  for (const auto& peer : peers)
    peer->close(reason);
}

bool Daemon::Implementation::hasGreeted() const {
  return std::any_of(mPeers.begin(), mPeers.end(), [](const auto& peer) { return peer->isGreeted(); });
}

void Daemon::Implementation::checkEnd() {
  const bool isOver = mOptions.mHasSession ? mNextAction == mOptions.mActions.size() : mIsInputOver;
  const bool mayStillCome = mIsAway || mIsAwaited || (!mWasVisited && mOptions.mStartsOnConnect);
  if (isOver && !mayStillCome && mPeers.empty() && !mOptions.mLingers)
    mIo.stop();
}

void Daemon::Implementation::record(const std::string& text) {
  if (mOptions.mRecord)
    mOptions.mRecord(unixSeconds() + " " + text);
}

void Daemon::Implementation::say(const std::string& text) {
  if (mOptions.mSay)
    mOptions.mSay(text);
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

void Daemon::enqueue(const Action& action) {
  asio::post(mImplementationP->mIo, [this, action] { mImplementationP->play(action); });
}

void Daemon::endOfInput() {
  asio::post(mImplementationP->mIo, [this] {
    mImplementationP->mIsInputOver = true;
    mImplementationP->checkEnd();
  });
}

} // namespace devlink
