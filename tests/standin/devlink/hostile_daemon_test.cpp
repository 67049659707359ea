// Whatever answers at the daemon's port, the client library survives it and says so.

#include "fixture.h"

#include <gmock/gmock.h>

#include <atomic>

using devlink::Bytes;
using devlink::Kind;

namespace {

Bytes header(unsigned length, unsigned kind) {
  return {static_cast<std::uint8_t>(length & 0xFF), static_cast<std::uint8_t>(length >> 8),
          static_cast<std::uint8_t>(kind & 0xFF), static_cast<std::uint8_t>(kind >> 8)};
}

Bytes beginningOf(Bytes whole, std::size_t size) {
  whole.resize(size);
  return whole;
}

/// What a good daemon does up to the first question, which has to be about the devices. What comes later in
/// the same breath as a welcome would be part of the greeting's success.
void welcomeAndAnswerOnce(RawEnd& end) {
  end.greet();
  end.receive();
  end.send(frame(Kind::devices, 1, 1));
}

class BadGreetingTest : public LinkTest, public testing::WithParamInterface<Said> {};

TEST_P(BadGreetingTest, isNoConnection) {
  const auto descriptors = openDescriptors();
  {
    FakeDaemon daemon([&](RawEnd& end) {
      end.send(GetParam().mBytes);
      asio::error_code ignored; // the client may have hung up already
      end.socket().shutdown(asio::socket_base::shutdown_send, ignored);
      end.drain();
    });
    EXPECT_NE(ovConnect(0, "acad"), 0);
    EXPECT_FALSE(isConnected());
    EXPECT_EQ(fetched(), "failure");
    EXPECT_NE(ovDisconnect(), 0) << "nothing is left to be closed";
  }
  EXPECT_LE(openDescriptors(), descriptors); // fewer, where the system drops some of its own meanwhile
}

INSTANTIATE_TEST_SUITE_P(
    LinkTest, BadGreetingTest,
    testing::Values(
        Said{"nothing", {}}, Said{"otherProgram", bytes("HTTP/1.1 400 Bad Request\r\n\r\n")},
        Said{"otherMagic", welcome(0x12345678)}, Said{"olderVersion", welcome(devlink::kMagic, 1)},
        Said{"newerVersion", welcome(devlink::kMagic, 3)}, Said{"half", beginningOf(welcome(), 7)},
        Said{"tooShort", header(4, 0x81) + bytes("OVLK")},
        Said{"tooLong", header(7, 0x81) + beginningOf(welcome(), 10) + bytes("x")},
        Said{"oversized", header(0xFFFF, 0x81) + Bytes(70000, 'x')},
        Said{"eventFirst", frame(Kind::event, 0x20020) + welcome()}, Said{"anotherClient", hello()}),
    nameOf);

class BadMessageTest : public LinkTest, public testing::WithParamInterface<Said> {};

TEST_P(BadMessageTest, endsTheLinkAfterWhatCameBefore) {
  FakeDaemon daemon([&](RawEnd& end) {
    welcomeAndAnswerOnce(end);
    end.send(frame(Kind::event, 7) + GetParam().mBytes);
    end.drain();
  });
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  ASSERT_TRUE(isConnected());
  EXPECT_EQ(fetched(), "event 7");
  EXPECT_EQ(fetched(), "failure");
  EXPECT_FALSE(isConnected());
  EXPECT_EQ(ovDisconnect(), 0);
}

INSTANTIATE_TEST_SUITE_P(LinkTest, BadMessageTest,
                         testing::Values(Said{"oversized", header(1025, 0x87)},
                                         Said{"unknownKind", header(0, 0x99)},
                                         Said{"shortMotion", header(10, 0x86) + Bytes(10, 0)},
                                         Said{"longMotion", header(13, 0x86) + Bytes(13, 0)},
                                         Said{"shortEvent", header(2, 0x87) + Bytes(2, 0)},
                                         Said{"negativeEvent", frame(Kind::event, -1)},
                                         Said{"welcomeAgain", welcome()},
                                         Said{"aQuestion", frame(Kind::askDevices, 1)},
                                         Said{"answerToNoQuestion", frame(Kind::devices, 2, 1)},
                                         Said{"answerOfWrongSize", frame(Kind::devices, 1)}),
                         nameOf);

TEST_F(LinkTest, aDaemonThatDiesInTheMiddleOfAMessageIsGone) {
  FakeDaemon daemon([](RawEnd& end) {
    welcomeAndAnswerOnce(end);
    end.send(frame(Kind::event, 1) + beginningOf(frame(Kind::event, 2), 6));
  });
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  ASSERT_TRUE(isConnected());
  EXPECT_EQ(fetched(), "event 1");
  EXPECT_EQ(fetched(), "failure") << "half an event is none";
  EXPECT_EQ(ovConnect(0, "acad"), 0) << "and the next daemon is welcome";
  ASSERT_TRUE(isConnected());
  EXPECT_EQ(fetched(), "event 1");
}

TEST_F(LinkTest, messagesThatComeInPiecesAreWhole) {
  FakeDaemon daemon([](RawEnd& end) {
    asio::error_code ignored;
    end.socket().set_option(asio::ip::tcp::no_delay(true), ignored);
    for (const std::uint8_t byte : welcome() + motionFrame({1, 2, 3, 4, 5, -6}) + frame(Kind::event, 0x20020))
      end.send({byte});
    end.drain();
  });
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  EXPECT_EQ(fetched(), "motion 1 2 3 4 5 -6");
  EXPECT_EQ(fetched(), "event 131104");
}

TEST_F(LinkTest, aSilentDaemonIsGivenUpAndDisconnectingEndsTheAttempt) {
  FakeDaemon daemon([](RawEnd& end) { end.drain(); });
  EXPECT_NE(ovConnect(0, "acad"), 0);
  EXPECT_NE(ovDisconnect(), 0);
  for (int round = 0; round < 5; ++round) {
    std::atomic<bool> isOver{false};
    std::thread connecting([&] {
      EXPECT_NE(ovConnect(0, "acad"), 0);
      isOver = true;
    });
    int closed = 0;
    while (!isOver)
      closed += ovDisconnect() == 0;
    connecting.join();
    EXPECT_EQ(closed, 1);
  }
}

TEST_F(LinkTest, anAnswerThatComesTooLateIsNotTakenForTheNext) {
  FakeDaemon daemon([](RawEnd& end) {
    end.greet();
    end.receive(); // question 1, not answered in time
    end.receive();
    end.send(frame(Kind::devices, 1, 9) + frame(Kind::devices, 2, 2));
    end.drain();
  });
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  EXPECT_FALSE(isConnected());
  int count = 0;
  EXPECT_EQ(ovGetDevNum(&count, nullptr, nullptr), 0);
  EXPECT_EQ(count, 2);
}

TEST_F(LinkTest, answersThatDoNotFitTheQuestionAreFailures) {
  const auto answering = [](const Bytes& answer) {
    return [answer](RawEnd& end) {
      end.greet();
      end.receive();
      end.send(answer);
      end.drain();
    };
  };
  const Bytes badAnswers[] = {frame(Kind::devices, 1, -1), frame(Kind::devices, 1, 17),
                              frame(Kind::modeTaken, 1, 0), frame(Kind::devices, 2, 1),
                              frame(Kind::devices, 0, 1)};
  for (const Bytes& bad : badAnswers) {
    FakeDaemon daemon(answering(bad));
    ASSERT_EQ(ovConnect(0, "acad"), 0);
    int count = 77;
    EXPECT_NE(ovGetDevNum(&count, nullptr, nullptr), 0);
    EXPECT_EQ(count, 77);
    EXPECT_EQ(ovDisconnect(), 0);
  }
  // A name without an end stays inside the record.
  Bytes endless;
  devlink::FrameWriter(endless, Kind::info).number32(1).number32(0).record(Bytes(96, 'n').data(), 96);
  FakeDaemon daemon(answering(endless));
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  std::array<char, 96> record;
  ASSERT_EQ(ovGetDevInfo(0, record.data()), 0);
  EXPECT_EQ(std::string(record.data() + 20), std::string(75, 'n'));
}

TEST_F(LinkTest, aFloodIsTakenInWithoutLossAndWithoutMemory) {
  constexpr int kEvents = 100000, kKeyEach = 10;
  FakeDaemon daemon([](RawEnd& end) {
    end.send(welcome());
    Bytes flood;
    for (int i = 1; i <= kEvents; ++i) {
      flood = std::move(flood) + (i % kKeyEach == 0
                                      ? frame(Kind::event, i)
                                      : motionFrame({static_cast<std::int16_t>(i % 1000), 0, 0, 0, 0, 1}));
      if (flood.size() > 8000 || i == kEvents) {
        end.send(flood);
        flood.clear();
      }
    }
    end.send(motionFrame({}) + frame(Kind::event, kEvents + kKeyEach));
    end.drain();
  });
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  const long before = residentBytes();
  int key = 0;
  std::string lastMotion;
  while (key < kEvents + kKeyEach) {
    const std::string event = fetched();
    if (event.rfind("motion", 0) == 0) {
      lastMotion = event;
      continue;
    }
    key += kKeyEach;
    ASSERT_EQ(event, "event " + std::to_string(key));
  }
  if (lastMotion != "motion 0 0 0 0 0 0") {
    EXPECT_EQ(fetched(), "motion 0 0 0 0 0 0");
  }
  EXPECT_LT(residentBytes() - before, 8 << 20);
}

TEST_F(LinkTest, aFloodThatNobodyFetchesEndsTheLinkNotTheMemory) {
  std::atomic<bool> isDropped{false};
  FakeDaemon daemon([&](RawEnd& end) {
    end.send(welcome());
    Bytes flood;
    for (int i = 0; i < 1000; ++i)
      flood = std::move(flood) + frame(Kind::event, i);
    while (end.send(flood))
      ;
    isDropped = true;
  });
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  const long before = residentBytes();
  // Each question reads the link in its search for an answer.
  for (int i = 0; i < 20000 && !isDropped; ++i) {
    isConnected();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_TRUE(isDropped);
  EXPECT_LT(residentBytes() - before, 16 << 20);
  EXPECT_EQ(fetched(), "event 0") << "what had been taken in still comes out";
}

} // namespace
