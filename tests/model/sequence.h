#ifndef SEQUENCE_H
#define SEQUENCE_H

#include <cmath>
#include <functional>
#include <limits>
#include <optional>

#include "comparison.h"
#include "desktop.h"
#include "engine_state.h"

namespace rig {

constexpr int kTicks = 40;   // of a sequence
constexpr int kEntities = 8; // of its drawing
constexpr int kLeast = std::numeric_limits<int>::min(), kMost = std::numeric_limits<int>::max();

/// The choices of a sequence.
class Dice {
public:
  /// Returns a number from 0 to count - 1.
  using Source = std::function<unsigned(unsigned count)>;
  explicit Dice(Source source) : mSource(std::move(source)) {}
  int below(int count) { return static_cast<int>(mSource(static_cast<unsigned>(count))); }
  bool oneIn(int count) { return below(count) == 0; }
  template <class T> T of(std::initializer_list<T> choices) {
    return choices.begin()[below(static_cast<int>(choices.size()))];
  }
  double real() { return oneIn(3) ? below(2001) * 0.01 - 10 : of({0.0, 0.0, 1.0, -1.0, 100.0, 1e6, 1e-11}); }
  /// Returns one of the choices, now and then NaN or infinity.
  double size(std::initializer_list<double> choices) {
    const double none =
        oneIn(2) ? std::numeric_limits<double>::quiet_NaN() : std::numeric_limits<double>::infinity();
    return oneIn(40) ? none : of(choices);
  }
  AcGePoint3d point() { return {real(), real(), real()}; }

private:
  Source mSource;
};

/// A sequence of ticks with random settings, drawings and windows, and mostly with faults of the host. The plug-in's
/// engine must make the calls and records, and end in the state, that the model expects.
class Sequence : private ModelInputs {
public:
  explicit Sequence(Dice::Source source) : mDice(std::move(source)), mIsToFail(!mDice.oneIn(3)) {
    freshSurroundings();
    fake_devlink::reset();
    useOwnHome();
    home().remove(kMenuFile);
    home().remove("Orvaner/autocad_addin_log.txt");
    forgetMovement();
    loadPlugin();
    mExpected = model::Engine(*this);
    mExpected->timerId = static_cast<double>(proxy().mTimerId);
    host::add(line(mDice.point(), mDice.point()));
    host::add(line({1, 2, 3}, {1, 2, 3}));
    host::add(line({1.5e308, 0, 0}, {1.5e308, 1, 0}));
    host::add(line({1.5e308, 0, 0}, {1.5e308, 1, 0}));
    host::add(line({1, 2, 3}, {4, 6, 3}));
    host::add(std::make_unique<AcDbCircle>(mDice.point(), AcGeVector3d(0, 0, 1), 2.0));
    host::add(std::make_unique<AcDbCircle>(mDice.point(), AcGeVector3d(1, 0, 0), 0.5));
    host::add(std::make_unique<AcDbPoint>(mDice.point()));
  }

  /// Plays a tick. Returns the first difference, empty if there is none.
  std::string tick() {
    changeSurroundings();
    mExpected->isPumpRunning = proxy().mIsPumpRunning = !mDice.oneIn(50);
    orderFaults();
    const std::string found = contradiction(
        mCalls, [] { TimerProc(nullptr, WM_TIMER, 0, 0); },
        [this](model::Replay& replay) { mExpected->timerProc(replay); });
    call_log::clear();
    for (const model::Call& call : mCalls)
      if (std::find(mNames.begin(), mNames.end(), call.name) == mNames.end())
        mNames.push_back(call.name);
    return found.empty() ? difference(*mExpected) : found;
  }
  /// Unloads the plug-in. Returns what it has left behind, empty if nothing.
  std::string end() {
    mOwnPluginP.reset();
    const host::Held held = host::held();
    if (host::nonFiniteCalls() > 0)
      return "a view has got NaN or infinity";
    const bool isAllGiven = held.selectionSets + held.openForRead + held.openForWrite == 0 &&
                            (held.locks == 0 || mHasLostDocument) && desktop::activeTimers().empty();
    return mIsToFail || isAllGiven ? "" : "a set, an object, the lock or the timer is left at the end";
  }

private:
  AutoCadProxy& proxy() { return *mPluginP->mAutoCadProxyP; }

  void loadPlugin() {
    const int time = mDice.of({0, 1, 100, 100, 100, 500, 500, 500, 500, 500});
    desktop::setTickStep(static_cast<DWORD>(time / (1 + mDice.below(5)) + 1)); // a tick is some passes
    desktop::setTickCount(mDice.of({0u, 5000u, 0xFFFFFF80u}));
    const std::string traBase = std::to_string(mDice.of({20000, 20000, 350, -7000, 0, 1, kMost, kLeast}));
    const std::string rotBase = std::to_string(mDice.of({10000, 10000, 120, -9000, 0, 1, kMost, kLeast}));
    home().write(kSettingsFile, settingsText({{"transSensBase", traBase},
                                              {"rotSensBase", rotBase},
                                              {"maxContMoveTime", std::to_string(time)},
                                              {"useInt3dIntrfce", mDice.oneIn(12) ? "on" : "off"}}));
    fake_devlink::state()->isPresent = mDice.oneIn(2);
    mOwnPluginP = std::make_unique<OvAutoCad>();
    mPluginP = mOwnPluginP.get();
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
    mPluginP->mPendingKey = mPending[model::KEY] = mDice.of({-2, -1, 0, 1, 2, 3, 4, 0x7FFFFFFF});
    mPluginP->mPendingSpecial = mPending[model::SPECIAL] =
        mDice.of({0, 0, -1, 0x20009, 0x2000A, 0x2000B, 0x2000C, 0x2000C, 0x2000D, 0x20016, 0x20017, 0x20018});
  }

  void changeSettings() {
    mPluginP->mMinThreshold = mDice.of({0, 0, 0, 0, 0, 0, 1, 20, 0x10005, 0x7FFF, 0xFFFF});
    mPluginP->mToggleRotationCenter = mDice.oneIn(2);
    mPluginP->mToggleRotationAxis = mDice.oneIn(2);
    mPluginP->mScrollTreeAndList = mDice.oneIn(3);
    proxy().mObjectMoveMode = mDice.oneIn(2);
    const int code = mDice.oneIn(9)
                         ? mDice.of({-1, 93, 1203, kMost, kLeast})
                         : 100 * mDice.of({0, 0, 1, 7}) + 10 * mDice.of({0, 0, 1, 2}) + mDice.below(10);
    proxy().setRotMode(code);
    proxy().mZoomAllAfterView = mDice.oneIn(2);
    mRotation = model::rotationValues(code, proxy().mZoomAllAfterView);
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
    setSample(*mPluginP, mSample[0], mSample[1], mSample[2], mSample[3], mSample[4], mSample[5]);
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
    const double width = mDice.size({300.0, 300.0, 0.0, 1e200});
    const double height = mDice.size({200.0, 200.0, 0.0, 50.0});
    const double viewHeight = mDice.size({100.0, 100.0, 0.0, -5.0, 1.7e308, 5e-324});
    host::layout() = {width, height, viewHeight, {mDice.real(), mDice.size({0.0, 2.0})}};
  }

  void changeSelection() {
    std::vector<int> numbers(mDice.of({0u, 1u, 1u, 3u, 6u}));
    for (int& number : numbers)
      number = 1 + mDice.below(kEntities);
    host::selectNumbers(numbers);
    AcDbHostRecord& record = host::entity(1 + mDice.below(kEntities))->mHost;
    for (bool* const markP : {&record.cannotBeOpened, &record.hasNoExtents, &record.refusesTransform})
      *markP = mDice.oneIn(3);
  }

  void changeView() {
    host::ViewState view;
    view.perspective = mDice.oneIn(2);
    view.position = mDice.point();
    view.position.x = mDice.size({view.position.x});
    view.target = mDice.oneIn(12) ? view.position : mDice.point();
    view.up = mDice.oneIn(8) ? view.position - view.target : mDice.point().asVector();
    view.up.z = mDice.size({view.up.z});
    view.fieldWidth = mDice.size({40.0, 0.0, 1e-3, 1e308, -1.0, 7.0});
    view.fieldHeight = mDice.size({10.0, 0.0, 1e-3, 1e150, 3.0});
    host::view() = view;
  }

  void changeWindows() {
    for (const HWND window : mWindows)
      desktop::removeWindow(window);
    mWindows.clear();
    for (int left = mDice.below(6); left > 0; --left) {
      desktop::Window window;
      window.className = mDice.of({L"SysTreeView32", L"MyTreeView", L"SysListView32", L"ListBox", L"RichEdit",
                                   L"QWidget", L"QWidget", L"QWidgets", L"edit", L""});
      const int width = mDice.oneIn(12) ? 0x10010 : 50 + 10 * mDice.below(20); // squared beyond 32 bits
      window.rect = desktop::rectangle(-mDice.below(40), mDice.below(40), width, mDice.of({100, 100, width}));
      if (!mWindows.empty() && !mDice.oneIn(4))
        window.parent = mDice.oneIn(2) ? mWindows.front() : mWindows.back();
      window.isVisible = !mDice.oneIn(6);
      for (auto* const barP : {&window.vertical, &window.horizontal}) {
        const int most = mDice.of({0, 10, 49, 50, 99, 250, 1099, 5000, -1, kMost});
        const UINT page = mDice.of({0u, 1u, 10u, 11u, 0xFFFFFFFFu});
        const int position = mDice.of({0, 1, 5, 40, 240, most, kLeast});
        *barP = desktop::ScrollBar{mDice.of({0, 0, 0, 5, -1}), most, page, position};
      }
      mWindows.push_back(desktop::addWindow(window));
    }
    SetCursorPos(mDice.below(80), mDice.below(80));
  }

  void changeMenuFile() {
    mIsMenuThere = !mDice.oneIn(4);
    mMenu.modes.assign(mDice.of({0u, 1u, 3u}), "Some mode");
    mMenu.values.resize(mDice.of({0u, 2u, 5u}));
    std::string text = "[Modes]\n";
    for (const std::string& name : mMenu.modes)
      text += name + " = x\n";
    text += "\n[MenuBar]\n";
    for (std::string& value : mMenu.values) {
      value = mDice.of({"x}LINE", "x}A;;M=B;C", "a}b}c|d|e", "a|b}c", "x}", "plain", "x}|B", "x};", "x};A",
                        "x}M=;m=1;M; M=2", "x}A;B;", "x}A;;", "x} A ;\tB", "x}\xF6;M=\xF6"});
      text += "item = " + value + "\n";
    }
    home().write(kMenuFile, text);
    if (!mIsMenuThere)
      home().remove(kMenuFile);
  }

  void orderFaults() {
    for (int faults = mIsToFail ? mDice.of({0, 1, 1, 2}) : 0; faults > 0; --faults)
      orderFault();
  }

  /// Orders a fault of an operation that the last tick called, or that any tick did; often of acedSSFree, which is
  /// called rarely.
  void orderFault() {
    const bool isOld = mCalls.empty() || mDice.oneIn(2);
    const auto size = static_cast<int>(isOld ? mNames.size() : mCalls.size());
    const auto at = static_cast<std::size_t>(mDice.below(size));
    const std::string name = mDice.oneIn(8) ? "acedSSFree" : isOld ? mNames[at] : mCalls[at].name;
    const int nth = mDice.of({1, 1, 1, 2, 4});
    (mDice.oneIn(2) ? call_log::throwAt : call_log::failAt)(name, nth, mDice.of({1, 1, 2, 9}));
  }

  /// Returns how the engine's state differs from the expected one, empty if it doesn't.
  std::string difference(const model::Engine& m) {
    using State = std::tuple<int, int, int, bool, bool, bool, double, double, int, bool, bool>;
    const AutoCadProxy& e = proxy();
    const motion::Movement& kept = motion::movement;
    const State expected(mPending[0], mPending[1], m.viewMode, m.capIsMoving, m.isDocLocked, m.menuIsLoaded,
                         m.timerId, m.view, m.cvportNumber, m.selCenterValid, m.selAxisValid);
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
    const std::tuple<double, double, double> numbers[] = {{m.selCenterPoint.x, c.x, m.selCenterPoint.scale},
                                                          {m.selCenterPoint.y, c.y, m.selCenterPoint.scale},
                                                          {m.selCenterPoint.z, c.z, m.selCenterPoint.scale},
                                                          {m.selAxisVector.x, a.x, 1},
                                                          {m.selAxisVector.y, a.y, 1},
                                                          {m.selAxisVector.z, a.z, 1}};
    for (const auto& [wanted, got, scale] : numbers)
      if (wanted != got && !(std::abs(wanted - got) <= 1e-12 * scale))
        return "the selection's centre or axis";
    return m.modes == e.mModes && m.menuEntries == e.mMenuEntries ? "" : "modes or menu entries";
  }

  Dice mDice;
  bool mIsToFail;
  std::unique_ptr<OvAutoCad> mOwnPluginP;
  std::optional<model::Engine> mExpected;
  bool mHasLostDocument = false;
  std::vector<HWND> mWindows;
  std::vector<model::Call> mCalls;              // of the tick
  std::vector<std::string> mNames{"KillTimer"}; // of the operations called up to now
};

} // namespace rig

#endif
