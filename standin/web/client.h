#ifndef WEB_CLIENT_H
#define WEB_CLIENT_H

#include <chrono>
#include <memory>
#include <string>

namespace web {

/// One end of a WebSocket, as a page has it. For one thread.
class Client {
public:
  /// Connects. Throws std::runtime_error with the reason.
  /// address  as in "ws://127.0.0.1:PORT/device?token=T"
  explicit Client(const std::string& address, const std::string& origin = {});
  /// Hangs up without a word.
  ~Client();
  Client(Client&&) noexcept;

  /// Sends a line. False if the connection has ended.
  bool send(const std::string& line);
  /// Gets the next message. False if there is none in that time, or the connection has ended.
  bool receive(std::string& text, std::chrono::milliseconds limit);
  bool isOpen() const;
  /// Why the other end hung up, as in "1008 too many messages"; empty if it didn't say.
  std::string closeReason() const;

private:
  struct State;
  std::unique_ptr<State> mStateP;
};

} // namespace web

#endif
