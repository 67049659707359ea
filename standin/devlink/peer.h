#ifndef PEER_H
#define PEER_H

#include "event_queue.h"
#include "protocol.h"

#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>

#include <memory>
#include <string>

namespace devlink {

/// What the daemon reports of its device.
struct DeviceState {
  std::int32_t mRotationCode = 0;
  bool mZoomsAfterView = false;
};

class Peer;

/// What a peer needs from the daemon. All on the daemon's thread.
class PeerOwner {
public:
  virtual ~PeerOwner() = default;
  virtual const DeviceState& device() const = 0;
  /// The client has sent a valid hello.
  virtual void onGreeted(Peer& peer) = 0;
  virtual void onMode(const std::string& mode) = 0;
  /// The connection has ended; the last call for a peer. reason is for a person.
  virtual void onGone(Peer& peer, const std::string& reason) = 0;
};

/// The daemon's end of one client's connection.
class Peer : public std::enable_shared_from_this<Peer> {
public:
  /// The owner outlives the connection; shared by it and by the operations under way.
  Peer(asio::ip::tcp::socket socket, PeerOwner& owner);

  void start();
  /// Closes the connection and calls onGone, unless it is closed already.
  void close(const std::string& reason);

  bool isGreeted() const { return !mName.empty(); }
  const std::string& name() const { return mName; }

  void giveMotion(const Axes& axes);
  void giveEvent(std::int32_t code);

private:
  void read();
  void takeMessages();
  bool takeHello(const Message& message);
  bool takeQuestion(const Message& message);
  void write();

  asio::ip::tcp::socket mSocket;
  asio::steady_timer mHelloTimer;
  PeerOwner& mOwner;
  bool mIsClosed = false;
  /// Empty before the hello.
  std::string mName;
  MessageBuffer mIn;
  /// Answers that go out before the next events.
  Bytes mAnswers;
  /// Bytes on their way to the client.
  Bytes mOut;
  EventQueue mEvents;
  bool mIsReading = false;
};

} // namespace devlink

#endif
