// The pump for long: keys that arrive at any moment of a pass, passes by the million, and hours of rest.

#include <array>
#include <cstdio>
#include <random>
#include <thread>

#include <sys/resource.h>

#include "desktop.h"
#include "host.h"
#include "message_loop.h"
#include "plugged_in.h"
#include "trial.h"

namespace {

using Clock = std::chrono::steady_clock;
using rig::runLoop;
using rig::secondsSince;

class Keys : public PluggedIn {};

TEST_F(Keys, Presses) {
  Trial trial("Keys pressed at the device one after the other, at any moment of the pump's passes");
  load();
  desktop::releaseClock();
  const DaemonProcess daemon(mHome, mPort);
  daemon.tell("motion 1 0 0 0 0 0");
  const auto start = Clock::now();
  while (plugin().mCapX != 1 && secondsSince(start) < 30)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  daemon.tell("motion 0 0 0 0 0 0");

  std::mt19937 random(4);
  const std::int64_t presses = scaled(500, 10000);
  for (std::int64_t press = 0; press < presses; ++press) {
    const auto key = static_cast<int>(random() % kKeys);
    daemon.tell("key " + std::to_string(key));
    std::string typed;
    // Until it has been typed, and some passes more in which nothing may come.
    int more = 1 + static_cast<int>(random() % 50);
    for (const auto pressed = Clock::now(); more > 0 && secondsSince(pressed) < 10;) {
      proxy().doTransform();
      host::runQueue();
      typed += typedKeys();
      more -= typed.empty() ? 0 : 1;
    }
    trial.count("press " + std::to_string(press) + " typed '" + typed + "'",
                typed == "KEY" + std::to_string(key) + ' ');
  }
}

class LongRun : public PluggedIn {
protected:
  using Axes = std::array<short, 6>;

  /// Waits until the reading thread has left the sample for the pump.
  bool bring(const DaemonProcess& daemon, const Axes& axes) {
    std::string line = "motion";
    for (const short axis : axes)
      line += ' ' + std::to_string(axis);
    daemon.tell(line);
    const OvAutoCad& p = plugin();
    return arrives([&] { return Axes{p.mCapX, p.mCapY, p.mCapZ, p.mCapA, p.mCapB, p.mCapC} == axes; });
  }
  static bool arrives(const std::function<bool()>& isThere) {
    for (const auto start = Clock::now(); !isThere(); std::this_thread::yield()) {
      if (secondsSince(start) > 30)
        return false;
    }
    return true;
  }

  /// Holds the cap for a tick each at a deflection and at the opposite one, and lets go.
  void sway(const char* name, Axes axes, bool sleeps = false) {
    for (int i = 0; i < 2; ++i) {
      const bool hasArrived = bring(*mDaemonP, axes);
      const std::int64_t passes = tick();
      count(name, hasArrived, sleeps ? 1 : passes);
      for (short& axis : axes)
        axis = static_cast<short>(-axis);
    }
    const bool hasArrived = bring(*mDaemonP, {});
    count(name, hasArrived && tick() == 1 && host::held().locks == 0, 1);
  }
  void count(const char* name, bool isGood, std::int64_t passes) {
    mTrialP->count(name, isGood && passes > 0 && isBalanced(), passes);
    mPasses += passes;
  }
  void toggle(const wchar_t* command) {
    host::type(command);
    host::runQueue();
  }

  void startChapter() {
    newDocument();
    host::add(std::make_unique<AcDbLine>(AcGePoint3d(1, 2, 3), AcGePoint3d(4, 6, 3)));
    host::add(std::make_unique<AcDbCircle>(AcGePoint3d(5, 5, 0), AcGeVector3d(0, 0, 1), 2.0));
  }
  void turnViews() {
    for (const int rotation : {0, 1, 2, 3, 10, 13, 104}) {
      host::ViewState state;
      state.perspective = rotation == 2 || rotation == 104;
      host::setView(state);
      mDaemonP->tell("rotation " + std::to_string(rotation));
      sway("view", {25, -16, 20, 45, 60, -30});
    }
    host::selectNumbers({1, 2});
    sway("view about objects", {0, 0, 0, 40, 50, 60});
    host::selectNumbers({1});
    toggle(L"OV_Toggle_Rotation_Axis\n");
    sway("view about a line", {10, 0, 0, 30, 110, 0});
    toggle(L"OV_Toggle_Rotation_Axis\n");
  }
  void moveObjects() {
    toggle(L"OV_Toggle_Object_Move_Mode\n");
    host::selectNumbers({1, 2});
    sway("objects", {2, 7, -1, 10, 6, 3});
    host::setLayout(true);
    sway("objects on the layout", {5, 3, 0, 0, 0, 0});
    toggle(L"OV_Toggle_Object_Move_Mode\n");
    host::selectNumbers({});
    sway("layout", {120, -80, 25, 0, 0, 0});
    host::setLayoutState(host::LayoutState());
    host::setLayout(false);
  }
  void scroll() {
    desktop::Window window;
    window.className = L"Main";
    window.rect = desktop::rectangle(0, 0, 800, 600);
    const HWND main = desktop::addWindow(window);
    window.className = L"SysListView32";
    window.parent = main;
    window.vertical = desktop::ScrollBar{0, 250, 10, 100};
    const HWND list = desktop::addWindow(window);
    SetCursorPos(50, 50);
    sway("list", {0, 0, 110, 0, 0, 0}, true);
    desktop::removeWindow(list);
    desktop::removeWindow(main);
  }
  void pressKeys() {
    for (int key = 0; key < 3; ++key) {
      mDaemonP->tell("key " + std::to_string(key));
      const bool hasArrived = arrives([this] { return plugin().mPendingKey >= 0; });
      const std::int64_t passes = tick();
      count("key", hasArrived && typedKeys() == "KEY" + std::to_string(key) + ' ', passes);
    }
    for (const char* const view : {"front", "right", "top", "back", "left", "bottom"}) {
      mDaemonP->tell(std::string("view ") + view);
      const bool hasArrived = arrives([this] { return plugin().mPendingSpecial > 0; });
      const std::int64_t passes = tick();
      count("view key", hasArrived && plugin().mPendingSpecial == 0, passes);
    }
  }

  Trial* mTrialP = nullptr;
  std::unique_ptr<DaemonProcess> mDaemonP;
  std::int64_t mPasses = 0;
};

TEST_F(LongRun, Passes) {
  Trial trial("Passes of the pump in all modes, their samples and keys from a daemon, while the log rotates");
  mTrialP = &trial;
  load();
  mDaemonP = std::make_unique<DaemonProcess>(mHome, mPort);
  startChapter();
  ASSERT_TRUE(bring(*mDaemonP, {0, 0, 0, 0, 0, 1}) && bring(*mDaemonP, {}));
  const std::int64_t wanted = scaled(200000, 10000000);
  Usage before;
  while (mPasses < wanted && !HasFailure()) {
    turnViews();
    moveObjects();
    scroll();
    pressKeys();
    startChapter();
    if (before.threads == 0 && mPasses > wanted / 10)
      before = usage();
  }
  const Usage after = usage();
  trial.count("usage", isBackTo(before));
  trial.count("rotation", mHome.exists("Orvaner/autocad_addin_log.bak"));
  trial.detail("from the first tenth to the end heap " + std::to_string((after.heap - before.heap) / 1024) +
               " kB, resident " + std::to_string((after.resident - before.resident) / 1024) +
               " kB, threads " + std::to_string(after.threads - before.threads) + ", descriptors " +
               std::to_string(after.descriptors - before.descriptors) + " more");
}

double processorSeconds() {
  rusage used{};
  getrusage(RUSAGE_SELF, &used);
  const auto seconds = [](const timeval& t) {
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
  };
  return seconds(used.ru_utime) + seconds(used.ru_stime);
}

TEST_F(LongRun, Rest) {
  Trial trial("Half seconds of rest in real time, with a daemon and without one");
  load();
  desktop::releaseClock();
  const std::int64_t halves = scaled(10, 14400);
  for (const bool hasDaemon : {true, false}) {
    if (hasDaemon)
      mDaemonP = std::make_unique<DaemonProcess>(mHome, mPort);
    else
      mDaemonP.reset();
    runLoop(2500); // the connection watch has seen it
    const double busy = processorSeconds();
    const auto start = Clock::now();
    Usage before;
    for (std::int64_t i = 0; i < halves / 2; ++i) {
      if (i == halves / 20)
        before = usage();
      runLoop(500);
      trial.count("half second " + std::to_string(i), isBalanced());
    }
    const double share = (processorSeconds() - busy) / secondsSince(start);
    desktop::holdClock();
    trial.count("usage", isBackTo(before));
    desktop::releaseClock();
    char text[80];
    std::snprintf(text, sizeof text, "%s daemon %.2f %% of a core", hasDaemon ? "with a" : "without",
                  100 * share);
    trial.detail(text);
  }
}

} // namespace
