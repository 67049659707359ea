// The module's boundary: loaded, sent messages, freed and ended, in order and out of order. Afterwards the system
// is asked for what is left of it.

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <regex>

#include <gtest/gtest.h>

#include <arxHeaders.h>

#include "call_log.h"
#include "daemon_process.h"
#include "environment.h"
#include "host.h"
#include "hosted_module.h"
#include "message_loop.h"
#include "temp_folder.h"

namespace {

constexpr char kSettings[] = "Orvaner/Applications/autocad_addin.ini";
constexpr char kLog[] = "Orvaner/autocad_addin_log.txt";
constexpr char kBackup[] = "Orvaner/autocad_addin_log.bak";
constexpr char kMotion[] = "0.0 device motion 300 0 0 0 0 0\n";

const char* gProgram = nullptr;
std::function<void()> gInDialog; // run in the message loop of the load's dialog, which then closes

void awaitDialog() {
#ifdef _WIN32
  SetTimer(nullptr, 0, 10, [](HWND, UINT, UINT_PTR id, DWORD) {
    if (const HWND dialog = FindWindowW(nullptr, L"Orvane Plug-in Error")) {
      KillTimer(nullptr, id);
      gInDialog();
      PostMessageW(dialog, WM_COMMAND, IDOK, 0);
    }
  });
#else
  desktop::setMessageBoxAnswer([](const desktop::MessageBox&) {
    gInDialog();
    return IDOK;
  });
#endif
}

/// Returns what a command of the module prints.
std::wstring toggle() {
  const std::size_t before = host::printed().size();
  host::type(L"OV_Toggle_Scroll_Mode\n");
  host::runQueue();
  return host::printed().substr(before);
}

class Boundary : public testing::Test, protected rig::HostedModule {
protected:
  void SetUp() override {
    rig::freshHost(mHome);
    rig::setEnvironment("OV_DEVLINK_PORT", "1"); // nobody listens there
    static bool sIsWarm = false;
    if (!sIsWarm)
      live(); // so that what the process keeps for good is counted
    sIsWarm = true;
    mHoldings = rig::holdings();
  }

  void load() {
    HostedModule::load(OV_MODULE);
    EXPECT_EQ(send(1, nullptr), 0);
  }
  void expectToggles() {
    const std::wstring answer = toggle();
    mSetting = answer.find(L"  on") != std::wstring::npos ? "on" : "off";
    EXPECT_NE(answer.find(L"=> Scroll Trees and Lists: "), std::wstring::npos);
  }
  /// Sends the unload message, which waits for the connection watch's sleep of two seconds. Natively the clock is held
  /// meanwhile, which ends the sleep.
  int sendUnload() {
#ifdef _WIN32
    return send(2, nullptr);
#else
    desktop::holdClock();
    const int answer = send(2, nullptr);
    desktop::releaseClock();
    return answer;
#endif
  }
  void unload() {
    ASSERT_EQ(sendUnload(), 0);
    free();
  }
  /// Loads and unloads, in order.
  void live() {
    load();
    expectToggles();
    rig::runLoop(150);
    unload();
  }
  void startDaemon(const std::string& session) {
    mDaemon.reset(); // the new one writes the same files
    mDaemon = std::make_unique<DaemonProcess>(mHome, session, "0", std::vector<std::string>{"--linger"});
    rig::setEnvironment("OV_DEVLINK_PORT", mDaemon->port());
  }
  /// Returns whether the view moves within some seconds.
  static bool doesViewMove(double seconds = 5) {
    const double x = host::view().target.x;
    return rig::loopUntil(seconds, [x] { return host::view().target.x != x; }) >= 0;
  }
  /// Sends both messages, while the module is at work.
  void expectRefusals() {
    EXPECT_EQ(send(1, nullptr), AcRx::kRetError);
    EXPECT_EQ(send(2, nullptr), AcRx::kRetError);
    ++mMoments;
  }
  /// Expects that nothing of the module is left. The next test shows that it can be loaded again.
  void expectGone() {
    ASSERT_FALSE(rig::isMapped(OV_MODULE));
    EXPECT_FALSE(rig::isMapped(OV_DEVLINK));
    EXPECT_FALSE(mDaemon && doesViewMove(0.3));
    mDaemon.reset();
    rig::loopUntil(1, [this] { return rig::holdings() == mHoldings; }); // the freeing thread ends last
    EXPECT_EQ(rig::holdings(), mHoldings);
    rig::runLoop(150);     // a timer that is left would call what isn't there,
    host::closeDocument(); // and so would a reactor
    EXPECT_NE(toggle().find(L"Unknown command"), std::wstring::npos);
    EXPECT_NE(mHome.read(kSettings).find("scrollTreeAndList     = " + mSetting + ' '), std::string::npos);
    EXPECT_NE(mHome.read(kLog).find("Logging::~Logging(): destructing"), std::string::npos);
    mHome.remove(kLog); // fails on Windows while anybody has it open
  }
  void endInOrder() {
    expectToggles();
    unload();
    expectGone();
  }

  rig::TempFolder mHome;
  std::unique_ptr<DaemonProcess> mDaemon;
  long mHoldings = 0;
  int mMoments = 0;
  std::string mSetting; // of the scroll mode, after the last command
};

TEST_F(Boundary, FreedWithoutMessageWorksOn) {
  startDaemon(kMotion);
  load();
  free();
  ASSERT_TRUE(rig::isMapped(OV_MODULE));
  EXPECT_TRUE(doesViewMove());
  load();
  EXPECT_TRUE(doesViewMove());
  endInOrder();
}

TEST_F(Boundary, UnloadMessageAfterFreeReturns) {
  load();
  expectToggles();
  free();
  EXPECT_EQ(send(2, nullptr),
            0); // the clock isn't held: the library is freed after a sleep that has to last
  EXPECT_GE(rig::loopUntil(5, [] { return !rig::isMapped(OV_MODULE); }), 0);
  expectGone();
}

TEST_F(Boundary, SecondLoadMessageEndsFirstEngine) {
  startDaemon(kMotion);
  load();
  expectToggles();
  const std::string before = mSetting;
  EXPECT_EQ(send(1, nullptr), 0);
  EXPECT_TRUE(doesViewMove());
  expectToggles();
  EXPECT_NE(mSetting, before) << "the second began before the first had written its settings";
  endInOrder();
}

TEST_F(Boundary, MessagesDuringTickAreRefused) {
  startDaemon(kMotion);
  load();
  host::setFrameSink([this](const host::Frame&) { expectRefusals(); });
  EXPECT_TRUE(doesViewMove());
  EXPECT_TRUE(doesViewMove());
  EXPECT_GT(mMoments, 1);
  host::setFrameSink(nullptr);
  endInOrder();
}

TEST_F(Boundary, MessagesDuringDialogAreRefused) {
  mHome.remove("Orvaner/Applications");
  gInDialog = [this] { expectRefusals(); };
  awaitDialog();
  load();
  EXPECT_EQ(mMoments, 1);
  mHome.makeFolder("Orvaner/Applications");
  endInOrder();
}

TEST_F(Boundary, UnloadedByMessageLeavesNothing) {
  for (int i = 0; i < 2; ++i)
    live();
  expectGone();
}

TEST_F(Boundary, ProcessEndsWithoutMessage) {
  rig::setEnvironment("ASAN_OPTIONS", "detect_leaks=0"); // nothing is given back at such an end
  std::string keys; // each makes the reading thread write a record, so that it is nearly always inside one
  for (const char* const line : {"0.0 device key 0\n", "5.0 device key 0\n"}) // later for a second connection
    for (int i = 0; i < 40000; ++i)
      keys += line;
  live(); // writes the settings
  const std::string before =
      std::regex_replace(mHome.read(kSettings), std::regex("(debug +=) off"), "$1 on ");
  for (int i = 0; i < 9; ++i) {
    const bool hasKeys = i % 3 > 0, isRotating = i % 3 > 1;
    SCOPED_TRACE(isRotating ? "rotating the log" : hasKeys ? "inside a record" : "at rest");
    const std::string settings =
        std::regex_replace(before, std::regex("(maxSize +=) 5000"), isRotating ? "$1 0   " : "$1 5000");
    for (const char* const file : {"ending", kLog, kBackup})
      mHome.remove(file);
    mHome.write(kSettings, settings);
    startDaemon(hasKeys ? keys : kMotion);
    Process ending(gProgram, {mHome.native("ending"), hasKeys ? "1" : "0"}, mHome.native("ending.txt"));
    ASSERT_GE(rig::loopUntil(60, [this] { return mHome.exists("ending"); }), 0);
    EXPECT_EQ(ending.wait(3), 0);
    EXPECT_EQ(mHome.read(kSettings), settings);
    for (const char* const file : {kLog, kBackup})
      EXPECT_TRUE(!mHome.exists(file) || mHome.read(file).find("estructing") == std::string::npos);
  }
}

} // namespace

int main(int argc, char** argv) {
  gProgram = argv[0];
  testing::InitGoogleTest(&argc, argv);
  if (argc == 1)
    return RUN_ALL_TESTS();
  // This is the process that ends, once its reading thread handles the keys.
  std::atomic<int> keys{0};
  call_log::startTrace([&keys](call_log::Record&& record) {
    keys += record.name == "ovFetchEvent" && record.out.size() > 7 && record.out[7] == 0x20020;
  });
  rig::HostedModule module;
  module.load(OV_MODULE);
  module.send(1, nullptr);
  toggle();
  const int least = std::atoi(argv[2]);
  const bool isReading = rig::loopUntil(30, [&] { return keys >= least; }) >= 0;
  call_log::stopTrace();
  rig::runLoop(20);
  std::ofstream(argv[1]).close();
  return isReading ? 0 : 1;
}
