#include "peer.h"

#include <asio/buffer.hpp>
#include <asio/write.hpp>

#include <chrono>
#include <cstring>

namespace devlink {

namespace {

using asio::ip::tcp;

constexpr std::chrono::seconds kHelloTimeout{2};

/// Small, so that motion samples wait in the queue, where newer ones overwrite them, rather than in the
/// system.
constexpr int kSendBufferBytes = 32 * 1024;
/// About how much is handed to the system at once.
constexpr std::size_t kBatchBytes = 4096;

constexpr char kDeviceName[] = "Orvaner 6-axis hand controller";
static_assert(kInfoNameOffset + sizeof kDeviceName <= kInfoBytes);

constexpr std::uint32_t kDeviceCount = 1;
constexpr std::uint32_t kGood = 0;
constexpr std::uint32_t kNoSuchDevice = 1;

} // namespace

Peer::Peer(tcp::socket socket, PeerOwner& owner)
    : mSocket(std::move(socket)), mHelloTimer(mSocket.get_executor()), mOwner(owner) {}

void Peer::start() {
  asio::error_code ignored; // if the connection is gone already, the first read fails
  mSocket.set_option(tcp::no_delay(true), ignored);
  mSocket.set_option(asio::socket_base::send_buffer_size(kSendBufferBytes), ignored);
  mHelloTimer.expires_after(kHelloTimeout);
  mHelloTimer.async_wait([self = shared_from_this()](const asio::error_code& error) {
    if (!error && !self->isGreeted())
      self->close("no hello in time");
  });
  read();
}

void Peer::close(const std::string& reason) {
  if (mIsClosed)
    return;
  mIsClosed = true;
  const auto self = shared_from_this(); // the owner drops its reference below
  asio::error_code ignored;
  mHelloTimer.cancel();
  mSocket.shutdown(tcp::socket::shutdown_both, ignored);
  mSocket.close(ignored);
  mOwner.onGone(*this, reason);
}

void Peer::giveMotion(const Axes& axes) {
  mEvents.addMotion(axes);
  write();
}

void Peer::giveEvent(std::int32_t code) {
  if (!mEvents.add(code))
    return close("too far behind");
  write();
}

void Peer::read() {
  std::size_t size = 0;
  std::uint8_t* room = mIn.room(size);
  mIsReading = true;
  mSocket.async_read_some(asio::buffer(room, size),
                          [self = shared_from_this()](const asio::error_code& error, std::size_t got) {
                            if (self->mIsClosed)
                              return;
                            if (error)
                              return self->close(error.message());
                            self->mIsReading = false;
                            self->mIn.added(got);
                            self->takeMessages();
                          });
}

void Peer::takeMessages() {
  Message message;
  MessageBuffer::Next next;
  while ((next = mIn.next(message)) == MessageBuffer::Next::message)
    if (!(isGreeted() ? takeQuestion(message) : takeHello(message)))
      return close("broke the protocol");
  if (next == MessageBuffer::Next::bad)
    return close("broke the protocol");
  write();
  // A client that asks without reading the answers isn't read any further, so that answers don't pile up.
  if (!mIsClosed && mAnswers.empty())
    read();
}

bool Peer::takeHello(const Message& message) {
  MessageReader payload(message);
  const std::uint32_t magic = payload.number32();
  const std::uint16_t version = payload.number16();
  const std::string name = payload.text(kMaxNameBytes);
  if (message.mKind != Kind::hello || magic != kMagic || version != kVersion || !payload.isGood() ||
      name.empty())
    return false;
  mHelloTimer.cancel();
  mName = name;
  MessageWriter(mAnswers, Kind::welcome).number32(kMagic).number16(kVersion);
  mOwner.onGreeted(*this);
  return true;
}

bool Peer::takeQuestion(const Message& message) {
  MessageReader payload(message);
  const std::uint32_t number = payload.number32();
  std::uint32_t status = kGood;
  std::string mode;
  switch (message.mKind) {
  case Kind::askDevices:
    status = kDeviceCount;
    break;
  case Kind::askInfo:
  case Kind::askSettings:
    status = payload.signed32() == 0 ? kGood : kNoSuchDevice;
    break;
  case Kind::setMode:
    payload.text(kMaxModeBytes); // the application
    mode = payload.text(kMaxModeBytes);
    break;
  default:
    return false;
  }
  if (!payload.isGood())
    return false;
  if (message.mKind == Kind::setMode)
    mOwner.onMode(mode);
  Bytes record(recordBytes(answerTo(message.mKind)));
  if (message.mKind == Kind::askInfo && status == kGood)
    std::memcpy(&record[kInfoNameOffset], kDeviceName, sizeof kDeviceName);
  if (message.mKind == Kind::askSettings && status == kGood) {
    const DeviceState& device = mOwner.device();
    std::memcpy(&record[kSettingsRotationOffset], &device.mRotationCode, sizeof device.mRotationCode);
    record[kSettingsZoomOffset] = device.mZoomsAfterView;
  }
  MessageWriter(mAnswers, answerTo(message.mKind)).number32(number).number32(status).record(record);
  return true;
}

void Peer::write() {
  if (!mOut.empty() || mIsClosed)
    return;
  mOut.swap(mAnswers);
  Event event;
  while (mOut.size() < kBatchBytes && mEvents.take(event)) {
    if (event.mCode == kMotionCode) {
      MessageWriter message(mOut, Kind::motion);
      for (const std::int16_t axis : event.mAxes)
        message.number16(static_cast<std::uint16_t>(axis));
    } else {
      MessageWriter(mOut, Kind::event).number32(static_cast<std::uint32_t>(event.mCode));
    }
  }
  if (mOut.empty())
    return;
  asio::async_write(mSocket, asio::buffer(mOut),
                    [self = shared_from_this()](const asio::error_code& error, std::size_t) {
                      self->mOut.clear();
                      if (self->mIsClosed)
                        return;
                      if (error)
                        return self->close(error.message());
                      self->write();
                      if (!self->mIsReading)
                        self->takeMessages();
                    });
}

} // namespace devlink
