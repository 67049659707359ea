#include "daemon.h"

#include <asio/post.hpp>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <future>
#include <utility>

namespace devlink {

namespace {

using asio::ip::tcp;
using session::Action;
using session::Verb;
using Seconds = std::chrono::duration<double>;

constexpr std::size_t kMaxPeers = 16;
/// Pause before the next attempt when a connection can't be taken or the port can't be had again.
constexpr std::chrono::milliseconds kRetryPause{100};
/// How long a daemon that has been away waits for its clients, which look every 2 s.
constexpr std::chrono::seconds kReturnPatience{5};
/// How often play() checks whether run() has ended.
constexpr std::chrono::milliseconds kPlayCheck{50};

std::chrono::nanoseconds ticks(double seconds) {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(Seconds(seconds));
}

std::string secondsText(double seconds) {
  char text[64];
  std::snprintf(text, sizeof text, "%.3f", seconds);
  return text;
}

std::string unixSeconds() {
  return secondsText(Seconds(std::chrono::system_clock::now().time_since_epoch()).count());
}

/// Calls the action after a time, unless the timer is set again before.
template <class After> void wait(asio::steady_timer& timer, std::chrono::nanoseconds length, After action) {
  timer.expires_after(length);
  timer.async_wait([action](const asio::error_code& cancelled) {
    if (!cancelled)
      action();
  });
}

} // namespace

Daemon::Daemon(DaemonOptions options)
    : mOptions(std::move(options)), mPort(mOptions.mPort), mIsAwaited(mOptions.mStartsOnConnect) {
  for (const Action& setting : mOptions.mPanel)
    playNow(setting);
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

void Daemon::run() {
  if (!mOptions.mStartsOnConnect)
    startClock();
  checkEnd();
  mIo.run();
  asio::error_code ignored;
  mAcceptor.close(ignored);
  dropAll("daemon ends");
}

void Daemon::listen() {
  mAcceptor.open(tcp::v4());
#ifndef _WIN32
  // After a restart, earlier connections still use the port. On Windows the option means something else: it would
  // let two daemons have the port.
  mAcceptor.set_option(tcp::acceptor::reuse_address(true));
#endif
  mAcceptor.bind(tcp::endpoint(asio::ip::address_v4::loopback(), mPort));
  mAcceptor.listen();
}

void Daemon::accept() {
  mAcceptor.async_accept([this](const asio::error_code& error, tcp::socket socket) {
    if (!mAcceptor.is_open() || error == asio::error::operation_aborted)
      return; // away, or at the end
    // No descriptors left, for instance. An immediate retry would fail again.
    if (error)
      return wait(mRetryTimer, kRetryPause, [this] {
        if (mAcceptor.is_open())
          accept();
      });
    if (mPeers.size() < kMaxPeers) {
      mPeers.push_back(std::make_shared<Peer>(std::move(socket), static_cast<PeerOwner&>(*this)));
      mPeers.back()->start();
    }
    accept();
  });
}

void Daemon::onGreeted(Peer& peer) {
  mIsAwaited = false;
  report("client connected: " + peer.name(), "client connected " + peer.name());
  if (mCap)
    peer.giveMotion(*mCap);
  // The client sends its mode between two events only, and may wait long for the next one.
  peer.giveEvent(session::kEventAnnounceMode);
  startClock();
}

void Daemon::onGone(Peer& peer, const std::string& reason) {
  if (peer.isGreeted())
    report("client gone: " + peer.name(), "client gone " + peer.name());
  if (mOptions.mIsVerbose)
    report("connection ended: " + reason, {});
  mPeers.erase(std::remove(mPeers.begin(), mPeers.end(), peer.shared_from_this()), mPeers.end());
  checkEnd();
}

void Daemon::startClock() {
  if (mIsRunning)
    return;
  mIsRunning = true;
  mStart = Clock::now();
  // Not from here: the caller may be in the middle of a peer's greeting.
  asio::post(mIo, [this] { playDue(); });
}

/// Plays all lines whose time has come, and sets the timer for the next.
void Daemon::playDue() {
  const auto& actions = mOptions.mActions;
  while (mNextAction < actions.size()) {
    const auto left = mStart + ticks(actions[mNextAction].mSeconds) - Clock::now();
    if (left > Clock::duration::zero())
      return wait(mActionTimer, left, [this] { playDue(); });
    playNow(actions[mNextAction++]);
  }
  checkEnd();
}

void Daemon::playNow(const Action& action) {
  if (action.mVerb == Verb::away)
    return goAway(action.mValue);
  if (mPanel.take(action)) { // acts at once
    if (mHand && mHand->mAxes != Axes{})
      playNow(*mHand);
    return;
  }
  const bool isMotion = action.mVerb == Verb::motion;
  Action made = action;
  if (isMotion) {
    mHand = action;
    mCap = made.mAxes = mPanel.apply(action.mAxes);
  }
  if (action.mVerb == Verb::rotation)
    mDevice = {action.mRotationCode, action.mIsOn};
  const std::string text =
      isMotion ? session::deviceLine(made) : "event " + std::to_string(action.mEventCode);
  const auto peers = mPeers; // one that is dropped for its backlog leaves the list
  const auto isGreeted = [](const auto& peer) { return peer->isGreeted(); };
  report(mOptions.mIsVerbose ? text : "", std::any_of(peers.begin(), peers.end(), isGreeted) ? text : "");
  for (const auto& peer : peers) {
    if (!peer->isGreeted())
      continue;
    if (isMotion)
      peer->giveMotion(made.mAxes);
    else
      peer->giveEvent(action.mEventCode);
  }
}

void Daemon::goAway(double seconds) {
  const std::string length = secondsText(seconds);
  report(mOptions.mIsVerbose ? "away for " + length + " s" : "", "away " + length);
  mIsAwaited = true;
  asio::error_code ignored;
  mAcceptor.close(ignored);
  dropAll("daemon goes away");
  wait(mReturnTimer, ticks(seconds), [this] { comeBack(); });
}

void Daemon::comeBack() {
  try {
    listen();
  } catch (const std::system_error&) {
    // Another program has taken the port; try again until it has left.
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

void Daemon::dropAll(const std::string& reason) {
  const auto peers = mPeers;
  for (const auto& peer : peers)
    peer->close(reason);
}

void Daemon::checkEnd() {
  const bool isOver = mOptions.mHasSession ? mNextAction == mOptions.mActions.size() : mIsInputOver;
  if (isOver && !mIsAwaited && mPeers.empty() && !mOptions.mLingers)
    mIo.stop();
}

/// Says and records a line each, unless it is empty.
void Daemon::report(const std::string& said, const std::string& recorded) {
  if (mOptions.mSay && !said.empty())
    mOptions.mSay(said);
  if (mOptions.mRecord && !recorded.empty())
    mOptions.mRecord(unixSeconds() + " " + recorded);
}

void Daemon::stop() {
  mIo.stop();
}

bool Daemon::play(const Action& action) {
  return runThere([this, action] { playNow(action); });
}

Daemon::Settings Daemon::settings() {
  const auto settings = std::make_shared<Settings>();
  runThere([this, settings] { *settings = {mPanel, mDevice}; });
  return *settings;
}

/// Does something on the thread of run(); returns when it is done. False if run() has ended before.
bool Daemon::runThere(std::function<void()> work) {
  const auto done = std::make_shared<std::promise<void>>();
  std::future<void> result = done->get_future();
  asio::post(mIo, [work = std::move(work), done] {
    work();
    done->set_value();
  });
  while (result.wait_for(kPlayCheck) != std::future_status::ready)
    if (mIo.stopped())
      return false;
  return true;
}

void Daemon::endOfInput() {
  asio::post(mIo, [this] {
    mIsInputOver = true;
    checkEnd();
  });
}

} // namespace devlink
