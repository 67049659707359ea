#ifndef WEB_CLIENT_H
#define WEB_CLIENT_H

#include <chrono>
#include <memory>
#include <string>

namespace web {

/// One end of a WebSocket, as a page has it. For one thread.
class Client {
public:
  /// Connects. Throws an exception derived from std::exception, with the reason.
  /// address  as in "ws://127.0.0.1:PORT/device?token=T"
  explicit Client(const std::string& address);
  /// Hangs up without a word.
  ~Client();

  /// Sends a line. False if the connection has ended.
  bool send(const std::string& line);
  /// Returns the next message; "(nothing)" if there is none in that time, or the connection has ended.
  std::string next(std::chrono::milliseconds limit = std::chrono::seconds(20));
  bool isOpen() const;
  /// Why the other end hung up, as in "1008 too many messages".
  std::string closeReason() const;

private:
  struct State;
  std::unique_ptr<State> mStateP;
};

} // namespace web

#endif
