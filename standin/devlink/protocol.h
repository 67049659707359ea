#ifndef PROTOCOL_H
#define PROTOCOL_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The protocol between client library and daemon, over one TCP connection on this machine.
///
/// Each message is: length of the payload (16 bits), kind (16 bits), payload. All numbers are
/// little-endian, a text is its length (16 bits) and its bytes. The client opens with hello, the daemon
/// answers with welcome; both carry magic and version, and a side that finds others hangs up. After that the client
/// asks, each question with a number of its own that the answer repeats, and the daemon sends events as they come.
/// Neither side trusts the other: a message that isn't exactly valid ends the connection.
namespace devlink {

constexpr std::uint16_t kDefaultPort = 27104;
constexpr const char* kPortVariable = "OV_DEVLINK_PORT";

/// "OVLK" on the wire.
constexpr std::uint32_t kMagic = 0x4B4C564F;
constexpr std::uint16_t kVersion = 2;

constexpr std::size_t kHeaderBytes = 4;
constexpr std::size_t kMaxPayloadBytes = 1024;
/// Of a client's name.
constexpr std::size_t kMaxNameBytes = 64;
/// Of an application's or a mode's name.
constexpr std::size_t kMaxModeBytes = 400;
constexpr std::size_t kInfoBytes = 96;
constexpr std::size_t kInfoNameOffset = 20;
constexpr std::size_t kSettingsBytes = 148;
constexpr std::size_t kSettingsRotationOffset = 132;
constexpr std::size_t kSettingsZoomOffset = 138;
constexpr std::uint32_t kMaxDevices = 16;

enum class Kind : std::uint16_t {
  // client to daemon
  /// Magic, version, client name.
  hello = 1,
  /// Question.
  askDevices,
  /// Question, device index.
  askInfo,
  /// Question, device index.
  askSettings,
  /// Question, application, mode.
  setMode,
  // daemon to client; an answer is question, status (0 = good; of devices their count), record
  /// Magic, version.
  welcome = 0x81,
  devices,
  /// Record of 96 bytes.
  info,
  /// Record of 148 bytes.
  settings,
  modeTaken,
  /// Six axes x y z a b c, 16 bits each.
  motion,
  /// Event code, 0 or more.
  event
};

constexpr Kind answerTo(Kind question) {
  return static_cast<Kind>(static_cast<int>(question) + 0x80);
}
/// Bytes of an answer's record.
constexpr std::size_t recordBytes(Kind answer) {
  return answer == Kind::info ? kInfoBytes : answer == Kind::settings ? kSettingsBytes : 0;
}

using Axes = std::array<std::int16_t, 6>;
using Bytes = std::vector<std::uint8_t>;

/// Appends one message to a buffer, from left to right. The message is valid after each step.
class MessageWriter {
public:
  MessageWriter(Bytes& out, Kind kind);

  MessageWriter& number16(std::uint16_t value);
  MessageWriter& number32(std::uint32_t value);
  MessageWriter& text(std::string_view value);
  MessageWriter& record(const Bytes& bytes);

private:
  Bytes& mOut;
  const std::size_t mStart;
};

/// A received message; the payload belongs to the MessageBuffer.
struct Message {
  Kind mKind = Kind::hello;
  const std::uint8_t* mPayloadP = nullptr;
  std::size_t mSize = 0;
};

/// Reads a payload from left to right. What is missing reads as 0 or empty, and isGood() is false from then on.
class MessageReader {
public:
  explicit MessageReader(const Message& message) : mNextP(message.mPayloadP), mLeft(message.mSize) {}

  std::uint16_t number16();
  std::uint32_t number32();
  std::int32_t signed32() { return static_cast<std::int32_t>(number32()); }
  /// Returns a text of at most maxBytes that passes isText().
  std::string text(std::size_t maxBytes);
  Bytes record(std::size_t size);

  /// Returns true if everything that was read was there and valid, and nothing is left over.
  bool isGood() const { return mIsGood && mLeft == 0; }

private:
  bool take(std::size_t size);

  const std::uint8_t* mNextP;
  std::size_t mLeft;
  bool mIsGood = true;
};

/// Cuts a stream of bytes into messages. Holds one buffer at most, whatever the peer sends.
class MessageBuffer {
public:
  /// Returns where the next bytes go, and how many fit: never 0 after next() has returned Next::incomplete. Earlier
  /// payloads are invalid from then on.
  std::uint8_t* room(std::size_t& size);
  /// Notes that this number of bytes was put there.
  void added(std::size_t size) { mEnd += size; }

  enum class Next { message, incomplete, bad };
  /// bad: the length is out of bounds, so the next message can't be found.
  Next next(Message& message);

private:
  std::array<std::uint8_t, 16 * 1024> mBytes;
  std::size_t mStart = 0;
  std::size_t mEnd = 0;
};

/// Returns true for up to maxBytes bytes without control characters, null included. The code page is up to the
/// sender.
bool isText(std::string_view text, std::size_t maxBytes);

/// Returns the port number in a text; 0 if it isn't one from 1 to 65535.
std::uint16_t portFrom(std::string_view text);

} // namespace devlink

#endif
