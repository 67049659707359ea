// The engine between any device and any host: orders put the host into a state, however odd, and feed the
// engine with events; meanwhile no view and no object may get NaN or infinity, every pass ends, and
// after a release nothing is held any more.
//
// Input: orders, each a letter and its arguments.

#include <cmath>

#include "call_log.h"
#include "check.h"
#include "desktop.h"
#include "engine_home.h"
#include "input.h"

using fuzz::Input;
using fuzz::require;

namespace {

constexpr int kMaxOrders = 40;
constexpr std::size_t kMacro = 12; // bytes
constexpr int kFirstEvent = 0x20000;

struct Bench {
  OvAutoCad& plugin;
  AutoCadProxy& engine;
  bool hadFault = false;     // a call of the host's failed: what it holds then can't be helped
  bool lostDocument = false; // locks went with it, or before they could be given back
  HWND lastWindow = nullptr;
};

AcGePoint3d point(Input& input) {
  const double x = input.real();
  const double y = input.real();
  return {x, y, input.real()};
}

AcGeVector3d vector(Input& input) {
  return point(input) - AcGePoint3d(0, 0, 0);
}

void orderView(Input& input, Bench&) {
  host::ViewState state;
  const std::uint8_t flags = input.byte();
  state.perspective = (flags & 1) != 0;
  state.position = point(input);
  state.target = point(input);
  state.up = (flags & 2) != 0 ? state.position - state.target : vector(input);
  state.fieldWidth = input.real();
  state.fieldHeight = (flags & 4) != 0 ? 0 : input.real();
  host::setView(state);
}

void orderSample(Input& input, Bench& bench) {
  OvAutoCad& p = bench.plugin;
  for (Relaxed<std::int16_t>* const axisP : {&p.mCapX, &p.mCapY, &p.mCapZ, &p.mCapA, &p.mCapB, &p.mCapC})
    *axisP = input.signed16();
}

void orderEntity(Input& input, Bench&) {
  const AcGePoint3d first = point(input);
  const int kind = input.byte() % 4;
  if (kind == 0)
    host::add(std::make_unique<AcDbLine>(first, point(input)));
  else if (kind == 1)
    host::add(std::make_unique<AcDbPoint>(first));
  else if (kind == 2)
    host::add(std::make_unique<AcDbCircle>(first, vector(input), input.real()));
  else
    host::add(std::make_unique<AcDb3dPolyline>(std::vector<AcGePoint3d>{first, point(input)}, input.flag()));
}

/// The numbers are those of the first entities, a bit for each.
void orderSelection(Input& input, Bench&) {
  std::vector<int> numbers;
  unsigned bits = input.byte();
  for (int number = 1; bits != 0; ++number, bits >>= 1)
    if ((bits & 1) != 0)
      numbers.push_back(number);
  host::selectNumbers(numbers);
}

void orderMark(Input& input, Bench&) {
  const AcDbObjectId id = host::entityId(input.byte() % 8 + 1);
  const std::uint8_t flags = input.byte();
  host::setCannotBeOpened(id, (flags & 1) != 0);
  host::setHasNoExtents(id, (flags & 2) != 0);
  host::setRefusesTransform(id, (flags & 4) != 0);
}

void orderLayout(Input& input, Bench&) {
  host::setLayout(input.flag());
  host::LayoutState state;
  for (double* const valueP :
       {&state.width, &state.height, &state.viewHeight, &state.centre.x, &state.centre.y})
    *valueP = input.real();
  host::setLayoutState(state);
}

void orderVariable(Input& input, Bench&) {
  const char* const name = input.flag() ? "cvport" : "tilemode";
  if (input.flag())
    host::removeVariable(name);
  else
    host::setVariable(name, static_cast<short>(input.signed16()));
}

void orderWindow(Input& input, Bench& bench) {
  constexpr const wchar_t* kClasses[] = {L"SysTreeView32", L"QWidget", L"Edit", L"Other", L""};
  const std::uint8_t flags = input.byte();
  desktop::Window window;
  window.className = kClasses[input.byte() % std::size(kClasses)];
  window.rect = desktop::rectangle(input.signed16(), input.signed16(), input.signed16(), input.signed16());
  window.isVisible = (flags & 1) == 0;
  if ((flags & 2) != 0)
    window.parent = bench.lastWindow;
  const auto read = [&input](desktop::ScrollBar& bar) {
    bar.min = input.signed32();
    bar.max = input.signed32();
    bar.page = static_cast<UINT>(input.signed32());
    bar.position = input.signed32();
  };
  if ((flags & 4) != 0)
    read(window.vertical.emplace());
  if ((flags & 8) != 0)
    read(window.horizontal.emplace());
  bench.lastWindow = desktop::addWindow(window);
  SetCursorPos(input.signed16(), input.signed16());
}

void orderDocument(Input& input, Bench& bench) {
  const std::uint8_t flags = input.byte();
  host::setHasDocument((flags & 1) == 0);
  host::setHasDocumentManager((flags & 2) == 0);
  host::setViewValid((flags & 4) == 0);
  if ((flags & 8) != 0)
    host::closeDocument();
  bench.lostDocument = bench.lostDocument || (flags & (1 | 2 | 8)) != 0;
}

void orderFault(Input& input, Bench& bench) {
  bench.hadFault = true;
  const int nth = input.byte() % 64 + 1;
  (input.flag() ? call_log::throwAny : call_log::failAny)(nth);
}

constexpr std::pair<char, void (*)(Input&, Bench&)> kOrders[] = {
    {'v', orderView},
    {'s', orderSample},
    {'p', [](Input&, Bench& bench) { bench.engine.handleDeviceCap(); }},
    {'t', [](Input&, Bench&) { TimerProc(nullptr, WM_TIMER, 0, 0); }},
    {'r', [](Input& input, Bench& bench) { bench.engine.setRotMode(input.signed32()); }},
    {'x', [](Input&, Bench& bench) { bench.engine.toggleRotationCenter(); }},
    {'y', [](Input&, Bench& bench) { bench.engine.toggleRotationAxis(); }},
    {'z', [](Input&, Bench& bench) { bench.engine.toggleScrollMode(); }},
    {'o', [](Input&, Bench& bench) { bench.engine.mObjectMoveMode = !bench.engine.mObjectMoveMode; }},
    {'a', [](Input&, Bench& bench) { bench.engine.mZoomAllAfterView = !bench.engine.mZoomAllAfterView; }},
    {'b', [](Input& input, Bench& bench) { bench.engine.mTraSensBase = input.signed32(); }},
    {'B', [](Input& input, Bench& bench) { bench.engine.mRotSensBase = input.signed32(); }},
    {'h', [](Input& input, Bench& bench) { bench.plugin.mMinThreshold = input.signed32(); }},
    {'e', orderEntity},
    {'S', orderSelection},
    {'m', orderMark},
    {'l', orderLayout},
    {'V', orderVariable},
    {'w', orderWindow},
    {'k', [](Input& input, Bench& bench) { bench.plugin.mPendingKey = input.signed32(); }},
    {'c', [](Input& input, Bench& bench) { bench.plugin.mPendingSpecial = kFirstEvent + input.byte(); }},
    {'C', [](Input& input, Bench& bench) { bench.plugin.mPendingSpecial = input.signed32(); }},
    {'M', [](Input& input, Bench& bench) { bench.engine.mMenuEntries.push_back(input.text(kMacro)); }},
    {'d', orderDocument},
    {'q', [](Input&, Bench&) { host::runQueue(); }},
    {'f', orderFault}};

/// An order, also if an ordered fault strikes: in a pass, whose loop would catch it, or in what is done here
/// to the host itself. Out of a tick nothing may come.
void tryToObey(std::uint8_t letter, Input& input, Bench& bench) {
  try {
    for (const auto& [own, order] : kOrders)
      if (own == letter)
        order(input, bench);
  } catch (const call_log::InjectedFault&) {
    require(bench.hadFault && letter != 't', "thrown only what was ordered, and never out of a tick");
  }
}

bool isFiniteView(const host::ViewState& v) {
  const double numbers[] = {v.position.x, v.position.y, v.position.z, v.target.x,   v.target.y,   v.target.z,
                            v.up.x,       v.up.y,       v.up.z,       v.fieldWidth, v.fieldHeight};
  return std::all_of(std::begin(numbers), std::end(numbers),
                     [](double number) { return std::isfinite(number); });
}

/// The cap is let go, on a host that is whole again.
void release(Bench& bench) {
  call_log::clear();
  host::setHasDocument(true);
  host::setHasDocumentManager(true);
  rig::setSample(bench.plugin, 0, 0, 0);
  bench.plugin.mMinThreshold = 0;
  require(!bench.engine.handleDeviceCap(), "six zeros are a release");
  require(!bench.engine.mCapIsMoving, "at rest after a release");
  const host::Held held = host::held();
  if (bench.hadFault)
    return;
  require(held.selectionSets == 0, "no selection set held");
  require(held.openForRead == 0 && held.openForWrite == 0, "no object open");
  require(bench.lostDocument || held.locks == 0, "no lock held");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  OvAutoCad& plugin = fuzz::freshEngine();
  Bench bench{plugin, *plugin.mAutoCadProxyP};
  Input input(data, size);
  for (int i = 0; i < kMaxOrders && !input.isAtEnd(); ++i) {
    const std::uint8_t letter = input.byte();
    const bool wasFinite = isFiniteView(host::view());
    tryToObey(letter, input, bench);
    require(host::viewCounts().nonFiniteCalls == 0, "the host is told finite numbers only");
    require(letter == 'v' || letter == 'q' || letter == 'd' || !wasFinite || isFiniteView(host::view()),
            "a view stays one");
  }
  release(bench);
  require(host::viewCounts().nonFiniteCalls == 0, "the host is told finite numbers only, at the release too");
  return 0;
}
