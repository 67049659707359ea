// The client library and the daemon with each other.

#include "fixture.h"

using namespace std::string_literals;

namespace {

/// Expects these events next, in order.
void expectEvents(const std::vector<std::string>& events) {
  for (const std::string& event : events)
    EXPECT_EQ(fetched(), event);
}

TEST_F(LinkTest, TellsDevicesAndSettings) {
  RunningDaemon daemon;
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  int count = -1;
  EXPECT_EQ(ovGetDevNum(&count, nullptr, nullptr), 0);
  EXPECT_EQ(count, 1);
  std::string record(149, 'x');
  EXPECT_NE(ovGetDevInfo(1, record.data()), 0);
  EXPECT_NE(ovGetAdvancedSettings(-1, record.data()), 0);
  EXPECT_EQ(record, std::string(149, 'x'));
  EXPECT_EQ(ovGetDevInfo(0, record.data()), 0);
  EXPECT_STREQ(record.data() + 20, "Orvaner 6-axis hand controller");
  EXPECT_EQ(record[96], 'x') << "written past the record";
  daemon.play("rotation 66051 zoomall"); // 0x010203
  expectEvents({"event 131073"});
  EXPECT_EQ(ovGetAdvancedSettings(0, record.data()), 0);
  EXPECT_EQ(record, std::string(132, '\0') + "\3\2\1"s + "\0\0\0\1"s + std::string(9, '\0') + 'x');
}

TEST_F(LinkTest, KeepsOrderReleasesAndNewestMotion) {
  RunningDaemon daemon;
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  ASSERT_EQ(ovConnect(0, "acad"), 0) << "the second one keeps the link";
  for (const char* line : {"key 0", "view back", "motion 1 0 0 0 0 0", "motion 0 0 0 0 0 0", "zoom"})
    daemon.play(line);
  for (int i = 0; i <= 3000; ++i)
    daemon.play("motion " + std::to_string(i) + " -2 32767 -32768 5 6");
  expectEvents({"event 131104", "event 131094", kRelease});
  int samples = 0;
  for (std::string event; event != "motion 3000 -2 32767 -32768 5 6"; ++samples)
    ASSERT_NE(event = fetched(), "failure");
  EXPECT_LT(samples, 300) << "old samples were delivered one by one";
}

TEST_F(LinkTest, EndOfLinkReleasesCap) {
  const std::uint16_t port = rig::quietPort();
  std::optional<RunningDaemon> daemon(port);
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  daemon->play("motion 0 0 300 0 0 0");
  expectEvents({"motion 0 0 300 0 0 0"});
  EXPECT_EQ(ovDisconnect(), 0);
  expectEvents({kRelease, "failure"});
  daemon->play(kRelease);
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  expectEvents({kRelease}); // a late client learns where the cap is
  daemon->play("motion 1 0 0 0 0 0");
  expectEvents({"motion 1 0 0 0 0 0"});
  daemon->play("key 0");
  daemon->play("away 1"); // seconds
  expectEvents({"event 131104", kRelease, "failure"});
  EXPECT_NE(ovConnect(0, "acad"), 0) << "nobody listens now";
  daemon->play(kRelease);
  daemon->waitFor("back");
  for (const char* motion : {"motion 2 0 0 0 0 0", "motion 3 0 0 0 0 0"}) {
    ASSERT_EQ(ovConnect(0, "acad"), 0);
    daemon->play(motion);
    expectEvents({kRelease, motion}); // the daemon's; then one for the link whose end nobody noticed
    daemon.emplace(port);
  }
}

} // namespace
