#ifndef CONNECTION_H
#define CONNECTION_H

#include "server.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>

#include <deque>
#include <optional>

namespace web {

class Connection;

/// What a connection needs from the server. All on the server's thread.
class ConnectionOwner {
public:
  virtual ~ConnectionOwner() = default;
  virtual const ServerOptions& options() const = 0;
  virtual std::string page(const std::string& authority) = 0;
  virtual void onOpen(Connection& connection) = 0;
  virtual std::string onLine(Connection& connection, const std::string& line) = 0;
  /// The last line has come.
  virtual void onLeft(Connection& connection) = 0;
  /// The last that is heard of a connection.
  virtual void onEnd(Connection& connection) = 0;
};

/// A message that waits to go out.
struct Waiting {
  MessageP mMessageP;
  ClientId mTo = kEveryone;
};

/// Appends a message to those that wait, and removes the one that it replaces, if there is one. It replaces none from
/// before a message to a single client: that is a hello, whose data may include those frames.
void enqueue(std::deque<Waiting>& queue, Waiting entry);

/// One client's connection, from its first byte on.
class Connection : public std::enable_shared_from_this<Connection> {
public:
  /// The owner outlives the connection; shared by it and by the operations under way.
  Connection(boost::asio::ip::tcp::socket socket, ClientId id, ConnectionOwner& owner);

  void start();
  void send(MessageP messageP);
  /// Hangs up with a reason. What waits doesn't go out any more.
  void close(boost::beast::websocket::close_code code, const std::string& reason);
  /// Hangs up once everything has gone out.
  void closeWhenSent();
  /// Hangs up at once.
  void drop();

  ClientId id() const { return mId; }
  bool isOpen() const { return mState == State::open; }
  /// It has been sent something of its own.
  bool mIsAdmitted = false;

private:
  enum class State { opening, open, closing };
  using Error = boost::beast::error_code;

  void takeRequest(const Error& error);
  void respond(boost::beast::http::status status, std::string text);
  void drain();
  void accept();
  void read();
  void takeMessage(const Error& error);
  bool isTooFast();
  void write();

  boost::beast::websocket::stream<boost::beast::tcp_stream, false> mStream;
  boost::asio::steady_timer mPatience;
  const ClientId mId;
  ConnectionOwner& mOwner;
  State mState = State::opening;
  boost::beast::flat_buffer mIn;
  std::optional<boost::beast::http::request_parser<boost::beast::http::empty_body>> mParser;
  boost::beast::http::response<boost::beast::http::string_body> mResponse;
  std::deque<Waiting> mQueue;
  /// The message on its way.
  std::string mOut;
  bool mIsWriting = false;
  /// What waits is all that goes out.
  bool mIsLast = false;
  /// Messages that may come now.
  double mCredit;
  std::chrono::steady_clock::time_point mLastMessage;
};

} // namespace web

#endif
