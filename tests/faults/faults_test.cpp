// One scripted session through every path of the plug-in, repeated with the k-th call of each host and
// Windows operation failing, then throwing, for every k that the session reaches; and the same for the device
// library.
//
// After each run the plug-in must have given everything back, its errors must be the known ones, and a clean
// session must come out as the first did.

#include <algorithm>
#include <functional>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "auto_cad_proxy.h"
#include "autocad_app.h"
#include "call_log.h"
#include "daemon_proxy.h"
#include "desktop.h"
#include "engine_rig.h"
#include "engine_state.h"
#include "event_codes.h"
#include "fake_devlink.h"
#include "logging.h"
#include "trial.h"

namespace {

/// What the plug-in may say at type ERR, the device link's lines aside.
const std::set<std::string> kKnownErrors = {"Error AutoCadProxy()",
                                            "Error TimerProc()",
                                            "Error doTransform()",
                                            "Error handleDeviceKeys()",
                                            "Error handleCapIsDeflectedIn3DMode()",
                                            "Error handleCapIsDeflectedIn2DMode()",
                                            "Error handleCapIsReleased()",
                                            "Error moveXYZ()",
                                            "Error move3D()",
                                            "Error rotate()",
                                            "Error calcScreenAxesRelativeToObject()",
                                            "Error getSelObjectAxis()",
                                            "Error getSelObjectsCenter()",
                                            "Error transformSelection()",
                                            "Error StartDotNETPlugin()",
                                            "ViewP could not be retrieved!",
                                            "AcGsView object could not be retrieved!",
                                            "viewP not valid!",
                                            "AcDbObjectPointer could not be retrieved!",
                                            "System variable 'CVPORT'could not be retrieved! rc = -5001",
                                            "Error: Invalid path ",
                                            "Error: OvScribe does not exist "};

/// The plug-in as the host has it, its timer ticking by hand.
class Session {
public:
  Session() {
    host::reset();
    desktop::reset();
    desktop::holdClock();
    desktop::setTickStep(60); // a pass takes long, so that a tick is a few passes
    desktop::setModulePath(widen(rig::home().backslashed("OVAutoCAD2019.arx")));
    rig::home().remove(rig::kMenuFile);
    rig::home().write(rig::kSettingsFile, rig::settingsText({{"creation", "off"},
                                                             {"trace", "off"},
                                                             {"debug", "off"},
                                                             {"info", "off"},
                                                             {"tmp", "off"},
                                                             {"logFile", "faults.txt"},
                                                             {"maxContMoveTime", "150"}}));
    rig::home().remove("Orvaner/faults.txt");
    rig::forgetSelection();
    host::add(rig::line({1, 2, 3}, {4, 6, 3}));
    host::add(std::make_unique<AcDbCircle>(AcGePoint3d(5, 5, 0), AcGeVector3d(0, 0, 1), 2.0));
  }

  /// Everything that counts for the k of an ordered fault.
  void play() {
    mIsLoaded = mApp.On_kInitAppMsg(nullptr) == AcRx::kRetOK;
    host::runQueue(); // netload
    if (!mIsLoaded)
      return;
    tick(); // menu file
    turnViews();
    moveObjects();
    workOnLayout();
    scroll();
    pressKeys();
  }

  void unload() {
    mApp.On_kUnloadAppMsg(nullptr);
    host::runQueue();
  }

  bool isPumpRunning() const { return !desktop::activeTimers().empty(); }

  /// What the session left behind, as text.
  static std::string outcome() {
    std::ostringstream os;
    os << rig::text(host::view().position, 9) << '|' << rig::text(host::view().target, 9) << '|'
       << rig::text(host::view().up, 9) << '|' << host::view().fieldWidth << '|'
       << rig::text(host::storedView().position, 9) << '|' << host::layout().viewHeight << '|'
       << host::layout().centre.x << '|' << host::layout().centre.y << '|';
    for (int i = 1; i <= host::entityCount(); ++i) {
      AcDbExtents extents;
      if (host::entity(i)->getGeomExtents(extents) == Acad::eOk)
        os << rig::text(extents.minPoint(), 9) << '|';
    }
    os << host::historyText();
    return os.str();
  }

private:
  static std::wstring widen(const std::string& text) { return std::wstring(text.begin(), text.end()); }

  void tick() {
    desktop::runTimers(100);
    host::runQueue();
  }
  void hold(int x, int y, int z, int a, int b, int c) {
    rig::setSample(*mApp.mOvAutoCadP, x, y, z, a, b, c);
    tick();
  }
  static void point(int x, int y) {
    try {
      SetCursorPos(x, y);
    } catch (const call_log::InjectedFault&) { // our own call, not the plug-in's
    }
  }
  void letGo() { hold(0, 0, 0, 0, 0, 0); }

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
  void pressKeys() {
    AutoCadProxy& e = *mApp.mOvAutoCadP->mAutoCadProxyP;
    mApp.mOvAutoCadP->mPendingKey = 0;
    tick();
    e.mZoomAllAfterView = true;
    mApp.mOvAutoCadP->mPendingSpecial = 0x20009; // front
    tick();
  }

  CAutoCAD2011App mApp;
  bool mIsLoaded = false;
};

class Faults : public testing::Test {
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
    Session session;
    session.play();
    EXPECT_TRUE(session.isPumpRunning());
    session.unload();
    EXPECT_EQ(errors(), std::vector<std::string>{}) << host::historyText();
    expectBalance("");
    return Session::outcome();
  }

  static std::vector<std::string> errors() {
    std::vector<std::string> found;
    if (!rig::home().exists("Orvaner/faults.txt"))
      return found;
    std::istringstream lines(rig::home().read("Orvaner/faults.txt"));
    for (std::string line; std::getline(lines, line);) {
      constexpr std::size_t kTextColumn = 82;
      if (line.size() > kTextColumn && line.compare(13, 3, "ERR") == 0)
        found.push_back(line.substr(kTextColumn));
    }
    return found;
  }

  static void expectBalance(const std::string& faulted) {
    const host::Held held = host::held();
    EXPECT_EQ(held.selectionSets, faulted == "acedSSFree" ? held.selectionSets : 0);
    EXPECT_EQ(held.openForRead + held.openForWrite,
              faulted == "close" ? held.openForRead + held.openForWrite : 0);
    // Without a document there is nothing to unlock.
    const std::set<std::string> ofUnlocking = {"acDocManagerPtr", "curDocument", "unlockDocument"};
    EXPECT_TRUE(held.locks == 0 || ofUnlocking.count(faulted) != 0);
    EXPECT_TRUE(faulted == "KillTimer" || desktop::activeTimers().empty());
    EXPECT_EQ(host::viewCounts().nonFiniteCalls, 0);
  }

  std::string mClean;
  std::int64_t mReached = 0;
};

TEST_F(Faults, EveryCallFailingThenThrowing) {
  call_log::startCounting();
  {
    Session session;
    session.play();
    const std::int64_t reached = call_log::count();
    call_log::clear();
    session.unload();
    ASSERT_GT(reached, 300);
    RecordProperty("calls", static_cast<int>(reached));
    mReached = reached;
  }
  Trial trial("Each call of the host and of Windows in a session through all paths fails, then throws");
  std::set<std::string> struck;
  for (std::int64_t k = 1; k <= mReached; ++k) {
    for (const bool isThrow : {false, true}) {
      Session session;
      if (isThrow)
        call_log::throwAny(k);
      else
        call_log::failAny(k);
      session.play();
      const std::string faulted = call_log::lastFault();
      call_log::clear();
      SCOPED_TRACE(testing::Message() << faulted << (isThrow ? " throws" : " fails") << " as call " << k);
      ASSERT_NE(faulted, "");
      struck.insert(faulted);
      const std::vector<std::string> said = errors();
      bool isPumpStopped = false;
      for (const std::string& error : said) {
        EXPECT_TRUE(kKnownErrors.count(error) != 0 || error.compare(0, 9, "keyEvent ") == 0) << error;
        isPumpStopped = isPumpStopped || error == "Error TimerProc()" || error == "Error AutoCadProxy()";
      }
      // Only a throw at the level of the timer callback, or no timer, stops the pump.
      EXPECT_EQ(session.isPumpRunning(), !isPumpStopped || faulted == "KillTimer");
      EXPECT_TRUE(!isPumpStopped || faulted == "SetTimer" || (isThrow && faulted == "KillTimer"));
      EXPECT_TRUE(isPumpStopped || faulted != "SetTimer");
      session.unload();
      expectBalance(faulted);
      trial.count(faulted + " as call " + std::to_string(k), !HasFailure());
      if (HasFailure())
        return; // one such report is enough
    }
    if (k % 20 == 0) {
      ASSERT_EQ(cleanOutcome(), mClean) << "after call " << k;
    }
  }
  trial.detail(std::to_string(mReached) + " calls of " + std::to_string(struck.size()) + " operations");
  for (const char* const operation :
       {"acedGetVar", "setView", "zoom", "update", "acedSSGet", "acdbOpenObject", "transformBy",
        "lockDocument", "unlockDocument", "sendStringToExecute", "setViewCenter", "SendMessageW", "SetTimer",
        "KillTimer", "addCommand", "acgsSetViewParameters"})
    EXPECT_EQ(struck.count(operation), 1u) << "the session no longer reaches " << operation;
}

TEST_F(Faults, EveryCallOfTheDeviceLibraryFailingThenThrowing) {
  const char* const functions[] = {"ovConnect",    "ovDisconnect",          "ovGetDevNum",  "ovGetDevInfo",
                                   "ovFetchEvent", "ovGetAdvancedSettings", "ovSetApplMode"};
  Trial trial("Each function of the device library fails, then throws, at its first calls");
  for (const char* const function : functions) {
    for (int call = 0; call < 8; ++call) {
      const bool isThrow = call % 2 != 0;
      SCOPED_TRACE(testing::Message()
                   << function << (isThrow ? " throws" : " fails") << " after " << call / 2);
      fake_devlink::reset();
      fake_devlink::fail(function, 1, call / 2, isThrow);
      fake_devlink::pushMotion({5, 0, 0, 0, 0, 0});
      fake_devlink::pushEvent(kRotationSettingsEvent1);
      fake_devlink::pushEvent(kAnnounceModeEvent);
      fake_devlink::pushMotion({0, 0, 0, 0, 0, 0});
      Session session;
      session.play();
      ASSERT_TRUE(fake_devlink::waitUntilTaken()) << "the reading thread has stopped";
      EXPECT_TRUE(session.isPumpRunning());
      session.unload();
      expectBalance("");
      trial.count(std::string(function) + " at call " + std::to_string(call), !HasFailure());
    }
  }
  fake_devlink::reset();
  EXPECT_EQ(cleanOutcome(), mClean);
}

} // namespace
