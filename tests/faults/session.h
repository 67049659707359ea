#ifndef SESSION_H
#define SESSION_H

#include <algorithm>
#include <iomanip>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "auto_cad_proxy.h"
#include "autocad_app.h"
#include "call_log.h"
#include "daemon_proxy.h"
#include "engine_rig.h"
#include "engine_state.h"
#include "fake_devlink.h"
#include "logging.h"

#ifndef _WIN32
#include "desktop.h"
#endif

#ifdef _WIN32
constexpr char kTickTime[] = "1"; // milliseconds, of the real clock
#else
constexpr char kTickTime[] = "150";
#endif

/// A scripted session through every path of the plug-in, as the host loads it. The session makes its timer tick.
class Session {
public:
  explicit Session(bool isLogging = false) {
    host::reset();
    rig::home().remove(rig::kMenuFile);
#ifdef _WIN32
    rig::home().write(rig::kMenuFile, host::menuText());
#else
    desktop::reset();
    desktop::holdClock();
    desktop::setTickStep(60); // a pass takes long, so that a tick is a few passes
    desktop::setModulePath(widen(rig::home().backslashed("OVAutoCAD2019.arx")));
#endif
    std::vector<std::pair<std::string, std::string>> settings = {{"maxContMoveTime", kTickTime}};
    if (!isLogging)
      settings.insert(
          settings.end(),
          {{"creation", "off"}, {"trace", "off"}, {"debug", "off"}, {"info", "off"}, {"tmp", "off"}});
    rig::home().write(rig::kSettingsFile, rig::settingsText(settings));
    gLogging.mFileStream.reset(); // of the last session; Windows removes no file that is open
    rig::home().remove("Orvaner/autocad_addin_log.txt");
    rig::forgetMovement();
    host::add(rig::line({1, 2, 3}, {4, 6, 3}));
    host::add(std::make_unique<AcDbCircle>(AcGePoint3d(5, 5, 0), AcGeVector3d(0, 0, 1), 2.0));
  }

  /// Returns false if the plug-in refuses.
  bool load() {
    {
      const call_log::Entered plugIn(call_log::Code::PlugIn);
      mIsLoaded = mApp.On_kInitAppMsg(nullptr) == AcRx::kRetOK;
    }
    host::runQueue(); // netload
    if (mIsLoaded)
      tick(); // menu file
    return mIsLoaded;
  }

  /// Plays the calls among which the k-th fails.
  void play() {
    if (!load())
      return;
    turnViews();
    moveObjects();
    workOnLayout();
    scroll();
    pressKeys();
  }

  void unload() {
    {
      const call_log::Entered plugIn(call_log::Code::PlugIn);
      mApp.On_kUnloadAppMsg(nullptr);
    }
    host::runQueue();
  }

  static bool isPumpRunning() {
#ifdef _WIN32
    return true; // Windows offers no list of timers
#else
    return !desktop::activeTimers().empty();
#endif
  }

  static std::string text(const AcGePoint3d& p) {
    std::ostringstream os;
    os << std::setprecision(9) << p.x << ' ' << p.y << ' ' << p.z;
    return os.str();
  }
  /// Returns what the session left, as text.
  static std::string outcome() {
    std::ostringstream os;
#ifndef _WIN32 // there the real clock decides how far things move
    os << text(host::view().position) << '|' << text(host::view().target) << '|'
       << text(AcGePoint3d::kOrigin + host::view().up) << '|' << host::view().fieldWidth << '|'
       << text(host::storedView().position) << '|' << host::layout().viewHeight << '|'
       << host::layout().centre.x << '|' << host::layout().centre.y << '|';
    for (int i = 1; i <= host::entityCount(); ++i) {
      AcDbExtents extents;
      if (host::entity(i)->getGeomExtents(extents) == Acad::eOk)
        os << text(extents.minPoint()) << '|';
    }
#endif
    os << host::historyText();
    return os.str();
  }

  CAutoCAD2011App mApp;
  bool mIsLoaded = false;

private:
  static std::wstring widen(const std::string& text) {
    return std::wstring(text.begin(), text.end());
  }

  void tick() {
#ifdef _WIN32
    const call_log::Entered plugIn(call_log::Code::PlugIn);
    TimerProc(nullptr, 0, 0, 0);
#else
    desktop::runTimers(100);
#endif
    host::runQueue();
  }
  void hold(int x, int y, int z, int a, int b, int c) {
    rig::setSample(*mApp.mOvAutoCadP, x, y, z, a, b, c);
    tick();
  }
  void letGo() {
    hold(0, 0, 0, 0, 0, 0);
  }

  void turnViews() {
    AutoCadProxy& e = *mApp.mOvAutoCadP->mAutoCadProxyP;
    hold(100, -50, 30, 200, 100, -100);
    letGo();
    e.setRotMode(113);
    host::selectNumbers({1, 2});
    hold(0, 0, -40, 50, 60, 70);
    letGo();
    host::type(L"OV_Toggle_Rotation_Axis\n");
    host::runQueue();
    host::selectNumbers({1});
    e.setRotMode(0);
    hold(10, 0, 0, 500, 400, 300);
    letGo();
    host::type(L"OV_Toggle_Rotation_Axis\n");
    host::runQueue();
  }
  void moveObjects() {
    host::type(L"OV_Toggle_Object_Move_Mode\n");
    host::runQueue();
    host::selectNumbers({1, 2});
    hold(1, 2, -1, 10, 20, 30);
    letGo();
    host::selectNumbers({});
    hold(20, 0, 0, 0, 0, 10); // nothing selected: the view
    letGo();
  }
  void workOnLayout() {
    host::setLayout(true);
    host::selectNumbers({2});
    hold(100, 50, 0, 0, 0, 0); // objects
    letGo();
    host::type(L"OV_Toggle_Object_Move_Mode\n");
    host::runQueue();
    hold(200, -100, 300, 0, 0, 0);
    letGo();
    mApp.mOvAutoCadP->mPendingSpecial = 0x2000C; // zoom
    tick();
    host::setLayout(false);
  }
#ifdef _WIN32
  void scroll() {} // the windows there aren't ours
#else
  static void point(int x, int y) {
    try {
      SetCursorPos(x, y);
    } catch (const call_log::InjectedFault&) { // our own call, not the plug-in's
    }
  }
  void scroll() {
    desktop::Window main;
    main.className = L"Main";
    main.rect = desktop::rectangle(0, 0, 800, 600);
    const HWND mainWindow = desktop::addWindow(main);
    desktop::Window list;
    list.className = L"SysListView32";
    list.parent = mainWindow;
    list.rect = desktop::rectangle(0, 0, 200, 200);
    list.vertical = desktop::ScrollBar{0, 250, 10, 0};
    const HWND listWindow = desktop::addWindow(list);
    list.className = L"QWidget";
    list.rect = desktop::rectangle(300, 0, 200, 200);
    const HWND wheelWindow = desktop::addWindow(list);
    point(50, 50);
    hold(0, 0, 100, 0, 0, 0);
    letGo();
    point(350, 50);
    hold(0, 0, -300, 0, 0, 0);
    letGo();
    desktop::removeWindow(wheelWindow);
    desktop::removeWindow(listWindow);
    desktop::removeWindow(mainWindow);
  }
#endif
  void pressKeys() {
    AutoCadProxy& e = *mApp.mOvAutoCadP->mAutoCadProxyP;
    mApp.mOvAutoCadP->mPendingKey = 0;
    tick();
    e.mZoomAllAfterView = true;
    mApp.mOvAutoCadP->mPendingSpecial = 0x20009; // front
    tick();
  }
};

/// A test of sessions. The first one is clean, and later clean ones must have the same outcome.
class SessionTest : public testing::Test {
protected:
  void SetUp() override {
    call_log::clear();
    fake_devlink::reset();
    rig::useOwnHome();
    rig::home().write("OvScribe2018.dll", "stands for the menu reader");
    mClean = cleanOutcome();
  }
  void TearDown() override { call_log::clear(); }

  std::string cleanOutcome() {
    Session session(mIsLogging);
    session.play();
    EXPECT_TRUE(session.isPumpRunning());
    session.unload();
    EXPECT_EQ(errors(), std::vector<std::string>{}) << host::historyText();
    expectBalance("");
    return Session::outcome();
  }

  static std::vector<std::string> errors() {
    std::vector<std::string> found;
    for (const rig::Record& record : rig::allRecords(0))
      if (record.type == "ERR")
        found.push_back(record.text);
    return found;
  }

  static bool hasError(const std::string& text) {
    const std::vector<std::string> all = errors();
    return std::find(all.begin(), all.end(), text) != all.end();
  }

  static void expectBalance(const std::string& faulted) {
    const host::Held held = host::held();
    EXPECT_EQ(held.selectionSets, faulted == "acedSSFree" ? held.selectionSets : 0);
    EXPECT_EQ(held.openForRead + held.openForWrite,
              faulted == "close" ? held.openForRead + held.openForWrite : 0);
    // Without a document there is nothing to unlock, and the unload tries once.
    const std::set<std::string> ofUnlocking = {"acDocManagerPtr", "curDocument", "unlockDocument"};
    EXPECT_TRUE(held.locks == 0 || ofUnlocking.count(faulted) != 0);
#ifndef _WIN32
    EXPECT_TRUE(faulted == "KillTimer" || desktop::activeTimers().empty());
#endif
    EXPECT_EQ(host::nonFiniteCalls(), 0);
  }

  std::string mClean;
  bool mIsLogging = false;
};

#endif
