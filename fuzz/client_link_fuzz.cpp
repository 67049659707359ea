// The client's end of the connection, fed with anything: it comes up for a good welcome only, takes the
// answer to its question and no other, hands on the events up to the first message that isn't good, and then
// ends.
//
// Input: what is asked; the daemon's bytes before the question, behind their length; those that follow.

#include <sys/socket.h>
#include <unistd.h>

#include "check.h"
#include "input.h"
#include "link.h"
#include "plain_frames.h"
#include "wire_pair.h"

using fuzz::PlainFrame;
using fuzz::require;
using namespace devlink;

namespace {

constexpr std::uint32_t kWireMagic = 0x4B4C564F;
constexpr int kMaxFetches = 100000;

struct Asked {
  Kind question;
  Kind answer;
  std::size_t bytes; // of the answer, behind its number
};

constexpr Asked kAsked[] = {
    {Kind::askDevices, Kind::devices, 4},
    {Kind::askInfo, Kind::info, 4 + 96},
    {Kind::askSettings, Kind::settings, 4 + 148},
    {Kind::setMode, Kind::modeTaken, 4},
};

std::size_t answerBytes(unsigned kind) {
  for (const Asked& asked : kAsked)
    if (static_cast<unsigned>(asked.answer) == kind)
      return asked.bytes;
  return 0;
}

/// What a client should make of a daemon's bytes.
struct Expected {
  bool isUp = false;
  bool isAnswered = false;
  std::string answer;
  std::vector<std::int32_t> events;
  bool hasMotion = false;
  std::string lastMotion;
};

/// One message behind the welcome. False: it ends the connection.
bool expectFrame(const PlainFrame& frame, const Asked* askedP, Expected& expected) {
  const std::size_t size = frame.payload.size();
  if (frame.kind == 0x86) {
    if (size != 12)
      return false;
    expected.hasMotion = true;
    expected.lastMotion = frame.payload;
    return true;
  }
  if (frame.kind == 0x87) {
    if (size != 4 || (frame.number32(0) & 0x80000000u) != 0)
      return false;
    expected.events.push_back(static_cast<std::int32_t>(frame.number32(0)));
    return true;
  }
  const std::size_t bytes = answerBytes(frame.kind);
  // There is one question at the most, and it has the number 1.
  if (bytes == 0 || size != 4 + bytes || !askedP || frame.number32(0) != 1)
    return false;
  if (static_cast<unsigned>(askedP->answer) != frame.kind || expected.isAnswered)
    return false;
  expected.isAnswered = true;
  expected.answer = frame.payload.substr(4);
  return true;
}

Expected expect(const std::string& before, const std::string& behind, const Asked& asked) {
  Expected expected;
  bool isCut = false;
  const std::vector<PlainFrame> early = fuzz::plainFrames(before, isCut);
  if (isCut && early.empty())
    return expected;
  const std::vector<PlainFrame> all = fuzz::plainFrames(before + behind, isCut);
  if (early.empty() || early[0].kind != 0x81 || early[0].payload.size() != 6 ||
      early[0].number32(0) != kWireMagic || early[0].number16(4) != kVersion)
    return expected;
  expected.isUp = true;
  for (std::size_t i = 1; i < all.size(); ++i) {
    if (!expectFrame(all[i], i < early.size() ? nullptr : &asked, expected)) {
      if (i < early.size())
        expected.isUp = false;
      return expected;
    }
  }
  bool isCutEarly = false;
  fuzz::plainFrames(before, isCutEarly);
  if (isCutEarly)
    expected.isUp = false;
  return expected;
}

void feed(int socket, const std::string& bytes) {
  require(send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size()),
          "sent");
}

std::string textOf(const Axes& axes) {
  std::string text;
  for (const std::int16_t axis : axes) {
    text += static_cast<char>(axis & 0xFF);
    text += static_cast<char>(axis >> 8 & 0xFF);
  }
  return text;
}

void checkEvents(Link& link, const Expected& expected) {
  std::vector<std::int32_t> events;
  bool hasMotion = false;
  std::string lastMotion;
  Event event;
  int fetches = 0;
  while (link.fetch(event)) {
    require(++fetches < kMaxFetches, "events end");
    if (event.mCode == kMotionCode) {
      hasMotion = true;
      lastMotion = textOf(event.mAxes);
    } else {
      events.push_back(event.mCode);
      require(event.mAxes == Axes{}, "only motion has axes");
    }
  }
  require(events == expected.events, "each event once, in order");
  require(hasMotion == expected.hasMotion && lastMotion == expected.lastMotion, "the last sample arrives");
  require(!link.canFetch(), "nothing more behind the end");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const Asked& asked = kAsked[input.byte() % std::size(kAsked)];
  const std::string before = input.text(input.byte());
  const std::string behind = input.rest();
  const Expected expected = expect(before, behind, asked);

  const int daemonEnd = fuzz::daemonEnd();
  feed(daemonEnd, before);
  if (!expected.isUp) // or a client would wait for the rest of a welcome
    shutdown(daemonEnd, SHUT_WR);
  {
    Link link;
    const bool isUp = link.open(1, "fuzz");
    require(isUp == expected.isUp, "up for a good welcome only");
    if (isUp) {
      feed(daemonEnd, behind);
      shutdown(daemonEnd, SHUT_WR);
      Bytes answer;
      const auto addArguments = [&asked](FrameWriter& frame) {
        if (asked.question == Kind::setMode)
          frame.text("a").text("b");
        else if (asked.question != Kind::askDevices)
          frame.number32(0);
      };
      const bool isAnswered = link.ask(asked.question, addArguments, asked.answer, answer);
      require(isAnswered == expected.isAnswered, "answered by the answer only");
      require(std::string(answer.begin(), answer.end()) == expected.answer, "the answer, byte for byte");
      checkEvents(link, expected);
    }
    link.close();
    require(!link.canFetch(), "closed");
  }
  close(daemonEnd);
  return 0;
}
