#include "fixture.h"

#include "call_log.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cstring>
#include <numeric>

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using namespace std::string_literals;

namespace {

using std::chrono::milliseconds;

TEST_F(LinkTest, tellsDevicesAndSettings) {
  RunningDaemon daemon;
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  int count = -1;
  EXPECT_EQ(ovGetDevNum(&count, nullptr, nullptr), 0);
  EXPECT_EQ(count, 1);

  std::array<char, 149> record;
  record.fill('x');
  for (const int index : {1, -1, 1 << 30}) { // no such device
    EXPECT_NE(ovGetDevInfo(index, record.data()), 0);
    EXPECT_NE(ovGetAdvancedSettings(index, record.data()), 0);
    EXPECT_NE(ovFetchEvent(index, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                           nullptr, nullptr, nullptr),
              0);
  }
  EXPECT_THAT(record, Each('x'));
  EXPECT_EQ(ovGetDevInfo(0, record.data()), 0);
  EXPECT_THAT(record.data() + 20, HasSubstr("Orvaner"));
  EXPECT_LT(std::strlen(record.data() + 20), 76u);
  EXPECT_EQ(record[96], 'x') << "written past the record";

  daemon.play("rotation 66051 zoomall"); // 0x010203
  EXPECT_EQ(fetched(), "event 131073");
  EXPECT_EQ(ovGetAdvancedSettings(0, record.data()), 0);
  EXPECT_EQ(std::string(&record[132], 7), std::string("\3\2\1\0\0\0\1", 7));
  EXPECT_EQ(std::accumulate(record.begin(), record.end(), 0), 7 + 'x') << "only those bytes say anything";
  EXPECT_EQ(record[148], 'x') << "written past the record";
  daemon.play("rotation -2");
  EXPECT_EQ(ovGetAdvancedSettings(0, record.data()), 0);
  EXPECT_EQ(std::string(&record[132], 7), std::string("\xFE\xFF\xFF\xFF\0\0\0", 7));
}

TEST_F(LinkTest, announcesModes) {
  RunningDaemon daemon;
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  EXPECT_EQ(ovSetApplMode("AutoCAD", "Model"), 0);
  EXPECT_EQ(ovSetApplMode("AutoCAD", ""), 0);
  EXPECT_EQ(ovSetApplMode("AutoCAD", "Pl\xE4ne"), 0) << "any code page";
  EXPECT_EQ(ovSetApplMode("AutoCAD", std::string(400, 'm').c_str()), 0);
  EXPECT_NE(ovSetApplMode("AutoCAD", std::string(401, 'm').c_str()), 0);
  EXPECT_NE(ovSetApplMode("AutoCAD", "two\nlines"), 0);
  EXPECT_NE(ovSetApplMode("AutoCAD", nullptr), 0);
  EXPECT_NE(ovSetApplMode(nullptr, "Model"), 0);
  EXPECT_THAT(daemon.mRecorded.all(), ElementsAre("client connected acad", "mode Model", "mode ",
                                                  "mode Pl\xE4ne", "mode " + std::string(400, 'm')));
  EXPECT_TRUE(daemon.mSaid.waitFor("mode: Model"));
  EXPECT_TRUE(isConnected()) << "what was refused here never reached the daemon";
}

TEST_F(LinkTest, refusesNamesAndPortsThatAreNone) {
  RunningDaemon daemon;
  for (const char* name : {"", "a\tb", static_cast<const char*>(nullptr)})
    EXPECT_NE(ovConnect(0, name), 0);
  EXPECT_NE(ovConnect(0, std::string(65, 'n').c_str()), 0);
  const std::string good = std::to_string(daemon.port());
  for (const std::string& port : {"0"s, "65536"s, "x"s, "-1"s, good + " ", good + "x"}) {
    usePort(port);
    EXPECT_NE(ovConnect(0, "acad"), 0) << port;
  }
  EXPECT_NE(ovDisconnect(), 0) << "no attempt left a link";
  usePort(good);
  EXPECT_EQ(ovConnect(0, std::string(64, 'n').c_str()), 0);
}

TEST_F(LinkTest, deliversEventsInTheirOrder) {
  RunningDaemon daemon;
  call_log::throwAt("ovConnect", 1);
  EXPECT_NE(ovConnect(0, "acad"), 0) << "no exception gets out";
  call_log::clear();
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  ASSERT_EQ(ovConnect(0, "acad"), 0) << "the second one keeps the link";
  for (const char* line : {"key 0", "view back", "motion 1 -2 32767 -32768 5 6", "zoom", "event 0x2001F"})
    daemon.play(line);
  std::vector<std::string> found = {"client connected acad"};
  for (const char* event :
       {"event 131104", "event 131094", "motion 1 -2 32767 -32768 5 6", "event 131084", "event 131103"}) {
    found.push_back(fetched());
    EXPECT_EQ(found.back(), event);
  }
  EXPECT_EQ(daemon.mRecorded.all(), found);
}

TEST_F(LinkTest, noKeyIsLostOrDoubledAmongMotionAndQuestions) {
  constexpr int kKeys = 10000;
  RunningDaemon daemon;
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  std::vector<int> counts(kKeys);
  std::mutex countsMutex;
  std::atomic<bool> isOver{false};
  const auto fetchAll = [&] {
    for (std::string event; (event = fetched()) != "failure";) {
      if (event.rfind("event ", 0) != 0)
        continue;
      const std::lock_guard<std::mutex> lock(countsMutex);
      ++counts[static_cast<std::size_t>(std::stoi(event.substr(6)) - 0x20020)];
    }
  };
  std::thread fetchers[] = {std::thread(fetchAll), std::thread(fetchAll)};
  std::thread asker([&] {
    while (!isOver)
      EXPECT_TRUE(isConnected());
  });
  for (int key = 0; key < kKeys; ++key) {
    daemon.play("key " + std::to_string(key));
    if (key % 3 == 0)
      daemon.play("motion 0 0 " + std::to_string(key) + " 0 0 0");
  }
  isOver = true;
  asker.join();
  const auto allThere = [&] {
    const std::lock_guard<std::mutex> lock(countsMutex);
    return std::accumulate(counts.begin(), counts.end(), 0) >= kKeys;
  };
  while (!allThere() && isConnected())
    std::this_thread::sleep_for(milliseconds(1));
  EXPECT_EQ(ovDisconnect(), 0);
  for (std::thread& thread : fetchers)
    thread.join();
  EXPECT_THAT(counts, Each(1));
}

TEST_F(LinkTest, ofMotionThatNobodyFetchedTheNewestComesSoon) {
  RunningDaemon daemon;
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  daemon.play("motion 0 0 0 0 0 7");
  constexpr int kSamples = 30000;
  for (int i = 1; i <= kSamples; ++i)
    daemon.play("motion " + std::to_string(i) + " 0 0 0 0 0");
  int count = 1;
  for (; fetched() != "motion 30000 0 0 0 0 0"; ++count)
    ASSERT_LT(count, kSamples);
  EXPECT_LT(count, kSamples / 100) << "old samples were delivered one by one";
  daemon.play("motion 0 0 0 0 0 0");
  EXPECT_EQ(fetched(), "motion 0 0 0 0 0 0");
}

TEST_F(LinkTest, whoComesLateLearnsWhereTheCapIs) {
  RunningDaemon daemon;
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  daemon.play("motion 0 0 300 0 0 0");
  EXPECT_EQ(fetched(), "motion 0 0 300 0 0 0");
  EXPECT_EQ(ovDisconnect(), 0);
  daemon.play("motion 0 0 0 0 0 0");
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  EXPECT_EQ(fetched(), "motion 0 0 0 0 0 0") << "released while nobody listened";
}

TEST_F(LinkTest, withoutALinkEverythingFailsAndFetchingWaits) {
  usePort("1"); // nobody listens there
  char record[148];
  EXPECT_NE(ovConnect(0, "acad"), 0);
  EXPECT_NE(ovDisconnect(), 0);
  EXPECT_FALSE(isConnected());
  EXPECT_NE(ovGetDevInfo(0, record), 0);
  EXPECT_NE(ovGetAdvancedSettings(0, record), 0);
  EXPECT_NE(ovSetApplMode("AutoCAD", "Model"), 0);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(fetched(), "failure");
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(90)) << "a loop around it would spin";
}

TEST_F(LinkTest, disconnectingFreesWhoeverWaits) {
  for (int round = 0; round < 20; ++round) {
    RunningDaemon daemon;
    ASSERT_EQ(ovConnect(0, "acad"), 0);
    std::atomic<int> waiting{0};
    std::vector<std::thread> fetchers;
    for (int i = 0; i < 3; ++i)
      fetchers.emplace_back([&] {
        ++waiting;
        EXPECT_EQ(fetched(), "failure");
      });
    while (waiting < 3)
      std::this_thread::yield();
    std::this_thread::sleep_for(milliseconds(round % 3)); // before, while, and after they begin to wait
    EXPECT_EQ(ovDisconnect(), 0);
    for (std::thread& thread : fetchers)
      thread.join();
    EXPECT_NE(ovDisconnect(), 0);
  }
}

TEST_F(LinkTest, whoeverReadsTheLinkHandsItOnWhenHeLeaves) {
  RunningDaemon daemon;
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  Lines found;
  std::thread fetchers[2];
  for (std::thread& thread : fetchers)
    thread = std::thread([&] { found.add(fetched()); }); // takes one event, and doesn't come back
  std::this_thread::sleep_for(milliseconds(10));         // both wait, one of them at the socket
  daemon.play("key 0");
  EXPECT_TRUE(found.waitFor("event 131104"));
  daemon.play("key 1");
  EXPECT_TRUE(found.waitFor("event 131105"));
  ovDisconnect();
  for (std::thread& thread : fetchers)
    thread.join();
}

TEST_F(LinkTest, fiftyRestartsOfTheDaemonLeaveNothingBehind) {
  const std::uint16_t port = rig::quietPort();
  const auto life = [&](bool isDisconnected) {
    RunningDaemon daemon({}, port);
    ASSERT_EQ(ovConnect(0, "acad"), 0);
    ASSERT_TRUE(isConnected());
    if (isDisconnected) {
      EXPECT_EQ(ovDisconnect(), 0);
    }
  };
  life(true);
  const auto before = openDescriptors();
  for (int i = 0; i < 50; ++i) {
    life(i % 2 == 0); // every other one is just gone, from the client's point of view
    if (i % 2 != 0) {
      EXPECT_EQ(fetched(), "failure");
      EXPECT_FALSE(isConnected());
      if (i % 4 == 1) {
        EXPECT_EQ(ovDisconnect(), 0) << "a broken link is there to be closed";
      }
    }
    ASSERT_FALSE(HasFatalFailure());
  }
  ovDisconnect();
  EXPECT_LE(openDescriptors(), before); // fewer, where the system drops some of its own meanwhile
}

TEST_F(LinkTest, allFunctionsMayBeCalledAtOnce) {
  RunningDaemon daemon;
  std::atomic<bool> isOver{false}, areJoined{false};
  std::atomic<int> connects{0}, answers{0}, events{0};
  char record[148];
  const std::function<void()> calls[] = {
      [&] { connects += ovConnect(0, "acad") == 0; },
      [&] { connects += ovConnect(0, "acad") == 0; },
      [&] { answers += isConnected(); },
      [&] { answers += ovGetDevInfo(0, record) == 0 && ovGetAdvancedSettings(0, record) == 0; },
      [&] { answers += ovSetApplMode("AutoCAD", "Model") == 0; },
      [&] { events += fetched() != "failure"; },
      [&] { events += fetched() != "failure"; },
  };
  std::vector<std::thread> threads;
  for (const auto& call : calls)
    threads.emplace_back([&isOver, &call] {
      while (!isOver)
        call();
    });
  std::thread disconnecting([&] { // to the end, since it frees those who fetch
    while (!areJoined) {
      std::this_thread::sleep_for(milliseconds(3));
      ovDisconnect();
    }
  });
  for (int i = 0; i < 500 || events == 0 || answers == 0; ++i) {
    daemon.play("key 1");
    daemon.play("motion 0 0 " + std::to_string(i % 1000) + " 0 0 0");
    std::this_thread::sleep_for(milliseconds(1));
  }
  isOver = true;
  for (std::thread& thread : threads)
    thread.join();
  areJoined = true;
  disconnecting.join();
  EXPECT_GT(connects, 1);
  EXPECT_EQ(ovConnect(0, "acad"), 0) << "all that did no harm";
  EXPECT_TRUE(isConnected());
}

} // namespace
