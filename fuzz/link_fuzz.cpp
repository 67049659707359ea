// Either end of the connection between client and daemon, fed with anything. The client comes up for a good
// welcome only, takes answers to its questions and hands on the events; the daemon answers each good
// question, in order; either ends the connection at the first message that isn't good, and for nothing else.
//
// Input: which end is tested; pieces of the other end's bytes, each behind a byte for its length. From
// kOrders up that byte is an order instead: for the client to ask or to stop waiting, for the device to move
// or to send an event.

#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <map>

#include "check.h"
#include "input.h"
#include "link.h"
#include "peer.h"

using fuzz::require;
using namespace devlink;

namespace {

constexpr std::uint8_t kOrders = 0xF0;
constexpr std::uint32_t kWireMagic = 0x4B4C564F;
constexpr std::size_t kMaxPayload = 1024;

/// A message on the wire, cut with nothing of the code that is tested.
struct PlainFrame {
  unsigned kind = 0;
  std::string payload;

  unsigned number16(std::size_t at) const {
    return static_cast<std::uint8_t>(payload[at]) |
           static_cast<unsigned>(static_cast<std::uint8_t>(payload[at + 1])) << 8;
  }
  std::uint32_t number32(std::size_t at) const {
    return number16(at) | static_cast<std::uint32_t>(number16(at + 2)) << 16;
  }
};

/// Takes the first message off a stream. False if it isn't whole, or (isBroken) can't be cut.
bool cut(std::string& stream, PlainFrame& frame, bool& isBroken) {
  if (stream.size() < 4)
    return false;
  frame.payload = stream;
  const std::size_t size = frame.number16(0);
  frame.kind = frame.number16(2);
  isBroken = isBroken || size > kMaxPayload;
  if (isBroken || stream.size() - 4 < size)
    return false;
  frame.payload = stream.substr(4, size);
  stream.erase(0, 4 + size);
  return true;
}

/// Reads a text off a payload; false if it isn't all there, is too long or is no text.
bool cutText(std::string& payload, std::size_t maxBytes, std::string& text) {
  const PlainFrame frame{0, payload};
  if (payload.size() < 2 || payload.size() - 2 < frame.number16(0) || frame.number16(0) > maxBytes)
    return false;
  text = payload.substr(2, frame.number16(0));
  payload.erase(0, 2 + text.size());
  for (const char c : text)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
      return false;
  return true;
}

bool isGreeting(const PlainFrame& frame, unsigned kind) {
  return frame.kind == kind && frame.payload.size() >= 6 && frame.number32(0) == kWireMagic &&
         frame.number16(4) == kVersion;
}

/// Two sockets without a port; the first goes to the end that is tested.
struct Wire {
  Wire() { require(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0, "a pair of sockets"); }
  ~Wire() { close(ends[1]); }
  void feed(const std::string& bytes) const {
    require(send(ends[1], bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size()),
            "sent");
  }
  std::string drain() const {
    std::string found;
    char block[16384];
    for (ssize_t got = 0; (got = recv(ends[1], block, sizeof block, MSG_DONTWAIT)) > 0;)
      found.append(block, static_cast<std::size_t>(got));
    return found;
  }
  int ends[2] = {-1, -1};
};

/// What a client should make of a daemon's bytes.
struct PlainClient {
  bool isUp = false, isBroken = false;
  std::vector<std::int32_t> events;
  std::string lastMotion;
  std::map<std::uint32_t, std::pair<unsigned, std::string>> questions; // answer's kind, and what it said
  std::uint32_t lastQuestion = 0;

  bool take(const PlainFrame& frame) {
    const std::size_t size = frame.payload.size();
    if (!isUp)
      return isUp = isGreeting(frame, 0x81) && size == 6;
    if (frame.kind == 0x86) {
      lastMotion = frame.payload;
      return size == 12;
    }
    if (frame.kind == 0x87) {
      if (size == 4)
        events.push_back(static_cast<std::int32_t>(frame.number32(0)));
      return size == 4 && events.back() >= 0;
    }
    const std::size_t record = frame.kind == 0x83 ? 96 : frame.kind == 0x84 ? 148 : 0;
    if (frame.kind < 0x82 || frame.kind > 0x85 || size != 8 + record || frame.number32(0) == 0 ||
        frame.number32(0) > lastQuestion)
      return false;
    const auto question = questions.find(frame.number32(0));
    if (question == questions.end())
      return true; // too late
    const bool isGood = question->second.first == frame.kind && question->second.second.empty();
    if (isGood)
      question->second.second = frame.payload.substr(4);
    return isGood;
  }
};

void fuzzClient(fuzz::Input& input) {
  const Wire wire;
  Link link;
  link.mSocket.assign(asio::ip::tcp::v4(), wire.ends[0]);
  link.mSocket.non_blocking(true);
  link.greet("fuzz");
  PlainClient expected;
  for (std::string stream; !input.isAtEnd() && !expected.isBroken;) {
    const std::uint8_t order = input.byte();
    if (order < kOrders) {
      const std::string piece = input.text(order);
      wire.feed(piece);
      link.read();
      stream += piece;
      for (PlainFrame frame; !expected.isBroken && cut(stream, frame, expected.isBroken);)
        expected.isBroken = !expected.take(frame);
    } else if (expected.isUp && (order & 4) == 0) {
      const unsigned kind = 2 + (order & 3);
      expected.lastQuestion = link.ask(static_cast<Kind>(kind), [](FrameWriter&) {});
      expected.questions[expected.lastQuestion].first = kind + 0x80;
    } else if (!expected.questions.empty()) {
      link.mQuestions.erase(expected.questions.begin()->first);
      expected.questions.erase(expected.questions.begin());
    }
    const bool isUp = expected.isUp && !expected.isBroken;
    require((link.mState == Link::State::up) == isUp, "up from a good welcome to the first bad message");
    require((link.mState == Link::State::down) == expected.isBroken, "down at a bad message only");
  }
  for (const auto& [number, question] : expected.questions) {
    const Link::Question& found = link.mQuestions.at(number);
    require(found.mIsAnswered == !question.second.empty(), "answered by its answer only");
    require(!found.mIsAnswered ||
                question.second.substr(4) == std::string(found.mRecord.begin(), found.mRecord.end()),
            "the record, byte for byte");
  }
  std::vector<std::int32_t> events;
  std::string lastMotion;
  for (Event event; link.mEvents.take(event);)
    if (event.mCode == kMotionCode)
      lastMotion.assign(reinterpret_cast<const char*>(event.mAxes.data()), sizeof event.mAxes);
    else
      events.push_back(event.mCode);
  if (!expected.isBroken) // at its end the model has taken in what was bad
    require(events == expected.events && lastMotion == expected.lastMotion,
            "each event, and the last sample");
}

/// What a daemon should make of a client's bytes, and the daemon's own end of it.
struct PlainDaemon : PeerOwner {
  bool isGreeted = false, isBroken = false;
  std::vector<std::pair<unsigned, std::uint32_t>> answers; // kind, question
  std::vector<std::string> modes, foundModes;
  int greetings = 0, goodbyes = 0;
  DeviceState state{-1234567, true};

  const DeviceState& device() const override { return state; }
  void onGreeted(Peer&) override { ++greetings; }
  void onMode(const std::string& mode) override { foundModes.push_back(mode); }
  void onGone(Peer&, const std::string&) override { ++goodbyes; }

  bool take(const PlainFrame& frame) {
    std::string rest = frame.payload, text, mode;
    if (!isGreeted) {
      isGreeted =
          isGreeting(frame, 1) && cutText(rest.erase(0, 6), 64, text) && !text.empty() && rest.empty();
      return isGreeted;
    }
    const bool isMode = frame.kind == 5;
    if (frame.kind < 2 || frame.kind > 5 || rest.size() < 4)
      return false;
    rest.erase(0, 4);
    if (isMode ? !cutText(rest, 400, text) || !cutText(rest, 400, mode) || !rest.empty()
               : rest.size() != (frame.kind == 2 ? 0 : 4))
      return false;
    answers.emplace_back(frame.kind + 0x80, frame.number32(0));
    if (isMode)
      modes.push_back(mode);
    return true;
  }
};

void fuzzDaemon(fuzz::Input& input) {
  asio::io_context io;
  PlainDaemon expected;
  std::string output;
  std::vector<std::uint32_t> events;
  {
    const Wire wire;
    const auto peerP =
        std::make_shared<Peer>(asio::ip::tcp::socket(io, asio::ip::tcp::v4(), wire.ends[0]), expected);
    peerP->start();
    for (std::string stream; !input.isAtEnd() && !expected.isBroken;) {
      const std::uint8_t order = input.byte();
      if (order >= kOrders && peerP->isGreeted() && (order & 1) != 0) {
        peerP->giveMotion({input.signed16(), 1, -1, 0, 0, 0});
      } else if (order >= kOrders && peerP->isGreeted()) {
        events.push_back(static_cast<std::uint32_t>(input.signed32()) & 0x7FFFFFFF);
        peerP->giveEvent(static_cast<std::int32_t>(events.back()));
      } else {
        const std::string piece = input.text(order);
        wire.feed(piece);
        stream += piece;
        for (PlainFrame frame; !expected.isBroken && cut(stream, frame, expected.isBroken);)
          expected.isBroken = !expected.take(frame);
      }
      io.restart();
      io.poll();
      output += wire.drain();
      require(expected.goodbyes == expected.isBroken, "a bad message ends the connection, nothing else does");
    }
  }
  io.restart();
  io.poll();
  require(expected.goodbyes == 1, "one goodbye, whoever hangs up");
  require(expected.greetings == expected.isGreeted, "greeted once, by a good hello only");
  require(expected.modes == expected.foundModes, "modes as announced");
  std::size_t answered = 0, sent = 0;
  bool isBroken = false, isWelcome = true;
  for (PlainFrame frame; cut(output, frame, isBroken); isWelcome = false) {
    const std::size_t size = frame.payload.size();
    require(isWelcome == (isGreeting(frame, 0x81) && size == 6), "a welcome first, and no other");
    if (frame.kind == 0x87)
      require(size == 4 && sent < events.size() && frame.number32(0) == events[sent++], "events in order");
    else if (frame.kind == 0x86)
      require(size == 12, "a motion has six axes");
    else if (!isWelcome)
      require(size >= 8 && answered < expected.answers.size() &&
                  expected.answers[answered++] == std::make_pair(frame.kind, frame.number32(0)),
              "answers in the order of their questions");
  }
  require(output.empty() && !isBroken, "whole messages");
  if (!expected.isBroken)
    require(answered == expected.answers.size() && sent == events.size(), "each answer and each event");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  if (input.flag())
    fuzzClient(input);
  else
    fuzzDaemon(input);
  return 0;
}
