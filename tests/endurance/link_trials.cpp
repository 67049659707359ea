// The plug-in and its daemon: bad peers at the daemon's port, restarts, floods of samples, keys, and rest.

#include <algorithm>
#include <atomic>
#include <ctime>
#include <memory>
#include <random>
#include <vector>

#include "auto_cad_proxy.h"
#include "autocad_app.h"
#include "command_table.h"
#include "fixture.h"
#include "host.h"
#include "message_loop.h"
#include "ov_auto_cad.h"
#include "temp_folder.h"
#include "trial.h"
#include "usage.h"

namespace {

using rig::secondsSince;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr int kKeys = 20;

/// The plug-in with the real client library, a port of its own and a menu of keys that type KEY0, KEY1, ...
///
/// The test holds the clock, so that the connection watch, which looks every two seconds, looks every real
/// millisecond.
class Link : public testing::Test {
protected:
  Link() {
    host::reset();
    desktop::reset();
    desktop::holdClock();
    desktop::setTickStep(1);
    usePort(std::to_string(mPort));
    setenv("USERPROFILE", mHome.native().c_str(), 1);
    mHome.makeFolder("Orvaner/Applications");
    std::string menu = "[Modes]\nStart\nLayout\nModel\n\n[MenuBar]\n";
    for (int key = 0; key < kKeys; ++key)
      menu += "Key" + std::to_string(key) + " = Keys}KEY" + std::to_string(key) + "|\n";
    mHome.write("Orvaner/Applications/autocad.mnu", menu);
    EXPECT_EQ(mApp.On_kInitAppMsg(nullptr), AcRx::kRetOK);
    EXPECT_TRUE(pumpUntil([this] { return plugin().mAutoCadProxyP->mMenuIsLoaded.load(); }));
  }
  ~Link() override {
    mApp.On_kUnloadAppMsg(nullptr);
    EXPECT_TRUE(desktop::activeTimers().empty());
  }

  OvAutoCad& plugin() { return *mApp.mOvAutoCadP; }
  std::unique_ptr<RunningDaemon> daemon(const std::string& line = "motion 0 0 0 0 0 0") {
    auto daemonP = std::make_unique<RunningDaemon>(mPort);
    daemonP->play(line);
    return daemonP;
  }
  /// Lets the timer fall due.
  static void tick() {
    desktop::advanceClock(100);
    desktop::runMessages();
    host::runQueue();
  }
  /// Ticks until something holds. Returns false if that takes more than half a minute.
  bool pumpUntil(const std::function<bool()>& holds) {
    for (const auto start = Clock::now(); !holds(); std::this_thread::yield()) {
      if (secondsSince(start) > 30)
        return false;
      tick();
    }
    return true;
  }
  bool pumpUntilSample(short x) {
    return pumpUntil([this, x] { return plugin().mCapX == x; });
  }
  /// Returns whether nothing is held and no more is used than before; threads may take a moment to end.
  bool isBackTo(const Usage& before) {
    const host::Held held = host::held();
    forget();
    return pumpUntil([&] { return Usage().isBackTo(before); }) && held.selectionSets == 0 &&
           held.openForRead == 0 && held.openForWrite == 0 && host::nonFiniteCalls() == 0;
  }
  /// Drops the stand-ins' records, which grow with time.
  void forget() {
    host::reset();
    addCommands(nullptr);
    desktop::holdClock();
    mHistoryRead = 0;
  }
  /// Returns what the keys have typed since the last call, as in "KEY3 KEY4 ".
  std::string typedKeys() {
    std::string keys;
    for (; mHistoryRead < host::history().size(); ++mHistoryRead) {
      const host::HistoryLine& line = host::history()[mHistoryRead];
      if (line.isTyped && line.text.compare(0, 3, L"KEY") == 0)
        keys += std::string(line.text.begin(), line.text.end() - 1) + ' '; // without Enter
    }
    return keys;
  }

  rig::TempFolder mHome;
  const std::uint16_t mPort = rig::quietPort();
  CAutoCAD2011App mApp;
  std::size_t mHistoryRead = 0;
};

devlink::Bytes noise() {
  std::mt19937 random(3);
  devlink::Bytes bytes(4096);
  for (auto& byte : bytes)
    byte = static_cast<std::uint8_t>(random());
  return bytes;
}

TEST_F(Link, SurvivesBadPeers) {
  Trial trial("Bad peers at the daemon's port: silent, older, dying, another program");
  const struct {
    const char* name;
    devlink::Bytes text;
    bool isListening;
  } kPeers[] = {
      {"hangs up", {}, false},
      {"silent", {}, true},
      {"another program", bytes("HTTP/1.1 400 Bad Request\r\n\r\n"), true},
      {"older version", message(devlink::Kind::welcome, devlink::kMagic, std::uint16_t{1}), true},
      {"noise", noise(), true},
      {"dies in its greeting", half(kWelcome), false},
      {"dies in a sample", kWelcome + half(message(devlink::Kind::motion, devlink::Bytes(12))), false},
      {"noise later on", kWelcome + noise(), true},
      {"silent later on", kWelcome, true}};
  auto good = daemon("motion 1 0 0 0 0 0");
  ASSERT_TRUE(pumpUntilSample(1));
  const Usage before;
  short sample = 1;
  const std::int64_t rounds = scaled(1, 25);
  for (std::int64_t round = 0; round < rounds; ++round) {
    for (const auto& peer : kPeers) {
      good.reset();
      bool isVisited = false;
      {
        const auto answer = [&peer](RawEnd& end) {
          end.send(peer.text);
          if (peer.isListening)
            end.drain();
        };
        const FakeDaemon impostor(answer, mPort);
        isVisited = pumpUntil([&] { return impostor.mVisits > 2; }); // two visits are over
      }
      good = daemon("motion " + std::to_string(++sample) + " 0 0 0 0 0");
      trial.count(peer.name, isVisited && pumpUntilSample(sample) && isBackTo(before));
    }
  }
}

TEST_F(Link, FindsRestartedDaemon) {
  Trial trial("The daemon ends under motion and is started again");
  std::unique_ptr<Usage> beforeP;
  const std::int64_t rounds = scaled(20, 500);
  for (std::int64_t round = 1; round <= rounds; ++round) {
    const auto running = daemon("motion " + std::to_string(round) + " 0 0 0 0 0");
    const bool isFound = pumpUntilSample(static_cast<short>(round));
    if (!beforeP)
      beforeP = std::make_unique<Usage>();
    trial.count("restart " + std::to_string(round), isFound && isBackTo(*beforeP));
  }
}

TEST_F(Link, KeepsUpWithFlood) {
  Trial trial("The daemon sends 20,000 samples a second, and a key whenever the last one has been typed");
  std::int64_t samples = 0;
  int pressed = 0;
  const auto flood = daemon("motion 1 0 0 0 0 0");
  ASSERT_TRUE(pumpUntilSample(1));
  session::Action motion;
  std::string reason;
  ASSERT_TRUE(session::parseDeviceLine("motion 5 1 -1 2 -2 3", motion, reason)) << reason;
  std::unique_ptr<Usage> beforeP;
  const double length = static_cast<double>(scaled(2, 20)); // seconds
  auto forgotten = Clock::now();
  for (const auto start = forgotten; secondsSince(start) < length;) {
    // A machine that can't send that many loses some, and still ticks.
    const auto due = static_cast<std::int64_t>(std::min(secondsSince(start) * 2e4, samples + 1e3));
    for (; samples < due; ++samples)
      (**flood).play(motion);
    if (plugin().mPendingKey < 0) {
      const std::string key = std::to_string(pressed++ % kKeys);
      flood->play("key " + key);
      std::string typed;
      trial.count("key " + key,
                  pumpUntil([&] { return !(typed += typedKeys()).empty(); }) && typed == "KEY" + key + " ");
    }
    tick();
    if (secondsSince(forgotten) > 0.5) {
      forget();
      flood->forgetRecord();
      forgotten = Clock::now();
      if (!beforeP)
        beforeP = std::make_unique<Usage>();
    }
  }
  flood->play("motion 12345 0 0 0 0 0");
  trial.count("newest sample", pumpUntilSample(12345));
  flood->forgetRecord();
  trial.count("usage", isBackTo(*beforeP));
  trial.detail(std::to_string(samples) + " samples, " + std::to_string(pressed) + " keys");
}

TEST_F(Link, TypesEachKeyOnce) {
  Trial trial("Keys pressed at the device one after the other, at any moment of the pump's passes");
  const auto device = daemon("motion 1 0 0 0 0 0");
  ASSERT_TRUE(pumpUntilSample(1));
  device->play("motion 0 0 0 0 0 0");
  desktop::releaseClock();
  std::mt19937 random(4);
  const std::int64_t presses = scaled(500, 10000);
  for (std::int64_t press = 0; press < presses; ++press) {
    const std::string key = std::to_string(random() % kKeys);
    device->play("key " + key);
    std::string typed;
    // Until it has been typed, and some passes more in which nothing may come.
    auto more = static_cast<int>(1 + random() % 50);
    for (const auto pressed = Clock::now(); more > 0 && secondsSince(pressed) < 10;) {
      plugin().mAutoCadProxyP->doTransform();
      host::runQueue();
      typed += typedKeys();
      more -= typed.empty() ? 0 : 1;
    }
    trial.count("press " + std::to_string(press) + " typed '" + typed + "'", typed == "KEY" + key + ' ');
  }
}

TEST_F(Link, RestCostsLittle) {
  Trial trial("Half seconds of rest in real time, with a daemon and without one");
  const std::int64_t halves = scaled(10, 14400);
  for (const bool hasDaemon : {true, false}) {
    const auto running = hasDaemon ? daemon() : nullptr;
    desktop::releaseClock();
    rig::runLoop(2500); // the connection watch has seen it
    const Usage before;
    const auto seconds = [] { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; };
    const double busy = seconds();
    const auto start = Clock::now();
    std::vector<double> halvesBusy;
    for (std::int64_t i = 0; i < halves / 2; ++i) {
      const double from = seconds();
      rig::runLoop(500);
      halvesBusy.push_back(seconds() - from);
      trial.count("half second " + std::to_string(i), Usage().timers == before.timers);
    }
    const double share = (seconds() - busy) / secondsSince(start);
    // The machine may stand still for a moment: the median is what rest costs.
    std::nth_element(halvesBusy.begin(), halvesBusy.begin() + halves / 4, halvesBusy.end());
    // Natively it is about 0.1 %; sanitizers and other programs add to it.
    trial.count("share of a core", halvesBusy[halves / 4] < 0.03 * 0.5);
    desktop::holdClock();
    trial.count("usage", isBackTo(before));
    char text[80];
    std::snprintf(text, sizeof text, "%s daemon %.2f %% of a core", hasDaemon ? "with a" : "without",
                  100 * share);
    trial.detail(text);
  }
}

} // namespace
