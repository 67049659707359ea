// The module and the daemon's program in real time: daemons that come late, are killed under motion and come
// back, and the time that unloading takes.

#include <memory>

#include <gtest/gtest.h>

#include "quiet_port.h" // before <windows.h>, which Asio wants to include by itself

#include <arxHeaders.h>

#include "daemon_process.h"
#include "environment.h"
#include "host.h"
#include "hosted_module.h"
#include "message_loop.h"

namespace {

class LinkLife : public testing::Test {
protected:
  // Seconds. The watch looks every two, and an unload waits for it; the rest is for busy machines.
  static constexpr double kLongestWait = 20;
  static constexpr double kLongestUnload = 10;

  LinkLife() {
    rig::freshHost(mHome);
    rig::setEnvironment("OV_DEVLINK_PORT", mPort);
    mModule.load(OV_MODULE);
    EXPECT_EQ(mModule.send(1, nullptr), 0);
  }
  ~LinkLife() override {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(mModule.send(2, nullptr), 0);
    EXPECT_LT(rig::secondsSince(start), kLongestUnload);
    mModule.free();
  }

  rig::TempFolder mHome;
  const std::string mPort = std::to_string(rig::quietPort());
  rig::HostedModule mModule;
};

TEST_F(LinkLife, FindsDaemonAgain) {
  rig::runLoop(500); // without a daemon
  // Code 13 keeps the horizon: the roll in the sample mustn't tilt the view.
  const std::string session = "0.0 device rotation 13\n0.3 device motion 300 0 0 0 0 300\n";
  for (int round = 0; round < 2; ++round) {
    SCOPED_TRACE(round);
    host::view() = {};
    auto daemonP = std::make_unique<DaemonProcess>(mHome, session, mPort);
    EXPECT_GE(rig::loopUntil(kLongestWait, [&] { return daemonP->isRecorded("client connected acad"); }), 0);
    EXPECT_GE(
        rig::loopUntil(kLongestWait, [] { return host::view().target.x < -1 || host::view().target.x > 1; }),
        0);
    EXPECT_EQ(host::view().up.x, 0) << "the rotation settings didn't arrive";
    daemonP.reset(); // killed while the cap is deflected; at the end the unload finds no daemon
    const auto isAtRest = [] {
      const double x = host::view().target.x;
      rig::runLoop(100);
      return host::view().target.x == x;
    };
    EXPECT_GE(rig::loopUntil(kLongestWait, isAtRest), 0) << "the view moves on alone";
  }
}

TEST_F(LinkLife, ModeReachesRestingDaemon) {
  const DaemonProcess daemon(mHome, "600 device mode\n", mPort);
  EXPECT_GE(rig::loopUntil(kLongestWait, [&] { return daemon.isRecorded("mode "); }), 0);
} // unloads while the reading thread waits for an event

} // namespace
