// Either end of the connection between client and daemon, fed with anything. The client comes up after a good
// welcome only, takes answers to its questions and passes on the events; the daemon answers each good
// question, in order; either ends the connection at the first bad message, and for no other reason.
//
// Input: which end is tested; pieces of the other end's bytes, each after a byte for its length. From kOrders
// up that byte is an order to the client instead: to ask, or to stop waiting for an answer.

#include <sys/socket.h>
#include <unistd.h>

#include "input.h"
#include "link.h"
#include "peer.h"
#include "require.h"

using fuzz::require;
using namespace devlink;

namespace {

constexpr std::uint8_t kOrders = 0xF0;
const std::string kGreeting("OVLK\2\0", 6);

/// A message on the wire, parsed without the code under test.
struct PlainMessage {
  unsigned kind = 0;
  std::string payload;

  /// Returns the number at an offset; bytes beyond the end are 0.
  std::uint32_t number(std::size_t at, std::size_t size = 4) const {
    std::uint32_t found = 0;
    for (std::size_t i = 0; i < size && at + i < payload.size(); ++i)
      found |= static_cast<std::uint32_t>(static_cast<std::uint8_t>(payload[at + i])) << 8 * i;
    return found;
  }
  bool isGreeting(unsigned ofKind) const { return kind == ofKind && payload.compare(0, 6, kGreeting) == 0; }
  /// Removes a text from the payload. Returns false if it is incomplete, too long or has control characters.
  bool cutText(std::size_t maxBytes, std::string& text) {
    const std::size_t size = number(0, 2);
    if (payload.size() < 2 + size || size > maxBytes)
      return false;
    text = payload.substr(2, size);
    payload.erase(0, 2 + size);
    for (const char c : text)
      if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
        return false;
    return true;
  }
};

/// Removes the first message from a stream. Returns false if it is incomplete, or too long, which sets isBroken.
bool cut(std::string& stream, PlainMessage& message, bool& isBroken) {
  const PlainMessage header{0, stream.substr(0, 4)};
  const std::size_t size = header.number(0, 2);
  if (stream.size() >= 4 && size > 1024)
    isBroken = true;
  if (stream.size() < 4 + size || isBroken)
    return false;
  message = {header.number(2, 2), stream.substr(4, size)};
  stream.erase(0, 4 + size);
  return true;
}

/// What one end is expected to make of a stream. take() returns whether a message is good.
template <class End> struct Plain : End {
  bool isBroken = false;
  std::string stream;

  void feed(const std::string& piece) {
    stream += piece;
    for (PlainMessage message; !isBroken && cut(stream, message, isBroken);)
      isBroken = !End::take(message);
  }
};

/// Two sockets without a port; the first goes to the end that is tested.
struct Wire {
  Wire() { require(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0, "a pair of sockets"); }
  ~Wire() { close(ends[1]); }
  void feed(const std::string& bytes) const {
    require(send(ends[1], bytes.data(), bytes.size(), MSG_NOSIGNAL) == ssize_t(bytes.size()), "sent");
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

struct PlainClient {
  bool isUp = false;
  std::vector<std::uint32_t> events;
  std::string lastMotion;
  std::map<std::uint32_t, std::pair<unsigned, std::string>> questions; // the answer's kind, and what it said
  std::uint32_t lastQuestion = 0;

  bool take(const PlainMessage& message) {
    const std::size_t size = message.payload.size();
    if (!isUp)
      return isUp = message.isGreeting(0x81) && size == 6;
    if (message.kind == 0x86 && size == 12) {
      lastMotion = message.payload;
      return true;
    }
    if (message.kind == 0x87 && size == 4 && message.number(0) < 0x80000000) {
      events.push_back(message.number(0));
      return true;
    }
    const std::size_t record = message.kind == 0x83 ? 96 : message.kind == 0x84 ? 148 : 0;
    if (message.kind < 0x82 || message.kind > 0x85 || size != 8 + record ||
        message.number(0) - 1 >= lastQuestion)
      return false;
    const auto found = questions.find(message.number(0));
    if (found == questions.end())
      return true; // too late
    auto& [kind, answer] = found->second;
    if (kind != message.kind || !answer.empty())
      return false;
    answer = message.payload.substr(4);
    return true;
  }
};

void fuzzClient(fuzz::Input& input) {
  const Wire wire;
  Link link;
  link.mSocket.assign(asio::ip::tcp::v4(), wire.ends[0]);
  link.mSocket.non_blocking(true);
  link.greet("fuzz");
  Plain<PlainClient> expected;
  while (!input.isAtEnd() && !expected.isBroken) {
    const std::uint8_t order = input.byte();
    if (order < kOrders) {
      const std::string piece = input.text(order);
      wire.feed(piece);
      link.read();
      expected.feed(piece);
    } else if (expected.isUp && (order & 4) == 0) {
      const unsigned kind = 2 + (order & 3);
      expected.lastQuestion = link.ask(static_cast<Kind>(kind), [](MessageWriter&) {});
      expected.questions[expected.lastQuestion].first = kind + 0x80;
      wire.drain(); // a daemon that doesn't read would be given up
    } else if (!expected.questions.empty()) {
      link.mQuestions.erase(expected.questions.begin()->first);
      expected.questions.erase(expected.questions.begin());
    }
    require(link.mState == (expected.isBroken ? Link::State::down
                            : expected.isUp   ? Link::State::up
                                              : Link::State::opening),
            "up from a good welcome to the first bad message");
  }
  for (const auto& [number, question] : expected.questions) {
    const auto& [kind, isAnswered, status, record] = link.mQuestions.at(number);
    const PlainMessage answer{question.first, question.second};
    require(static_cast<unsigned>(kind) == question.first && isAnswered == !answer.payload.empty() &&
                status == answer.number(0),
            "answered by its answer only");
    require(!isAnswered || answer.payload.substr(4) == std::string(record.begin(), record.end()),
            "the record");
  }
  std::vector<std::uint32_t> events;
  std::string lastMotion;
  for (Event event; link.mEvents.take(event);)
    if (event.mCode == kMotionCode)
      lastMotion.assign(reinterpret_cast<const char*>(event.mAxes.data()), sizeof event.mAxes);
    else
      events.push_back(static_cast<std::uint32_t>(event.mCode));
  require(events == expected.events && lastMotion == expected.lastMotion, "each event, and the last sample");
}

/// Stands in the daemon's place, too.
struct PlainDaemon : PeerOwner {
  bool isGreeted = false;
  std::vector<std::pair<unsigned, std::uint32_t>> answers; // kind, question
  std::vector<std::string> modes, foundModes;
  int greetings = 0, goodbyes = 0;
  DeviceState state{-1234567, true};

  const DeviceState& device() const override { return state; }
  void onGreeted(Peer&) override { ++greetings; }
  void onMode(const std::string& mode) override { foundModes.push_back(mode); }
  void onGone(Peer&, const std::string&) override { ++goodbyes; }

  bool take(PlainMessage message) {
    std::string text, mode;
    const std::size_t size = message.payload.size();
    const std::pair<unsigned, std::uint32_t> answer(message.kind + 0x80, message.number(0));
    if (!isGreeted) {
      const bool isHello = message.isGreeting(1);
      message.payload.erase(0, 6);
      return isGreeted = isHello && message.cutText(64, text) && !text.empty() && message.payload.empty();
    }
    if (message.kind == 5 && size >= 4) {
      message.payload.erase(0, 4);
      if (!message.cutText(400, text) || !message.cutText(400, mode) || !message.payload.empty())
        return false;
      modes.push_back(mode);
    } else if (message.kind < 2 || message.kind > 4 || size != (message.kind == 2 ? 4 : 8)) {
      return false;
    }
    answers.push_back(answer);
    return true;
  }
};

void fuzzDaemon(fuzz::Input& input) {
  asio::io_context io;
  Plain<PlainDaemon> expected;
  std::string output;
  const auto poll = [&io] {
    io.restart();
    io.poll();
  };
  {
    const Wire wire;
    const auto peerP = std::make_shared<Peer>(asio::ip::tcp::socket(io, asio::ip::tcp::v4(), wire.ends[0]),
                                              static_cast<PeerOwner&>(expected));
    peerP->start();
    while (!input.isAtEnd() && !expected.isBroken) {
      const std::string piece = input.text(input.byte());
      wire.feed(piece);
      expected.feed(piece);
      poll();
      output += wire.drain();
      require(expected.goodbyes == expected.isBroken, "a bad message ends the connection, nothing else does");
    }
  }
  poll();
  require(expected.goodbyes == 1, "one goodbye, whoever hangs up");
  require(expected.greetings == expected.isGreeted, "greeted once, by a good hello only");
  require(expected.modes == expected.foundModes, "modes as announced");
  std::size_t answered = 0;
  PlainMessage message;
  bool isBroken = false;
  if (cut(output, message, isBroken))
    require(message.isGreeting(0x81) && message.payload.size() == 6, "a welcome first");
  else
    require(!expected.isGreeted || expected.isBroken, "a welcome");
  for (; cut(output, message, isBroken); ++answered)
    require(answered < expected.answers.size() &&
                expected.answers[answered] == std::make_pair(message.kind, message.number(0)),
            "answers in the order of their questions");
  require(output.empty() && !isBroken, "whole messages");
  require(expected.isBroken || answered == expected.answers.size(), "nothing lost");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  input.flag() ? fuzzClient(input) : fuzzDaemon(input);
  return 0;
}
