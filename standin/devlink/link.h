#ifndef LINK_H
#define LINK_H

#include "event_queue.h"
#include "protocol.h"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>

#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <string>

namespace devlink {

/// A client's end of one connection to the daemon, from the attempt to its end; never opened twice. Has no
/// lock: its owner lets in one thread at a time.
class Link {
public:
  enum class State { opening, up, down };
  using Clock = std::chrono::steady_clock;

  /// A question under way.
  struct Question {
    Kind mAnswerKind;
    bool mIsAnswered;
    std::uint32_t mStatus;
    Bytes mRecord;
  };

  /// Begins to connect. The socket becomes writable once that has succeeded or failed.
  void connect(std::uint16_t port);
  /// Sends the hello. The link is up when the welcome has been read.
  void greet(const std::string& clientName);
  /// Sends a question, and adds it to mQuestions, where the owner removes it. Returns its number.
  /// addArguments  appends what follows the number
  std::uint32_t ask(Kind kind, const std::function<void(MessageWriter&)>& addArguments);
  /// Reads what the socket holds, a few buffers at most, into mEvents and mQuestions; doesn't wait. Invalid data
  /// ends the link.
  void read();
  /// Ends the link, and any await(). Events that have arrived stay.
  void drop();
  /// Waits until the socket can be read (or written to: the connection has been made or refused) or has ended, at
  /// most until the deadline. Releases the owner's lock meanwhile. One thread at a time.
  void await(std::unique_lock<std::mutex>& lock, bool isToWrite, Clock::time_point deadline);

  State mState = State::opening;
  /// A thread is in await().
  bool mIsAwaited = false;
  std::map<std::uint32_t, Question> mQuestions;
  EventQueue mEvents;
  asio::io_context mIo;
  asio::ip::tcp::socket mSocket{mIo};

private:
  void send(const Bytes& bytes);
  bool takeMessage(const Message& message);
  bool takeAnswer(const Message& message);

  std::uint32_t mLastQuestion = 0;
  MessageBuffer mIn;
};

} // namespace devlink

#endif
