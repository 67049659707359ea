#ifndef DAEMON_H
#define DAEMON_H

#include "panel.h"
#include "peer.h"
#include "session.h"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace devlink {

struct DaemonOptions {
  /// On this machine only; 0 takes any free one.
  std::uint16_t mPort = kDefaultPort;

  /// The device's lines of a session, in order. With mHasSession the clock starts with the first client, or
  /// with run(); without, everything comes through play().
  bool mHasSession = false;
  std::vector<session::Action> mActions;
  /// Lines that set the panel and the rotation settings before the first client comes.
  std::vector<session::Action> mPanel;
  bool mStartsOnConnect = true;
  /// Stays after the last line, when no client is left.
  bool mLingers = false;
  /// run() ends at SIGINT and SIGTERM.
  bool mStopsAtSignals = false;

  /// Receives each line of the record, without line feed, on the thread of run(); may be empty.
  /// "<unix seconds> motion x y z a b c", "... event CODE", "... mode NAME", "... client connected NAME",
  /// "... client gone NAME", "... away SECONDS", "... back". Motion and events are recorded if at least one
  /// client gets them.
  std::function<void(const std::string&)> mRecord;
  /// Receives what a person wants to see: "mode: NAME", clients that come and go; same thread, may be empty.
  std::function<void(const std::string&)> mSay;
  /// mSay also receives each event, and why connections ended.
  bool mIsVerbose = false;
};

/// The device and its daemon: one device, any program on this machine as a client, sixteen of them at most.
///
/// A client first gets the cap's last position, if the cap has moved before, and the question for its mode;
/// neither is recorded. From then on it gets all events. What a client sends is checked in every field. One that
/// breaks the protocol, doesn't greet within two seconds or falls 65536 events behind is dropped; the others
/// aren't affected.
class Daemon : private PeerOwner {
public:
  /// Opens the port. Throws std::system_error if it can't be had.
  explicit Daemon(DaemonOptions options);
  /// run() must have ended.
  ~Daemon() override = default;

  /// Returns the port on which it listens.
  std::uint16_t port() const { return mPort; }

  /// Serves until stop(), or until the last line has been played and the last client has left. Then closes all
  /// connections. To be called once.
  void run();
  /// Ends run(), even if it begins later. Any thread.
  void stop();
  /// Plays one action of the device now, whatever its time, and waits until it has gone out. Returns false if
  /// run() has ended before. Any thread but that of run().
  bool play(const session::Action& action);
  /// What panel and device are set to.
  struct Settings {
    Panel mPanel;
    DeviceState mDevice;
  };
  /// Returns the settings as they are now, or the default ones if run() has ended before. Any thread but that of run().
  Settings settings();
  /// Notes that no more play() will come: run() ends when the clients have left. Any thread.
  void endOfInput();

private:
  using Clock = std::chrono::steady_clock;

  const DeviceState& device() const override { return mDevice; }
  void onGreeted(Peer& peer) override;
  void onMode(const std::string& mode) override { report("mode: " + mode, "mode " + mode); }
  void onGone(Peer& peer, const std::string& reason) override;
  void listen();
  void accept();
  void startClock();
  void playDue();
  bool runThere(std::function<void()> work);
  void playNow(const session::Action& action);
  void goAway(double seconds);
  void comeBack();
  void dropAll(const std::string& reason);
  void checkEnd();
  void report(const std::string& said, const std::string& recorded);

  const DaemonOptions mOptions;
  std::uint16_t mPort;
  asio::io_context mIo;
  asio::ip::tcp::acceptor mAcceptor{mIo};
  asio::signal_set mSignals{mIo};
  asio::steady_timer mActionTimer{mIo};
  asio::steady_timer mReturnTimer{mIo};
  asio::steady_timer mRetryTimer{mIo};
  std::vector<std::shared_ptr<Peer>> mPeers;
  DeviceState mDevice;
  Panel mPanel;
  /// The last motion, as the hand made it.
  std::optional<session::Action> mHand;
  /// Empty until the first motion.
  std::optional<Axes> mCap;
  /// The session's clock runs.
  bool mIsRunning = false;
  Clock::time_point mStart;
  std::size_t mNextAction = 0;
  bool mIsInputOver = false;
  /// Clients may still come: for the first time, or during and after an absence.
  bool mIsAwaited;
};

} // namespace devlink

#endif
