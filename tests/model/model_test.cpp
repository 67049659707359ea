// Random sequences of ticks on random settings, drawings and windows, with faults of the host in between: the
// plug-in's engine has to make the calls and records, and to end in the state, that the model expects.
//
// OV_SEED=N plays sequence N alone, OV_COUNT=N plays N sequences.

#include <cmath>
#include <cstdlib>
#include <random>

#include <gtest/gtest.h>

#include "call_log.h"
#include "desktop.h"
#include "engine.h"
#include "engine_rig.h"
#include "engine_state.h"
#include "model_call.h"

namespace {

constexpr int kSequences = 700;
constexpr int kTicks = 40; // of a sequence
constexpr int kEntities = 6;

/// Random numbers that are the same with every compiler.
class Dice {
public:
  explicit Dice(int seed) : mNumbers(static_cast<unsigned>(seed)) {}
  int below(int count) { return static_cast<int>(mNumbers() % static_cast<unsigned>(count)); }
  bool oneIn(int count) { return below(count) == 0; }
  template <class T> T of(std::initializer_list<T> choices) {
    return choices.begin()[below(static_cast<int>(choices.size()))];
  }
  double real() {
    if (oneIn(3))
      return below(2001) * 0.01 - 10;
    return of({0.0, 0.0, 1.0, -1.0, 100.0, -3.5, 1e6, 1e-11, oneIn(20) ? 1e200 : 2.0});
  }
  AcGePoint3d point() { return {real(), real(), real()}; }
  AcGeVector3d vector() { return {real(), real(), real()}; }

private:
  std::mt19937 mNumbers;
};

/// What the model asks for. Only the slots and the rotation are kept apart from the plug-in's own.
class Given : public model::Inputs {
public:
  int key = -1;
  int special = 0;
  int rotation = 0;
  bool isHorizonKept = false, isHovering = false, isZoomingAll = false;
  bool isMenuThere = false;
  std::vector<std::string> modeNames, menuValues;
  OvAutoCad* pluginP = nullptr;

private:
  int traSensBase() const override { return pluginP->mTraSensBase; }
  int rotSensBase() const override { return pluginP->mRotSensBase; }
  unsigned maxContMoveTime() const override { return static_cast<unsigned>(pluginP->mMaxContMoveTime); }
  bool useInt3dIntrfce() const override { return pluginP->mUseInt3dIntrfce; }
  int minThreshold() const override { return pluginP->mMinThreshold; }
  bool toggleRotationCenter() const override { return pluginP->mToggleRotationCenter; }
  bool toggleRotationAxis() const override { return pluginP->mToggleRotationAxis; }
  bool scrollTreeAndList() const override { return pluginP->mScrollTreeAndList; }
  bool objectMoveMode() const override { return pluginP->mAutoCadProxyP->mObjectMoveMode; }
  short axis(int index) override {
    const OvAutoCad& p = *pluginP;
    return std::array<short, 6>{p.mCapX, p.mCapY, p.mCapZ, p.mCapA, p.mCapB, p.mCapC}.at(
        static_cast<std::size_t>(index));
  }
  int pendingKey() override { return key; }
  int pendingSpecial() override { return special; }
  int rotMode() override { return rotation; }
  bool keepHorizon() override { return isHorizonKept; }
  bool hoverMode() override { return isHovering; }
  bool zoomAllAfterView() override { return isZoomingAll; }
  void keyServed() override { key = -1; }
  void specialServed() override { special = 0; }
  bool menuFile(std::string& path, std::vector<std::string>& modes,
                std::vector<std::string>& menuBarValues) override {
    path = rig::home().native() + "\\Orvaner\\Applications\\autocad.mnu";
    modes = modeNames;
    menuBarValues = menuValues;
    return isMenuThere;
  }
};

/// One sequence: a plug-in of its own, loaded on random settings.
class Sequence {
public:
  explicit Sequence(int seed) : mDice(seed) {
    call_log::clear();
    host::reset();
    desktop::reset();
    desktop::holdClock();
    rig::useOwnHome();
    rig::home().remove(rig::kMenuFile);
    rig::home().remove("Orvaner/autocad_addin_log.txt");
    const int time = mDice.of({0, 1, 100, 500, 500, 500});
    desktop::setTickStep(static_cast<DWORD>(time / (1 + mDice.below(5)) + 1));
    desktop::setTickCount(mDice.of({0u, 5000u, 0xFFFFFF80u}));
    rig::home().write(
        rig::kSettingsFile,
        rig::settingsText({{"transSensBase", std::to_string(mDice.of({20000, 20000, 350, -7000, 0, 1}))},
                           {"rotSensBase", std::to_string(mDice.of({10000, 10000, 120, -9000, 0, 1}))},
                           {"maxContMoveTime", std::to_string(time)},
                           {"useInt3dIntrfce", mDice.oneIn(12) ? "on" : "off"}}));
    devlink_twin::reset();
    mPluginP = std::make_unique<OvAutoCad>();
    mPluginP->mIsToWatchConnection = false;
    rig::forgetSelection();
    motion::viewP = nullptr;
    motion::cvportNumber = 0;
    host::add(rig::line(mDice.point(), mDice.point()));
    host::add(rig::line({1, 2, 3}, {1, 2, 3}));
    host::add(rig::line({1, 2, 3}, {4, 6, 3}));
    host::add(std::make_unique<AcDbCircle>(mDice.point(), AcGeVector3d(0, 0, 1), 2.0));
    host::add(std::make_unique<AcDbPoint>(mDice.point()));
    host::add(
        std::make_unique<AcDb3dPolyline>(std::vector<AcGePoint3d>{mDice.point(), mDice.point()}, false));
    mGiven.pluginP = mPluginP.get();
    mLogEnd = rig::logSize();
  }

  /// Returns what differed first; empty: nothing.
  std::string play() {
    model::Engine expected(mGiven);
    expected.timerId = static_cast<double>(mPluginP->mAutoCadProxyP->mTimerId);
    for (int tick = 1; tick <= kTicks; ++tick) {
      changeSurroundings();
      expected.isPumpRunning = engine().mIsPumpRunning = !mDice.oneIn(50);
      const std::vector<model::Call> calls = recordTick();
      const std::vector<model::Record> records = takeRecords();
      model::Replay replay(calls, records, [](const std::string&) { return true; });
      std::string found;
      try {
        expected.timerProc(replay);
        replay.end();
        found = differenceFrom(expected);
      } catch (const model::Contradiction& contradiction) {
        found = contradiction.what();
      }
      if (!found.empty())
        return "tick " + std::to_string(tick) + ": " + found;
    }
    mPluginP.reset();
    return leftOver();
  }

private:
  AutoCadProxy& engine() { return *mPluginP->mAutoCadProxyP; }

  short axis() {
    const int sign = mDice.of({1, -1});
    const int threshold = mPluginP->mMinThreshold % 0x8000;
    return static_cast<short>(
        mDice.of({0, 0, 0, threshold * sign, (threshold + 1) * sign, 100 * sign, 300 * sign,
                  mDice.below(400) * sign, mDice.below(0x8000) * sign, 0x7FFF, -0x8000, 0, 0}));
  }

  void changeSurroundings() {
    if (mDice.oneIn(6))
      changeSettings();
    if (mDice.oneIn(2)) {
      std::array<int, 6> sample{};
      const bool isRelease = mDice.oneIn(4);
      for (int& value : sample)
        value = isRelease ? 0 : axis();
      rig::setSample(*mPluginP, sample[0], sample[1], sample[2], sample[3], sample[4], sample[5]);
    }
    if (mDice.oneIn(5))
      mPluginP->mPendingKey = mGiven.key = mDice.below(6) - 1;
    if (mDice.oneIn(5))
      mPluginP->mPendingSpecial = mGiven.special =
          mDice.of({0, -1, 0x20009, 0x2000A, 0x2000B, 0x2000C, 0x2000C, 0x2000D, 0x20016, 0x20017, 0x20018});
    if (mDice.oneIn(5))
      changeHost();
    if (mDice.oneIn(4))
      changeSelection();
    if (mDice.oneIn(4))
      changeView();
    if (mDice.oneIn(6))
      changeWindows();
    if (mDice.oneIn(12))
      changeMenuFile();
  }

  void changeSettings() {
    OvAutoCad& p = *mPluginP;
    p.mMinThreshold = mDice.of({0, 0, 0, 1, 20, 0x10005, 0x7FFF, 0xFFFF});
    p.mToggleRotationCenter = mDice.oneIn(2);
    p.mToggleRotationAxis = mDice.oneIn(2);
    p.mScrollTreeAndList = mDice.oneIn(2);
    engine().mObjectMoveMode = mDice.oneIn(2);
    const int digit = mDice.below(10);
    mGiven.rotation = digit == 4 ? 2 : digit > 4 ? 0 : digit;
    mGiven.isHorizonKept = mDice.oneIn(2);
    const int hundreds = mDice.of({0, 0, 1, 7});
    mGiven.isHovering = hundreds > 0 || digit == 4;
    engine().setRotMode(100 * hundreds + (mGiven.isHorizonKept ? 10 * (1 + mDice.below(9)) : 0) + digit);
    engine().mZoomAllAfterView = mGiven.isZoomingAll = mDice.oneIn(2);
  }

  void changeHost() {
    const bool hasDocument = !mDice.oneIn(12);
    const bool hasManager = !mDice.oneIn(12);
    mHasLostDocument = mHasLostDocument || !hasDocument || !hasManager;
    host::setHasDocument(hasDocument);
    host::setHasDocumentManager(hasManager);
    host::setViewValid(!mDice.oneIn(8));
    host::setLayout(mDice.oneIn(2));
    if (mDice.oneIn(8))
      host::removeVariable(mDice.of({"tilemode", "cvport"}));
    host::LayoutState layout;
    layout.width = mDice.of({300.0, 300.0, 0.0, 1e200});
    layout.height = mDice.of({200.0, 200.0, 0.0, 50.0});
    layout.viewHeight = mDice.of({100.0, 100.0, 0.0, -5.0, 1.7e308, 5e-324});
    layout.centre = {mDice.real(), mDice.real()};
    host::setLayoutState(layout);
  }

  void changeSelection() {
    std::vector<int> numbers;
    const int most = mDice.of({0, 1, 1, 3, 6});
    for (int i = 0; i < most; ++i)
      numbers.push_back(1 + mDice.below(kEntities));
    host::selectNumbers(numbers);
    const AcDbObjectId id = host::entityId(1 + mDice.below(kEntities));
    host::setCannotBeOpened(id, mDice.oneIn(3));
    host::setHasNoExtents(id, mDice.oneIn(3));
    host::setRefusesTransform(id, mDice.oneIn(3));
  }

  void changeView() {
    host::ViewState view;
    view.perspective = mDice.oneIn(2);
    view.position = mDice.point();
    view.target = mDice.oneIn(12) ? view.position : mDice.point();
    view.up = mDice.oneIn(8) ? view.position - view.target : mDice.vector();
    view.fieldWidth = mDice.of({40.0, 0.0, 1e-3, 1e200, -1.0, 7.0});
    view.fieldHeight = mDice.of({10.0, 0.0, 1e-3, 1e150, 3.0});
    host::setView(view);
  }

  void changeWindows() {
    for (const HWND window : mWindows)
      desktop::removeWindow(window);
    mWindows.clear();
    const int count = mDice.below(6);
    for (int i = 0; i < count; ++i) {
      desktop::Window window;
      window.className = mDice.of({L"SysTreeView32", L"MyTreeView", L"SysListView32", L"ListBox", L"RichEdit",
                                   L"QWidget", L"QWidget", L"QWidgets", L"edit", L""});
      window.rect =
          desktop::rectangle(-mDice.below(40), mDice.below(40), 60 + mDice.below(200), 20 + mDice.below(200));
      if (!mWindows.empty() && !mDice.oneIn(4))
        window.parent = mWindows[mDice.oneIn(2) ? 0 : mWindows.size() - 1];
      window.isVisible = !mDice.oneIn(6);
      for (auto* const barP : {&window.vertical, &window.horizontal}) {
        if (mDice.oneIn(4))
          continue;
        desktop::ScrollBar bar;
        bar.min = mDice.of({0, 0, 0, 5, -1});
        bar.max = mDice.of({0, 10, 49, 50, 99, 250, 1099, 5000, -1});
        bar.page = mDice.of({0u, 1u, 10u, 11u, 0xFFFFFFFFu});
        bar.position = mDice.of({0, 1, 5, 40, 240, bar.max});
        *barP = bar;
      }
      mWindows.push_back(desktop::addWindow(window));
    }
    SetCursorPos(mDice.below(80), mDice.below(80));
  }

  void changeMenuFile() {
    mGiven.isMenuThere = !mDice.oneIn(4);
    mGiven.modeNames.assign({"Start", "Layout", "Model"});
    mGiven.modeNames.resize(static_cast<std::size_t>(mDice.below(4)));
    mGiven.menuValues.clear();
    std::string text = "[Modes]\n";
    for (const std::string& name : mGiven.modeNames)
      text += name + " = x\n";
    text += "\n[MenuBar]\n";
    for (int i = mDice.below(6); i > 0; --i) {
      mGiven.menuValues.push_back(mDice.of({"x}LINE", "x}A;;M=B;C", "a}b}c|d|e", "a|b}c", "x}", "plain",
                                            "x}|B", "x};", "x};A", "x}M=;m=1;M; M=2", "x}A;B;"}));
      text += "item " + std::to_string(i) + " = " + mGiven.menuValues.back() + "\n";
    }
    rig::home().remove(rig::kMenuFile);
    if (mGiven.isMenuThere)
      rig::home().write(rig::kMenuFile, text);
  }

  /// Lets the timer tick once, in a third of the cases with faults of the host, and returns its calls.
  std::vector<model::Call> recordTick() {
    std::vector<model::Call> calls;
    call_log::startTrace([&calls](call_log::Record&& record) {
      if (record.isBracketed)
        calls.push_back(program::modelCall(record));
    });
    for (int faults = mNames.empty() || !mDice.oneIn(3) ? 0 : 1 + mDice.below(2); faults > 0; --faults) {
      const std::string& name =
          mNames[static_cast<std::size_t>(mDice.below(static_cast<int>(mNames.size())))];
      const int nth = 1 + mDice.below(3);
      const int times = mDice.of({1, 1, 2, 9});
      mDice.oneIn(2) ? call_log::failAt(name, nth, times) : call_log::throwAt(name, nth, times);
      mHasFailed = true;
    }
    {
      const call_log::Bracket bracket("TimerProc");
      TimerProc(nullptr, WM_TIMER, 0, 0);
    }
    call_log::stopTrace();
    call_log::clear();
    for (const model::Call& call : calls)
      if (std::find(mNames.begin(), mNames.end(), call.name) == mNames.end())
        mNames.push_back(call.name);
    return calls;
  }

  std::vector<model::Record> takeRecords() {
    std::vector<model::Record> records;
    for (const std::string& record : rig::records(mLogEnd))
      records.push_back({record.substr(0, 3), record.substr(4)});
    mLogEnd = rig::logSize();
    return records;
  }

  std::string differenceFrom(const model::Engine& m) {
    const AutoCadProxy& e = engine();
    const motion::Movement& kept = motion::movement;
    struct Value {
      const char* name;
      double expected, found, scale;
    };
    const auto number = [](const void* handle) {
      return static_cast<double>(reinterpret_cast<std::uintptr_t>(handle));
    };
    for (const Value& value : {
             Value{"mPendingKey", double(mGiven.key), double(mPluginP->mPendingKey), 0},
             Value{"mPendingSpecial", double(mGiven.special), double(mPluginP->mPendingSpecial), 0},
             Value{"mViewMode", double(m.viewMode), double(e.mViewMode), 0},
             Value{"mCapIsMoving", double(m.capIsMoving), double(e.mCapIsMoving), 0},
             Value{"mIsDocLocked", double(m.isDocLocked), double(e.mIsDocLocked), 0},
             Value{"mMenuIsLoaded", double(m.menuIsLoaded), double(e.mMenuIsLoaded), 0},
             Value{"mTimerId", m.timerId, double(e.mTimerId), 0},
             Value{"viewP", m.view, number(motion::viewP), 0},
             Value{"cvportNumber", double(m.cvportNumber), double(motion::cvportNumber), 0},
             Value{"selCenterValid", double(m.selCenterValid), double(kept.selCenterValid), 0},
             Value{"selAxisValid", double(m.selAxisValid), double(kept.selAxisValid), 0},
             Value{"selCenterPoint.x", m.selCenterPoint.x, kept.selCenterPoint.x, m.selCenterScale},
             Value{"selCenterPoint.y", m.selCenterPoint.y, kept.selCenterPoint.y, m.selCenterScale},
             Value{"selCenterPoint.z", m.selCenterPoint.z, kept.selCenterPoint.z, m.selCenterScale},
             Value{"selAxisVector.x", m.selAxisVector.x, kept.selAxisVector.x, 1},
             Value{"selAxisVector.y", m.selAxisVector.y, kept.selAxisVector.y, 1},
             Value{"selAxisVector.z", m.selAxisVector.z, kept.selAxisVector.z, 1},
         })
      if (!(value.expected == value.found || std::abs(value.expected - value.found) <= 1e-12 * value.scale ||
            (std::isnan(value.expected) && std::isnan(value.found))))
        return std::string(value.name) + ": expected " + std::to_string(value.expected) + ", found " +
               std::to_string(value.found);
    return m.modes == e.mModes && m.menuEntries == e.mMenuEntries ? "" : "the menu's tables differ";
  }

  /// What the unloaded plug-in has kept of the host's.
  std::string leftOver() const {
    const host::Held held = host::held();
    if (!mHasFailed && held.selectionSets + held.openForRead + held.openForWrite != 0)
      return "a selection set or an object is still held";
    if (!mHasFailed && !mHasLostDocument && held.locks != 0)
      return "the document is still locked";
    return host::viewCounts().nonFiniteCalls == 0 ? "" : "the host was given a number that isn't finite";
  }

  Dice mDice;
  Given mGiven;
  std::unique_ptr<OvAutoCad> mPluginP;
  std::vector<HWND> mWindows;
  std::vector<std::string> mNames; // of the operations called up to now
  std::size_t mLogEnd = 0;
  bool mHasFailed = false;
  bool mHasLostDocument = false;
};

TEST(Model, ExplainsEverySequence) {
  const char* const seed = std::getenv("OV_SEED");
  const char* const count = std::getenv("OV_COUNT");
  const int first = seed ? std::atoi(seed) : 1;
  const int last = seed ? first : count ? std::atoi(count) : kSequences;
  for (int number = first; number <= last; ++number) {
    const std::string difference = Sequence(number).play();
    ASSERT_EQ(difference, "") << "Repeat it: OV_SEED=" << number << " " << OV_PROGRAM;
  }
}

} // namespace
