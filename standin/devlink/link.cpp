#include "link.h"

#include <asio/buffer.hpp>

#include <algorithm>

#ifndef _WIN32
#include <poll.h>
#endif

namespace devlink {

namespace {

using asio::ip::tcp;

/// Small, so that old motion samples don't pile up in the system where they can't be overwritten.
constexpr int kReceiveBufferBytes = 64 * 1024;
/// Buffers that one read() takes from the socket at most, so that a flood can't keep a caller inside.
constexpr int kMaxReads = 4;

} // namespace

void Link::connect(std::uint16_t port) {
  const tcp::endpoint daemon(asio::ip::address_v4::loopback(), port);
  asio::error_code error;
  mSocket.open(daemon.protocol(), error);
  if (!error)
    mSocket.set_option(asio::socket_base::receive_buffer_size(kReceiveBufferBytes), error);
  if (!error)
    mSocket.set_option(tcp::no_delay(true), error);
  if (!error)
    mSocket.non_blocking(true, error);
  if (error)
    return drop();
  // Asio's own connect() waits without a limit. Whether this one succeeded shows when the hello is sent.
  ::connect(mSocket.native_handle(), daemon.data(), static_cast<socklen_t>(daemon.size()));
}

void Link::greet(const std::string& clientName) {
  Bytes hello;
  MessageWriter(hello, Kind::hello).number32(kMagic).number16(kVersion).text(clientName);
  send(hello);
}

std::uint32_t Link::ask(Kind kind, const std::function<void(MessageWriter&)>& addArguments) {
  const std::uint32_t number = ++mLastQuestion;
  mQuestions[number] = {answerTo(kind), false, 0, {}};
  Bytes question;
  MessageWriter message(question, kind);
  addArguments(message.number32(number));
  send(question);
  return number;
}

/// Sends a message. A socket that doesn't take it whole ends the link: the daemon hasn't read for long.
void Link::send(const Bytes& bytes) {
  asio::error_code error;
  if (mState != State::down && (mSocket.write_some(asio::buffer(bytes), error) != bytes.size() || error))
    drop();
}

void Link::read() {
  for (int reads = 0; mState != State::down && reads < kMaxReads; ++reads) {
    std::size_t size = 0;
    std::uint8_t* room = mIn.room(size);
    asio::error_code error;
    mIn.added(mSocket.read_some(asio::buffer(room, size), error));
    if (error == asio::error::would_block)
      return;
    if (error)
      return drop();
    Message message;
    MessageBuffer::Next next;
    while ((next = mIn.next(message)) == MessageBuffer::Next::message)
      if (!takeMessage(message))
        return drop();
    if (next == MessageBuffer::Next::bad)
      return drop();
  }
}

/// Takes a message. Returns false if it isn't valid.
bool Link::takeMessage(const Message& message) {
  MessageReader payload(message);
  if (mState == State::opening) {
    const std::uint32_t magic = payload.number32();
    const std::uint16_t version = payload.number16();
    mState = State::up;
    return message.mKind == Kind::welcome && payload.isGood() && magic == kMagic && version == kVersion;
  }
  if (message.mKind == Kind::motion) {
    Axes axes;
    for (std::int16_t& axis : axes)
      axis = static_cast<std::int16_t>(payload.number16());
    if (payload.isGood())
      mEvents.addMotion(axes);
    return payload.isGood();
  }
  if (message.mKind == Kind::event) {
    const std::int32_t code = payload.signed32();
    return payload.isGood() && code >= 0 && mEvents.add(code);
  }
  return takeAnswer(message);
}

bool Link::takeAnswer(const Message& message) {
  MessageReader payload(message);
  const std::uint32_t number = payload.number32();
  const std::uint32_t status = payload.number32();
  const Bytes record = payload.record(recordBytes(message.mKind));
  if (message.mKind < Kind::devices || message.mKind > Kind::modeTaken || !payload.isGood() || number == 0 ||
      number > mLastQuestion)
    return false;
  const auto found = mQuestions.find(number);
  if (found == mQuestions.end())
    return true; // too late: nobody waits for it any more
  Question& question = found->second;
  if (question.mAnswerKind != message.mKind || question.mIsAnswered)
    return false;
  question = {message.mKind, true, status, record};
  return true;
}

/// A thread in await() still needs the socket, and closes it itself.
void Link::drop() {
  mState = State::down;
  asio::error_code ignored;
  if (mIsAwaited)
    mSocket.shutdown(tcp::socket::shutdown_both, ignored);
  else
    mSocket.close(ignored);
}

void Link::await(std::unique_lock<std::mutex>& lock, bool isToWrite, Clock::time_point deadline) {
  int milliseconds = -1;
  if (deadline != Clock::time_point::max()) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    milliseconds = static_cast<int>(std::max(left.count(), std::chrono::milliseconds::rep{0}));
  }
  pollfd socket = {};
  socket.fd = mSocket.native_handle();
  socket.events = isToWrite ? POLLOUT : POLLIN;
  mIsAwaited = true;
  lock.unlock();
#ifdef _WIN32
  WSAPoll(&socket, 1, milliseconds);
#else
  poll(&socket, 1, milliseconds);
#endif
  lock.lock();
  mIsAwaited = false;
  if (mState == State::down)
    drop();
}

} // namespace devlink
