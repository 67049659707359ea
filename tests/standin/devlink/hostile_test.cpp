// Whatever answers at the daemon's port, the client library survives and reports failures. Whatever a client sends, the
// daemon drops it, and its other clients aren't affected.

#include "fixture.h"

using devlink::Bytes;
using devlink::Kind;
using devlink::kMagic;
using devlink::kVersion;
using namespace std::string_literals;

namespace {

TEST_F(LinkTest, SilentDaemonIsGivenUp) {
  const FakeDaemon daemon([](RawEnd& end) { end.drain(); });
  EXPECT_NE(ovConnect(0, "acad"), 0);
  std::atomic<bool> isOver{false};
  std::thread connecting([&] {
    EXPECT_NE(ovConnect(0, "acad"), 0);
    isOver = true;
  });
  int closed = 0;
  while (!isOver)
    closed += ovDisconnect() == 0; // ends the attempt
  connecting.join();
  EXPECT_EQ(closed, 1);
}

TEST_F(LinkTest, UnfetchedFloodEndsLink) {
  std::atomic<bool> isDropped{false};
  const FakeDaemon daemon([&](RawEnd& end) {
    Bytes flood;
    for (int i = 0; i < 1000; ++i)
      flood = flood + message(Kind::event, i);
    end.send(kWelcome);
    while (end.send(flood))
      ;
    isDropped = true;
  });
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  for (int i = 0; i < 20000 && !isDropped; ++i) { // each question reads the link in its search for an answer
    isConnected();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_TRUE(isDropped);
  EXPECT_EQ(fetched(), "event 0") << "what had been taken in still comes out";
}

asio::io_context gIo; // of the clients
const Bytes kHello = message(Kind::hello, kMagic, kVersion, "raw"s);

TEST_F(LinkTest, MuteClientsAreDropped) {
  RunningDaemon daemon;
  std::vector<RawEnd> clients;
  for (std::size_t i = 0; i < 16; ++i)
    clients.emplace_back(gIo, daemon.port(), Bytes(i % 2, 1)); // nothing, or the beginning of a message
  EXPECT_NE(ovConnect(0, "acad"), 0) << "a seventeenth client";
  for (RawEnd& client : clients)
    client.drain();
  EXPECT_EQ(ovConnect(0, "acad"), 0);
}

TEST_F(LinkTest, LazyClientIsDroppedAlone) {
  RunningDaemon daemon;
  RawEnd lazy(gIo, daemon.port(), message(Kind::hello, kMagic, kVersion, "lazy"s));
  RawEnd busy(gIo, daemon.port(), kHello);
  // A small one of its own: the system's grows to megabytes where events come one by one.
  lazy.socket().set_option(asio::socket_base::receive_buffer_size(8 * 1024));
  daemon.waitFor("client connected lazy");
  daemon.waitFor("client connected raw");
  int received = 0;
  std::thread reading([&] {
    for (auto message = busy.receive(); message && message->second != Bytes{0x22, 0, 2, 0}; ++received)
      message = busy.receive();
  });
  int played = 0;
  for (; played % 1000 != 0 || !daemon.hasRecorded("client gone lazy"); ++played)
    daemon.play("key 1");
  EXPECT_GT(played, 60000) << "that was no backlog yet";
  daemon.play("key 2");
  reading.join();
  EXPECT_EQ(received, 2 + played); // the welcome and the question for the mode come first
}

TEST_F(LinkTest, UnreadAnswersEndReading) {
  RunningDaemon daemon;
  RawEnd asking(gIo, daemon.port(), kHello);
  asking.socket().non_blocking(true);
  Bytes questions;
  for (int i = 0; i < 1000; ++i)
    questions = std::move(questions) + message(Kind::askSettings, i, 0);
  // Answers are many times larger than questions; in the end the questions stay in the sockets, 10 MB at
  // most.
  std::size_t sent = 0;
  for (int refusals = 0; refusals < 100 && sent < (12u << 20);) {
    asio::error_code error;
    sent += asking.socket().write_some(asio::buffer(questions), error);
    refusals = error ? refusals + 1 : 0;
    std::this_thread::sleep_for(std::chrono::microseconds(error ? 1000 : 0));
  }
  EXPECT_LT(sent, 12u << 20);
  EXPECT_EQ(ovConnect(0, "acad"), 0);
}

} // namespace
