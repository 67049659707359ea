// Random sequences of ticks on random settings, drawings and windows, most of them with faults of the host:
// the plug-in's engine has to make the calls and records, and to end in the state, that the model expects.
//
// OV_SEED=N plays sequence N alone, OV_COUNT=N plays the first N.

#include <cmath>
#include <random>

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
  double real() { return oneIn(3) ? below(2001) * 0.01 - 10 : of({0.0, 0.0, 1.0, -1.0, 100.0, 1e6, 1e-11}); }
  AcGePoint3d point() { return {real(), real(), real()}; }

private:
  std::mt19937 mNumbers;
};

/// One sequence: a plug-in of its own, loaded on random settings. The model reads what the engine never
/// writes from the plug-in itself.
class Sequence : private model::Inputs {
public:
  explicit Sequence(int seed) : mDice(seed), mIsToFail(!mDice.oneIn(3)) {
    call_log::clear();
    host::reset();
    desktop::reset();
    desktop::holdClock();
    fake_devlink::reset();
    rig::useOwnHome();
    rig::home().remove(rig::kMenuFile);
    rig::home().remove("Orvaner/autocad_addin_log.txt");
    rig::forgetSelection();
    motion::viewP = nullptr;
    motion::cvportNumber = 0;
    loadPlugin();
    host::add(rig::line(mDice.point(), mDice.point()));
    host::add(rig::line({1, 2, 3}, {1, 2, 3}));
    host::add(rig::line({1, 2, 3}, {4, 6, 3}));
    host::add(std::make_unique<AcDbCircle>(mDice.point(), AcGeVector3d(0, 0, 1), 2.0));
    host::add(std::make_unique<AcDbCircle>(mDice.point(), AcGeVector3d(1, 0, 0), 0.5));
    host::add(std::make_unique<AcDbPoint>(mDice.point()));
    call_log::startTrace([this](call_log::Record&& record) {
      if (record.isBracketed)
        mCalls.push_back(program::modelCall(record));
    });
  }
  ~Sequence() override { call_log::stopTrace(); }

  /// Returns what differed first; empty: nothing.
  std::string play() {
    model::Engine expected(*this);
    expected.timerId = static_cast<double>(engine().mTimerId);
    for (int tick = 1; tick <= kTicks; ++tick) {
      changeSurroundings();
      expected.isPumpRunning = engine().mIsPumpRunning = !mDice.oneIn(50);
      const std::vector<model::Record> records = recordTick();
      model::Replay replay(mCalls, records, [](const std::string&) { return true; });
      std::string found;
      try {
        expected.timerProc(replay);
        replay.end();
        found = difference(expected);
      } catch (const model::Contradiction& contradiction) {
        found = contradiction.what();
      }
      if (!found.empty())
        return "tick " + std::to_string(tick) + ": " + found;
    }
    mPluginP.reset();
    const host::Held held = host::held();
    const bool isAllGiven = held.selectionSets + held.openForRead + held.openForWrite == 0 &&
                            (held.locks == 0 || mHasLostDocument) && desktop::activeTimers().empty();
    return mIsToFail || isAllGiven ? "" : "a set, an object, the lock or the timer is left at the end";
  }

private:
  int traSensBase() const override { return mPluginP->mTraSensBase; }
  int rotSensBase() const override { return mPluginP->mRotSensBase; }
  unsigned maxContMoveTime() const override { return static_cast<unsigned>(mPluginP->mMaxContMoveTime); }
  bool useInt3dIntrfce() const override { return mPluginP->mUseInt3dIntrfce; }
  int minThreshold() const override { return mPluginP->mMinThreshold; }
  bool toggleRotationCenter() const override { return mPluginP->mToggleRotationCenter; }
  bool toggleRotationAxis() const override { return mPluginP->mToggleRotationAxis; }
  bool scrollTreeAndList() const override { return mPluginP->mScrollTreeAndList; }
  bool objectMoveMode() const override { return mPluginP->mAutoCadProxyP->mObjectMoveMode; }
  short axis(int index) override { return mSample.at(static_cast<std::size_t>(index)); }
  int pendingKey() override { return mKey; }
  int pendingSpecial() override { return mSpecial; }
  int rotMode() override { return mRotation; }
  bool keepHorizon() override { return mIsHorizonKept; }
  bool hoverMode() override { return mIsHovering; }
  bool zoomAllAfterView() override { return mIsZoomingAll; }
  void keyServed() override { mKey = -1; }
  void specialServed() override { mSpecial = 0; }
  bool menuFile(std::string& path, std::vector<std::string>& modes,
                std::vector<std::string>& values) override {
    path = rig::home().native() + "\\Orvaner\\Applications\\autocad.mnu";
    modes = mModes;
    values = mMenuValues;
    return mIsMenuThere;
  }

  AutoCadProxy& engine() { return *mPluginP->mAutoCadProxyP; }

  void loadPlugin() {
    const int time = mDice.of({0, 1, 100, 100, 100, 500, 500, 500, 500, 500});
    desktop::setTickStep(static_cast<DWORD>(time / (1 + mDice.below(5)) + 1)); // a tick is some passes
    desktop::setTickCount(mDice.of({0u, 5000u, 0xFFFFFF80u}));
    const std::string traBase = std::to_string(mDice.of({20000, 20000, 350, -7000, 0, 1}));
    const std::string rotBase = std::to_string(mDice.of({10000, 10000, 120, -9000, 0, 1}));
    rig::home().write(rig::kSettingsFile,
                      rig::settingsText({{"transSensBase", traBase},
                                         {"rotSensBase", rotBase},
                                         {"maxContMoveTime", std::to_string(time)},
                                         {"useInt3dIntrfce", mDice.oneIn(12) ? "on" : "off"}}));
    mPluginP = std::make_unique<OvAutoCad>();
    mPluginP->mIsToWatchConnection = false;
  }

  void changeSurroundings() {
    const std::pair<int, void (Sequence::*)()> changes[] = {
        {6, &Sequence::changeSettings}, {1, &Sequence::changeSample},    {3, &Sequence::changeKeys},
        {5, &Sequence::changeHost},     {4, &Sequence::changeSelection}, {4, &Sequence::changeView},
        {6, &Sequence::changeWindows},  {12, &Sequence::changeMenuFile}};
    for (const auto& [ticks, change] : changes)
      if (mDice.oneIn(ticks))
        (this->*change)();
  }

  void changeKeys() {
    mPluginP->mPendingKey = mKey = mDice.below(6) - 1;
    mPluginP->mPendingSpecial = mSpecial =
        mDice.of({0, 0, -1, 0x20009, 0x2000A, 0x2000B, 0x2000C, 0x2000C, 0x2000D, 0x20016, 0x20017, 0x20018});
  }

  void changeSettings() {
    mPluginP->mMinThreshold = mDice.of({0, 0, 0, 0, 0, 0, 1, 20, 0x10005, 0x7FFF, 0xFFFF});
    mPluginP->mToggleRotationCenter = mDice.oneIn(2);
    mPluginP->mToggleRotationAxis = mDice.oneIn(2);
    mPluginP->mScrollTreeAndList = mDice.oneIn(3);
    engine().mObjectMoveMode = mDice.oneIn(2);
    engine().mZoomAllAfterView = mIsZoomingAll = mDice.oneIn(2);
    const int digit = mDice.below(10);
    const int tens = mDice.of({0, 0, 1, 2});
    const int hundreds = mDice.of({0, 0, 1, 7});
    engine().setRotMode(100 * hundreds + 10 * tens + digit);
    mRotation = digit == 4 ? 2 : digit > 4 ? 0 : digit;
    mIsHorizonKept = tens > 0;
    mIsHovering = hundreds > 0 || digit == 4;
  }

  void changeSample() {
    const bool isRelease = mDice.oneIn(2);
    const int threshold = mPluginP->mMinThreshold % 0x8000;
    for (short& value : mSample) {
      const int sign = mDice.of({1, -1});
      value = static_cast<short>(
          mDice.of({0, 0, 0, 0, 0, threshold * sign, (threshold + 1) * sign, 100 * sign, 300 * sign,
                    mDice.below(400) * sign, mDice.below(0x8000) * sign, 0x7FFF, -0x8000}));
      value = isRelease ? short{0} : value;
    }
    rig::setSample(*mPluginP, mSample[0], mSample[1], mSample[2], mSample[3], mSample[4], mSample[5]);
  }

  void changeHost() {
    const bool hasDocument = !mDice.oneIn(12);
    const bool hasManager = !mDice.oneIn(12);
    mHasLostDocument = mHasLostDocument || !hasDocument || !hasManager;
    host::setHasDocument(hasDocument);
    host::setHasDocumentManager(hasManager);
    host::setViewValid(!mDice.oneIn(8));
    host::setLayout(mDice.oneIn(3));
    if (mDice.oneIn(8))
      host::removeVariable(mDice.of({"tilemode", "cvport"}));
    else if (mDice.oneIn(4))
      host::setVariable("cvport", mDice.of<short>({1, 3, -1}));
    const double width = mDice.of({300.0, 300.0, 0.0, 1e200});
    const double height = mDice.of({200.0, 200.0, 0.0, 50.0});
    const double viewHeight = mDice.of({100.0, 100.0, 0.0, -5.0, 1.7e308, 5e-324});
    host::setLayoutState({width, height, viewHeight, {mDice.real(), mDice.real()}});
  }

  void changeSelection() {
    std::vector<int> numbers(mDice.of({0u, 1u, 1u, 3u, 6u}));
    for (int& number : numbers)
      number = 1 + mDice.below(kEntities);
    host::selectNumbers(numbers);
    const AcDbObjectId id = host::entityId(1 + mDice.below(kEntities));
    for (const auto setMark : {host::setCannotBeOpened, host::setHasNoExtents, host::setRefusesTransform})
      setMark(id, mDice.oneIn(3));
  }

  void changeView() {
    host::ViewState view;
    view.perspective = mDice.oneIn(2);
    view.position = mDice.point();
    view.target = mDice.oneIn(12) ? view.position : mDice.point();
    view.up = mDice.oneIn(8) ? view.position - view.target : mDice.point().asVector();
    view.fieldWidth = mDice.of({40.0, 0.0, 1e-3, 1e308, -1.0, 7.0});
    view.fieldHeight = mDice.of({10.0, 0.0, 1e-3, 1e150, 3.0});
    host::setView(view);
  }

  void changeWindows() {
    for (const HWND window : mWindows)
      desktop::removeWindow(window);
    mWindows.clear();
    for (int left = mDice.below(6); left > 0; --left) {
      desktop::Window window;
      window.className = mDice.of({L"SysTreeView32", L"MyTreeView", L"SysListView32", L"ListBox", L"RichEdit",
                                   L"QWidget", L"QWidget", L"QWidgets", L"edit", L""});
      window.rect = desktop::rectangle(-mDice.below(40), mDice.below(40), 50 + 10 * mDice.below(20), 100);
      if (!mWindows.empty() && !mDice.oneIn(4))
        window.parent = mDice.oneIn(2) ? mWindows.front() : mWindows.back();
      window.isVisible = !mDice.oneIn(6);
      for (auto* const barP : {&window.vertical, &window.horizontal}) {
        const int most = mDice.of({0, 10, 49, 50, 99, 250, 1099, 5000, -1});
        const UINT page = mDice.of({0u, 1u, 10u, 11u, 0xFFFFFFFFu});
        const int position = mDice.of({0, 1, 5, 40, 240, most});
        *barP = desktop::ScrollBar{mDice.of({0, 0, 0, 5, -1}), most, page, position};
      }
      mWindows.push_back(desktop::addWindow(window));
    }
    SetCursorPos(mDice.below(80), mDice.below(80));
  }

  void changeMenuFile() {
    mIsMenuThere = !mDice.oneIn(4);
    mModes.assign(mDice.of({0u, 1u, 3u}), "Some mode");
    mMenuValues.resize(mDice.of({0u, 2u, 5u}));
    std::string text = "[Modes]\n";
    for (const std::string& name : mModes)
      text += name + " = x\n";
    text += "\n[MenuBar]\n";
    for (std::string& value : mMenuValues) {
      value = mDice.of({"x}LINE", "x}A;;M=B;C", "a}b}c|d|e", "a|b}c", "x}", "plain", "x}|B", "x};", "x};A",
                        "x}M=;m=1;M; M=2", "x}A;B;"});
      text += "item = " + value + "\n";
    }
    rig::home().write(rig::kMenuFile, text);
    if (!mIsMenuThere)
      rig::home().remove(rig::kMenuFile);
  }

  /// Orders a fault of an operation that the last tick called, or that any tick did.
  void orderFault() {
    const bool isOld = mCalls.empty() || mDice.oneIn(2);
    const auto size = static_cast<int>(isOld ? mNames.size() : mCalls.size());
    const auto at = static_cast<std::size_t>(mDice.below(size));
    const std::string& name = isOld ? mNames[at] : mCalls[at].name;
    const int nth = mDice.of({1, 1, 1, 2, 4});
    (mDice.oneIn(2) ? call_log::throwAt : call_log::failAt)(name, nth, mDice.of({1, 1, 2, 9}));
  }

  /// Lets the timer tick once, takes its calls, and returns its records.
  std::vector<model::Record> recordTick() {
    for (int faults = mIsToFail ? mDice.of({0, 1, 1, 2}) : 0; faults > 0; --faults)
      orderFault();
    mCalls.clear();
    const std::size_t logStart = rig::logSize();
    {
      const call_log::Bracket bracket("TimerProc");
      TimerProc(nullptr, WM_TIMER, 0, 0);
    }
    call_log::flushTrace();
    call_log::clear();
    for (const model::Call& call : mCalls)
      if (std::find(mNames.begin(), mNames.end(), call.name) == mNames.end())
        mNames.push_back(call.name);
    std::vector<model::Record> records;
    for (const std::string& record : rig::records(logStart))
      records.push_back({record.substr(0, 3), record.substr(4)});
    return records;
  }

  /// Returns how the engine's state differs from the expected one; empty: it doesn't.
  std::string difference(const model::Engine& m) {
    using State = std::tuple<int, int, int, bool, bool, bool, double, double, int, bool, bool>;
    const AutoCadProxy& e = engine();
    const motion::Movement& kept = motion::movement;
    const State expected(mKey, mSpecial, m.viewMode, m.capIsMoving, m.isDocLocked, m.menuIsLoaded, m.timerId,
                         m.view, m.cvportNumber, m.selCenterValid, m.selAxisValid);
    const State found(mPluginP->mPendingKey, mPluginP->mPendingSpecial, e.mViewMode, e.mCapIsMoving,
                      e.mIsDocLocked, e.mMenuIsLoaded, e.mTimerId,
                      reinterpret_cast<std::uintptr_t>(motion::viewP), motion::cvportNumber,
                      kept.selCenterValid, kept.selAxisValid);
    if (expected != found)
      return "key, special, mode, moving, locked, menu, timer, view, viewport, has centre, has axis: "
             "expected " +
             testing::PrintToString(expected) + ", found " + testing::PrintToString(found);
    const AcGePoint3d c = kept.selCenterPoint;
    const AcGeVector3d a = kept.selAxisVector;
    if (!(length(m.selCenterPoint - model::Vec3{c.x, c.y, c.z}) <= 1e-12 * m.selCenterPoint.scale) ||
        !(length(m.selAxisVector - model::Vec3{a.x, a.y, a.z}) <= 1e-12))
      return "the selection's centre or axis";
    return m.modes == e.mModes && m.menuEntries == e.mMenuEntries ? "" : "modes or menu entries";
  }

  Dice mDice;
  bool mIsToFail;
  std::unique_ptr<OvAutoCad> mPluginP;
  std::array<short, 6> mSample{};
  int mKey = -1, mSpecial = 0, mRotation = 0;
  bool mIsHorizonKept = false, mIsHovering = false, mIsZoomingAll = false;
  bool mIsMenuThere = false, mHasLostDocument = false;
  std::vector<std::string> mModes, mMenuValues;
  std::vector<HWND> mWindows;
  std::vector<model::Call> mCalls;              // of the tick
  std::vector<std::string> mNames{"KillTimer"}; // of the operations called up to now
};

TEST(Model, ExplainsEverySequence) {
  const char* const seed = std::getenv("OV_SEED");
  const char* const count = std::getenv("OV_COUNT");
  const int first = seed ? std::atoi(seed) : 1;
  const int last = seed ? first : count ? std::atoi(count) : kSequences;
  for (int number = first; number <= last; ++number)
    ASSERT_EQ(Sequence(number).play(), "") << "Repeat it: OV_SEED=" << number << " " << OV_PROGRAM;
}

} // namespace
