// The daemon against clients that are none, and as the one who plays.

#include "fixture.h"

#include <gmock/gmock.h>

using devlink::Bytes;
using devlink::Kind;
using testing::ElementsAre;

namespace {

Bytes mode(const std::string& application, const std::string& name) {
  Bytes out;
  devlink::FrameWriter(out, Kind::setMode).number32(1).text(application).text(name);
  return out;
}

Bytes lying(Bytes message, std::size_t at, std::uint8_t value) {
  message[at] = value;
  return message;
}

class BadClientTest : public LinkTest, public testing::WithParamInterface<Said> {};

TEST_P(BadClientTest, isDroppedAndTheOthersDoNotNotice) {
  RunningDaemon daemon;
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  RawClient bad(daemon.port());
  bad.send(GetParam().mBytes);
  bad.drain(); // returns when the daemon has hung up
  EXPECT_TRUE(isConnected());
  daemon.play("key 1");
  EXPECT_EQ(fetched(), "event 131105");
  for (const std::string& line : daemon.mSaid.all())
    EXPECT_EQ(line.find("mode: "), std::string::npos) << "a bad announcement is none";
}

INSTANTIATE_TEST_SUITE_P(
    LinkTest, BadClientTest,
    testing::Values(
        Said{"otherProgram", bytes("GET / HTTP/1.1\r\nHost: localhost\r\n\r\n")},
        Said{"otherMagic", hello("x", 0x12345678)}, Said{"olderVersion", hello("x", devlink::kMagic, 1)},
        Said{"newerVersion", hello("x", devlink::kMagic, 3)}, Said{"noName", hello("")},
        Said{"longName", hello(std::string(65, 'n'))}, Said{"nameWithNull", hello(std::string("a\0b", 3))},
        Said{"nameLongerThanMessage", lying(hello("abc"), 10, 200)},
        Said{"questionBeforeHello", frame(Kind::askDevices, 1)},
        Said{"oversized", lying(hello("x"), 1, 0xFF)}, Said{"oversizedQuestion", hello() + Bytes{1, 4, 2, 0}},
        Said{"helloTwice", hello() + hello()}, Said{"unknownKind", hello() + Bytes{0, 0, 99, 0}},
        Said{"daemonsMessage", hello() + frame(Kind::event, 1)},
        Said{"questionWithoutNumber", hello() + Bytes{0, 0, 2, 0}},
        Said{"longQuestion", hello() + frame(Kind::askDevices, 1, 2)},
        Said{"shortQuestion", hello() + frame(Kind::askInfo, 1)},
        Said{"longMode", hello() + mode("AutoCAD", std::string(401, 'm'))},
        Said{"modeWithEscape", hello() + mode("AutoCAD", "\x1B[2J")},
        Said{"modeWithDelete", hello() + mode("AutoCAD", "a\x7F")},
        Said{"modeWithoutName", hello() + frame(Kind::setMode, 1)}),
    nameOf);

TEST_F(LinkTest, whoDoesNotGreetIsDroppedAfterAWhile) {
  RunningDaemon daemon;
  RawClient silent(daemon.port()), half(daemon.port());
  half.send(Bytes{4, 0, 1});
  silent.drain();
  half.drain();
  EXPECT_EQ(ovConnect(0, "acad"), 0);
}

TEST_F(LinkTest, whoDoesNotReadHisEventsIsDroppedAndTheOthersGetAll) {
  RunningDaemon daemon;
  RawClient lazy(daemon.port()), busy(daemon.port());
  // A small one of its own: the system's grows to megabytes where events come one by one.
  lazy.socket().set_option(asio::socket_base::receive_buffer_size(8 * 1024));
  lazy.send(hello("lazy"));
  busy.send(hello("busy"));
  ASSERT_TRUE(daemon.mSaid.waitFor("client connected", 2));
  int received = 0;
  std::thread reading([&] {
    while (const auto message = busy.receive())
      received += message->first == Kind::event;
  });
  int played = 0;
  for (; played < 400000; ++played) {
    daemon.play("key 1");
    if (played % 1000 == 0 && daemon.mSaid.all().size() > 2)
      break;
  }
  EXPECT_TRUE(daemon.mSaid.waitFor("client gone: lazy"));
  EXPECT_GT(played, 60000) << "that was no backlog yet";
  (*daemon).stop();
  daemon.join();
  reading.join();
  EXPECT_GT(received, played / 2);
}

TEST_F(LinkTest, whoAsksWithoutReadingTheAnswersIsNotReadOn) {
  RunningDaemon daemon;
  RawClient asking(daemon.port());
  asking.send(hello("asking"));
  ASSERT_TRUE(daemon.mSaid.waitFor("client connected"));
  Bytes questions;
  for (int i = 0; i < 1000; ++i)
    questions = std::move(questions) + frame(Kind::askSettings, i, 0);
  asking.socket().non_blocking(true);
  // Answers are many times larger than questions; in the end the questions stay in the socket.
  const long before = residentBytes();
  std::size_t sent = 0;
  int refusals = 0;
  while (refusals < 100 && sent < (64u << 20)) {
    asio::error_code error;
    sent += asking.socket().write_some(asio::buffer(questions), error);
    ASSERT_TRUE(!error || error == asio::error::would_block) << error.message();
    refusals = error ? refusals + 1 : 0;
    if (error)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_EQ(refusals, 100);
  EXPECT_LT(residentBytes() - before, 16 << 20);
  EXPECT_EQ(ovConnect(0, "acad"), 0);
  EXPECT_TRUE(isConnected());
}

TEST_F(LinkTest, seventeenClientsAreOneTooMany) {
  RunningDaemon daemon;
  std::vector<std::unique_ptr<RawClient>> clients;
  for (int i = 0; i < 16; ++i) {
    clients.push_back(std::make_unique<RawClient>(daemon.port()));
    clients.back()->send(hello());
    ASSERT_TRUE(clients.back()->receive());
  }
  RawClient tooMany(daemon.port());
  tooMany.send(hello());
  EXPECT_FALSE(tooMany.receive());
  clients.pop_back();
  ASSERT_TRUE(daemon.mSaid.waitFor("client gone"));
  EXPECT_EQ(ovConnect(0, "acad"), 0);
}

TEST_F(LinkTest, anAbsentDaemonIsGoneAndComesBackToItsPort) {
  RunningDaemon daemon({}, rig::quietPort());
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  daemon.play("motion 0 0 300 0 0 0");
  daemon.play("away 2"); // seconds; all that follows up to its return takes far less
  EXPECT_EQ(fetched(), "motion 0 0 300 0 0 0");
  EXPECT_EQ(fetched(), "failure");
  EXPECT_FALSE(isConnected());
  EXPECT_EQ(ovDisconnect(), 0);
  EXPECT_NE(ovConnect(0, "acad"), 0) << "nobody listens now";
  daemon.play("motion 0 0 0 0 0 0");
  while (ovConnect(0, "acad") != 0)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_EQ(fetched(), "motion 0 0 0 0 0 0");
  EXPECT_THAT(daemon.mRecorded.all(),
              ElementsAre("client connected acad", "motion 0 0 300 0 0 0", "away 2.000", "client gone acad",
                          "back", "client connected acad"));
}

} // namespace
