// What pages send to the device, and what the host's door sends them.

#include "client.h"
#include "live_door.h"
#include "live_messages.h"

#include <gmock/gmock.h>

#include <thread>

namespace {

using namespace std::chrono_literals;
using nlohmann::json;

TEST(LiveTest, SilentPageReleasesCap) {
  std::mutex mutex;
  std::vector<std::string> said;
  devlink::DaemonOptions options;
  options.mPort = 0;
  options.mIsVerbose = true;
  options.mSay = [&](const std::string& text) {
    const std::lock_guard<std::mutex> lock(mutex);
    said.push_back(text);
  };
  const auto saidAfter = [&](std::chrono::milliseconds time) {
    std::this_thread::sleep_for(time);
    const std::lock_guard<std::mutex> lock(mutex);
    return std::exchange(said, {});
  };
  const std::string deflected = "motion 0 0 300 0 0 0", released = "motion 0 0 0 0 0 0";
  devlink::Daemon daemon(options);
  std::thread running([&] { daemon.run(); });
  {
    devlink::LiveDoor door({}, daemon);
    auto driver = std::make_unique<web::Client>(door.address());
    web::Client watcher(door.address());
    watcher.send("key 5");
    driver->send(deflected);
    EXPECT_THAT(saidAfter(600ms), testing::ElementsAre(deflected, released));
    driver->send("key 3");
    EXPECT_THAT(saidAfter(600ms), testing::ElementsAre("event 131107")) << "at rest already";
    driver->send(deflected);
    driver.reset();
    EXPECT_THAT(saidAfter(150ms), testing::ElementsAre(deflected, released)) << "gone while it drives";
    watcher.send("motion 1 2");
    while (watcher.next(1s) != "(nothing)")
      ;
    EXPECT_EQ(watcher.closeReason(), "1008 z is missing");
  }
  daemon.stop();
  running.join();
}

TEST(LiveTest, JoinedFramesKeepMotion) {
  const auto frame = [](int n, const json& moved) {
    return std::make_shared<program::FrameMessage>(
        std::make_shared<const json>(json{{"n", n}, {"moved", moved}}));
  };
  const auto joinedP = frame(3, {"c"})->joinedTo(*frame(2, {"b"})->joinedTo(*frame(1, {"a"})));
  const json found = json::parse(joinedP->text())["frame"];
  EXPECT_EQ(found["n"], 3);
  EXPECT_EQ(found["moved"], json({"c"}));
  EXPECT_EQ(found["movedBefore"], json({"a", "b"}));
  const json again = json::parse(frame(3, {"c", "d"})->joinedTo(*joinedP)->text())["frame"];
  EXPECT_EQ(again["moved"], json({"c", "d"})) << "of a frame that comes again";
  EXPECT_EQ(again["movedBefore"], json({"a", "b"}));
  EXPECT_EQ(frame(1, {})->joinedTo(*web::message([] { return std::string(); })), nullptr);
}

} // namespace
