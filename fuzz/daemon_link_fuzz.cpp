// The daemon's end of a connection, fed with anything: each good question is answered, in order, the first
// message that isn't good ends the connection, and what goes out is always well formed.
//
// Input: pieces of the client's bytes, each behind a byte for its length; between them events of the device.

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "check.h"
#include "input.h"
#include "peer.h"
#include "plain_frames.h"

using fuzz::PlainFrame;
using fuzz::require;
using fuzz::requireSame;
using namespace devlink;

namespace {

constexpr std::uint32_t kWireMagic = 0x4B4C564F;
constexpr std::int32_t kRotation = -1234567;

class Owner : public PeerOwner {
public:
  Owner() {
    mDevice.mRotationCode = kRotation;
    mDevice.mZoomsAfterView = true;
  }
  const DeviceState& device() const override { return mDevice; }
  void onGreeted(Peer&) override { ++mGreetings; }
  void onMode(Peer&, const std::string& mode) override { mModes.push_back(mode); }
  void onGone(Peer&, const std::string& reason) override {
    ++mGoodbyes;
    mReason = reason;
  }

  DeviceState mDevice;
  int mGreetings = 0;
  int mGoodbyes = 0;
  std::string mReason;
  std::vector<std::string> mModes;
};

/// What a daemon should make of a client's bytes.
struct Expected {
  bool isGreeted = false;
  bool isBroken = false;
  std::vector<std::pair<unsigned, std::uint32_t>> answers; // kind, question
  std::vector<std::string> modes;
};

/// The text at a place of a payload; false if it isn't all there, is too long or is no text.
bool plainText(const PlainFrame& frame, std::size_t& at, std::size_t maxBytes, std::string& text) {
  if (frame.payload.size() < at + 2)
    return false;
  const std::size_t size = frame.number16(at);
  if (frame.payload.size() - at - 2 < size || size > maxBytes)
    return false;
  text = frame.payload.substr(at + 2, size);
  at += 2 + size;
  return fuzz::isPlainText(text);
}

bool expectHello(const PlainFrame& frame) {
  std::size_t at = 6;
  std::string name;
  return frame.kind == 1 && frame.payload.size() > at && frame.number32(0) == kWireMagic &&
         frame.number16(4) == kVersion && plainText(frame, at, 64, name) && !name.empty() &&
         at == frame.payload.size();
}

bool expectQuestion(const PlainFrame& frame, Expected& expected) {
  const std::size_t size = frame.payload.size();
  if (size < 4)
    return false;
  const std::uint32_t question = frame.number32(0);
  switch (frame.kind) {
  case 2:
    expected.answers.emplace_back(0x82, question);
    return size == 4;
  case 3:
  case 4:
    expected.answers.emplace_back(frame.kind + 0x80, question);
    return size == 8;
  case 5: {
    std::size_t at = 4;
    std::string application;
    std::string mode;
    if (!plainText(frame, at, 400, application) || !plainText(frame, at, 400, mode) || at != size)
      return false;
    expected.answers.emplace_back(0x85, question);
    expected.modes.push_back(mode);
    return true;
  }
  default:
    return false;
  }
}

Expected expect(const std::string& stream) {
  Expected expected;
  bool isCut = false;
  for (const PlainFrame& frame : fuzz::plainFrames(stream, isCut)) {
    const std::size_t answers = expected.answers.size();
    const bool isGood = expected.isGreeted ? expectQuestion(frame, expected) : expectHello(frame);
    if (!isGood) {
      expected.answers.resize(answers);
      expected.isBroken = true;
      return expected;
    }
    expected.isGreeted = true;
  }
  expected.isBroken = isCut;
  return expected;
}

std::string drain(int socket) {
  std::string found;
  char block[16384];
  for (ssize_t got = 0; (got = recv(socket, block, sizeof block, MSG_DONTWAIT)) > 0;)
    found.append(block, static_cast<std::size_t>(got));
  return found;
}

/// What came out: a welcome, the answers in order, and events of those that were given.
void checkOutput(const std::string& output, const Expected& expected, std::vector<std::int32_t> events) {
  bool isCut = false;
  const std::vector<PlainFrame> frames = fuzz::plainFrames(output, isCut);
  require(!isCut, "lengths within bounds");
  std::size_t bytes = 0;
  std::size_t answered = 0;
  std::size_t event = 0;
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const PlainFrame& frame = frames[i];
    bytes += 4 + frame.payload.size();
    require((frame.kind == 0x81) == (i == 0), "a welcome first, and no other");
    if (frame.kind == 0x81) {
      require(frame.payload.size() == 6 && frame.number32(0) == kWireMagic, "the welcome carries the magic");
    } else if (frame.kind == 0x86) {
      require(frame.payload.size() == 12, "a motion has six axes");
    } else if (frame.kind == 0x87) {
      require(frame.payload.size() == 4 && event < events.size(), "no event that wasn't given");
      require(frame.number32(0) == static_cast<std::uint32_t>(events[event++]), "events in order");
    } else {
      require(answered < expected.answers.size(), "no answer without a question");
      require(frame.kind == expected.answers[answered].first, "the answer's kind fits");
      require(frame.payload.size() >= 8 && frame.number32(0) == expected.answers[answered].second,
              "the answer names its question");
      ++answered;
    }
  }
  require(bytes == output.size(), "whole messages");
  if (!expected.isBroken) {
    require(frames.empty() != expected.isGreeted, "a welcome for a hello");
    require(answered == expected.answers.size(), "an answer for each question");
    require(event == events.size(), "each event goes out");
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  int ends[2] = {-1, -1};
  require(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0, "a pair of sockets");
  fuzz::Input input(data, size);
  asio::io_context io;
  Owner owner;
  auto peerP = std::make_shared<Peer>(asio::ip::tcp::socket(io, asio::ip::tcp::v4(), ends[0]), owner);
  peerP->start();
  std::string stream;
  std::string output;
  std::vector<std::int32_t> events;
  while (!input.isAtEnd() && owner.mGoodbyes == 0) {
    const std::uint8_t length = input.byte();
    if (length >= 0xF0 && peerP->isGreeted()) { // the device has something to say
      if ((length & 1) != 0) {
        peerP->giveMotion({input.signed16(), 1, -1, 0, 0, 0});
      } else {
        events.push_back(input.signed32() & 0x7FFFFFFF);
        peerP->giveEvent(events.back());
      }
    } else {
      const std::string piece = input.text(length);
      stream += piece;
      require(send(ends[1], piece.data(), piece.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(piece.size()),
              "sent");
    }
    io.restart();
    io.poll();
    output += drain(ends[1]);
  }
  const Expected expected = expect(stream);
  require(owner.mGreetings == (expected.isGreeted ? 1 : 0), "greeted once, by a good hello only");
  require(owner.mModes == expected.modes, "modes as announced");
  require((owner.mGoodbyes == 1) == expected.isBroken,
          "a broken protocol ends the connection, nothing else does");
  if (expected.isBroken)
    requireSame(owner.mReason, "broke the protocol", "the reason");
  checkOutput(output, expected, events);

  close(ends[1]);
  io.restart();
  io.poll();
  require(owner.mGoodbyes == 1, "one goodbye, whoever hangs up");
  return 0;
}
