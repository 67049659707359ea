#ifndef WEB_SERVER_H
#define WEB_SERVER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>

/// A door for pages on this machine: serves one page and one WebSocket, whose messages are lines of text. Whoever
/// knows the token may come in. The first page drives, the others watch; when the driver has gone, the one that
/// has been there longest drives.
///
/// A client that breaks a rule is hung up on with a reason; the others don't notice.
namespace web {

/// Counts from 1.
using ClientId = std::uint64_t;
constexpr ClientId kEveryone = 0;

/// Something to be sent, as one message of text.
class Message {
public:
  virtual ~Message() = default;
  /// Called on the server's thread when the message goes out, so that nobody else waits for it.
  virtual std::string text() const = 0;
  /// Returns what takes the place of an earlier message that hasn't gone out and of this one; null: both go out.
  virtual std::shared_ptr<const Message> joinedTo(const Message&) const { return nullptr; }
};
using MessageP = std::shared_ptr<const Message>;
/// A message that takes no other's place.
MessageP message(std::function<std::string()> makeText);

/// What the server needs from its program. All on the server's thread.
class Door {
public:
  virtual ~Door() = default;
  /// A client has come. It is sent what goes to everyone once it has been sent something of its own.
  virtual void onOpened(ClientId client, bool isDriver) = 0;
  /// The driver has gone, and this client drives now.
  virtual void onDriver(ClientId client) = 0;
  /// Returns why the client is to be hung up on; empty if the line was good.
  virtual std::string onLine(ClientId client, bool isDriver, const std::string& line) = 0;
  /// The driver has sent nothing for the time of silence, or has gone.
  virtual void onSilent() {}
  /// Returns the page for whoever reached this machine under that name and port; empty: there is none.
  virtual std::string page(const std::string& /*authority*/) { return {}; }
};

struct ServerOptions {
  /// On this machine only; 0 takes any free one.
  std::uint16_t mPort = 0;
  /// Empty: a random one.
  std::string mToken;
  /// Of the WebSocket, as in "/device".
  std::string mPath;
  std::size_t mMaxLineBytes = 1024;
  /// Milliseconds without a line of the driver that are silence; 0 for never.
  int mSilence = 250;
  /// For a request, and for the end of a connection.
  std::chrono::milliseconds mHandshake{5000};
  /// How long a client may take nothing.
  std::chrono::milliseconds mPatience{10000};
};

class Hub;

class Server {
public:
  /// Opens the port and serves, on a thread of its own. Throws std::system_error if the port can't be had.
  /// door  must outlive the server
  Server(const ServerOptions& options, Door& door);
  /// Ends all connections, after what has been sent up to now; within a second.
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  std::uint16_t port() const;
  /// As in "http://127.0.0.1:PORT/?token=T".
  std::string pageAddress() const;
  /// As in "ws://127.0.0.1:PORT/device?token=T"; with another name and port for whoever comes another way.
  std::string socketAddress() const;
  std::string socketAddress(const std::string& authority) const;

  /// Sends to one client or to everyone, without waiting. What one thread sends arrives in order. Any thread.
  void send(MessageP message, ClientId to = kEveryone);

private:
  std::unique_ptr<Hub> mHubP;
  std::thread mThread;
};

} // namespace web

#endif
