// The plug-in and its daemon in real time: a daemon that comes late, is killed and comes back under motion;
// how long unloading takes in each state of the link; what rest costs.

#include <chrono>
#include <cmath>
#include <functional>
#include <memory>
#include <stdexcept>

#include <gtest/gtest.h>

#include "quiet_port.h" // before <windows.h>, which Asio wants to include by itself

#include <arxHeaders.h>

#include "call_log.h"
#include "environment.h"
#include "host.h"
#include "hosted_module.h"
#include "message_loop.h"
#include "process.h"
#include "temp_folder.h"

#ifndef _WIN32
#include <sys/resource.h>

#include "desktop.h"
#endif

namespace {

using Clock = std::chrono::steady_clock;
using rig::loopUntil;
using rig::runLoop;
using rig::secondsSince;
using rig::setEnvironment;

class LinkLife : public testing::Test {
protected:
  // Seconds. The watch looks every two, and an unload waits for it; the rest is for machines with much else
  // to do.
  static constexpr double kLongestWait = 20;
  static constexpr double kLongestUnload = 10;

  void SetUp() override {
    call_log::clear();
    host::reset();
#ifndef _WIN32
    desktop::reset();
#endif
    mHome.makeFolder("Orvaner/Applications");
    setEnvironment("USERPROFILE", mHome.native());
    setEnvironment("OV_DEVLINK_PORT", mPort);
  }
  void TearDown() override {
    if (mModule.mHandle)
      unload();
  }

  void load() {
    mModule.load(OV_MODULE);
    ASSERT_EQ(mModule.tell(1, nullptr), 0);
  }
  /// Seconds that the unload message took.
  double unload() {
    const auto start = Clock::now();
    EXPECT_EQ(mModule.tell(2, nullptr), 0);
    const double took = secondsSince(start);
    mModule.free();
    return took;
  }

  void startDaemon(const std::string& session = "600 device mode\n") {
    mHome.write("a.session", session);
    mHome.remove("port");
    mHome.remove("record");
    mDaemon = std::make_unique<Process>(
        OV_DAEMON,
        std::vector<std::string>{mHome.native("a.session"), "--port", mPort, "--port-file",
                                 mHome.native("port"), "--record", mHome.native("record"), "--linger"},
        mHome.native("daemon.txt"));
    const auto start = Clock::now();
    while (writtenTo("port").empty()) {
      ASSERT_LT(secondsSince(start), 20) << mHome.read("daemon.txt");
      Sleep(5);
    }
  }
  bool isRecorded(const std::string& text) const {
    return writtenTo("record").find(text) != std::string::npos;
  }
  /// What the daemon has written to a file so far. Where the file is just being made, Windows may refuse to
  /// open it for the moment.
  std::string writtenTo(const std::string& name) const {
    try {
      return mHome.read(name);
    } catch (const std::runtime_error&) {
      return {};
    }
  }

  rig::TempFolder mHome;
  const std::string mPort = std::to_string(rig::quietPort());
  std::unique_ptr<Process> mDaemon;
  rig::HostedModule mModule;
};

TEST_F(LinkLife, DaemonThatComesLateAndComesBackIsFoundEachTime) {
  load();
  runLoop(500);
  // Code 13 keeps the horizon: the roll in the sample must not tilt the view.
  const std::string session = "0.0 device rotation 13\n0.3 device motion 300 0 0 0 0 300\n";
  for (int round = 0; round < 10; ++round) {
    SCOPED_TRACE(testing::Message() << "round " << round);
    host::setView(host::ViewState());
    startDaemon(session);
    const double found = loopUntil(kLongestWait, [this] { return isRecorded("client connected acad"); });
    ASSERT_GE(found, 0) << "the daemon wasn't found in time";
    EXPECT_GE(loopUntil(kLongestWait, [this] { return isRecorded("mode "); }), 0) << "no mode was announced";
    EXPECT_GE(loopUntil(kLongestWait, [] { return std::fabs(host::view().target.x) > 1; }), 0)
        << "the view stands still";
    EXPECT_EQ(host::view().up.x, 0) << "the rotation settings didn't arrive";
    mDaemon.reset(); // killed while the cap is deflected
    const auto stands = [] {
      const double x = host::view().target.x;
      runLoop(100);
      return host::view().target.x == x;
    };
    EXPECT_GE(loopUntil(kLongestWait, stands), 0) << "the view drifts on alone";
  }
  unload();
}

// The reading thread waits for an event, and the mode goes out behind one.
TEST_F(LinkLife, DaemonLearnsTheModeWhileTheDeviceRests) {
  load();
  for (int life = 0; life < 2; ++life) { // and the next daemon, too
    startDaemon();
    EXPECT_GE(loopUntil(kLongestWait, [this] { return isRecorded("mode "); }), 0) << "life " << life;
    mDaemon.reset();
  }
  unload();
}

TEST_F(LinkLife, UnloadEndsInTimeInEachStateOfTheLink) {
  struct Case {
    const char* state;
    const char* session; // null: no daemon
  };
  const Case cases[] = {{"daemon absent", nullptr},
                        {"daemon present, reading thread blocked", "600 device mode\n"},
                        {"cap moving", "0.0 device motion 100 0 0 0 0 0\n"}};
  for (const Case& c : cases) {
    if (c.session)
      startDaemon(c.session);
    load();
    runLoop(700);
    const double took = unload();
    std::printf("unload, %s: %.2f s\n", c.state, took);
    EXPECT_LT(took, kLongestUnload) << c.state;
    mDaemon.reset();
  }
}

#ifndef _WIN32

double processorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& t) {
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

TEST_F(LinkLife, RestCostsNextToNothing) {
  for (const bool hasDaemon : {true, false}) {
    if (hasDaemon)
      startDaemon();
    load();
    runLoop(2500); // past the first looks of the watch
    constexpr int kMilliseconds = 4000;
    const double before = processorSeconds();
    runLoop(kMilliseconds);
    const double share = (processorSeconds() - before) / (kMilliseconds * 1e-3);
    std::printf("at rest, daemon %s: %.2f %% of a core\n", hasDaemon ? "there" : "absent", 100 * share);
    EXPECT_LT(share, 0.03)
        << "something spins"; // natively it is a tenth of that; sanitizers and noise add theirs
    unload();
    mDaemon.reset();
  }
}

#endif

} // namespace
