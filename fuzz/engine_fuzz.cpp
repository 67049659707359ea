// The engine between any device and any host: orders put the host into a state, however odd, and feed the
// engine with events; meanwhile no view and no object may get a number that is none, every pass ends, and
// after a release nothing is held any more.
//
// Input: orders, each a letter and its arguments.

#include <cmath>

#include "call_log.h"
#include "check.h"
#include "desktop.h"
#include "engine_home.h"
#include "host.h"
#include "input.h"

using fuzz::Input;
using fuzz::require;

namespace {

constexpr int kMaxOrders = 40;
constexpr std::size_t kMaxMacro = 40; // bytes
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

bool isFinite(const AcGeVector3d& v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

void orderView(Input& input) {
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

void orderSample(Input& input, OvAutoCad& p) {
  p.mCapX = input.signed16();
  p.mCapY = input.signed16();
  p.mCapZ = input.signed16();
  p.mCapA = input.signed16();
  p.mCapB = input.signed16();
  p.mCapC = input.signed16();
}

void orderEntity(Input& input) {
  const AcGePoint3d first = point(input);
  std::unique_ptr<AcDbEntity> entityP;
  switch (input.byte() % 4) {
  case 0:
    entityP = std::make_unique<AcDbLine>(first, point(input));
    break;
  case 1:
    entityP = std::make_unique<AcDbPoint>(first);
    break;
  case 2:
    entityP = std::make_unique<AcDbCircle>(first, vector(input), input.real());
    break;
  default:
    entityP = std::make_unique<AcDb3dPolyline>(std::vector<AcGePoint3d>{first, point(input)}, input.flag());
  }
  host::add(std::move(entityP));
}

void orderSelection(Input& input) {
  const unsigned bits = input.byte();
  std::vector<int> numbers;
  for (int number = 1; number <= 8; ++number)
    if ((bits >> (number - 1) & 1) != 0)
      numbers.push_back(number);
  host::selectNumbers(numbers);
}

void orderMark(Input& input) {
  const int count = host::entityCount();
  if (count == 0)
    return;
  const AcDbObjectId id = host::entityId(input.byte() % count + 1);
  const std::uint8_t flags = input.byte();
  host::setCannotBeOpened(id, (flags & 1) != 0);
  host::setHasNoExtents(id, (flags & 2) != 0);
  host::setRefusesTransform(id, (flags & 4) != 0);
}

void orderLayout(Input& input) {
  host::setLayout(input.flag());
  host::LayoutState state;
  state.width = input.real();
  state.height = input.real();
  state.viewHeight = input.real();
  state.centre.x = input.real();
  state.centre.y = input.real();
  host::setLayoutState(state);
}

void orderVariable(Input& input) {
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
  const auto bar = [&input] {
    desktop::ScrollBar found;
    found.min = input.signed32();
    found.max = input.signed32();
    found.page = static_cast<UINT>(input.signed32());
    found.position = input.signed32();
    return found;
  };
  if ((flags & 4) != 0)
    window.vertical = bar();
  if ((flags & 8) != 0)
    window.horizontal = bar();
  bench.lastWindow = desktop::addWindow(window);
  SetCursorPos(input.signed16(), input.signed16());
}

void orderToggle(Input& input, Bench& bench) {
  switch (input.byte() % 5) {
  case 0:
    bench.engine.toggleRotationCenter();
    break;
  case 1:
    bench.engine.toggleRotationAxis();
    break;
  case 2:
    bench.engine.toggleScrollMode();
    break;
  case 3:
    bench.engine.mObjectMoveMode = !bench.engine.mObjectMoveMode;
    break;
  default:
    bench.engine.mZoomAllAfterView = !bench.engine.mZoomAllAfterView;
  }
}

void orderDocument(Input& input, Bench& bench) {
  const std::uint8_t flags = input.byte();
  host::setHasDocument((flags & 1) == 0);
  host::setHasDocumentManager((flags & 2) == 0);
  host::setViewValid((flags & 4) == 0);
  if ((flags & 8) != 0)
    host::closeDocument();
  if ((flags & (1 | 2 | 8)) != 0)
    bench.lostDocument = true;
}

void orderFault(Input& input, Bench& bench) {
  bench.hadFault = true;
  const int nth = input.byte() % 64 + 1;
  if (input.flag())
    call_log::throwAny(nth);
  else
    call_log::failAny(nth);
}

void obey(std::uint8_t letter, Input& input, Bench& bench) {
  switch (letter) {
  case 'v':
    return orderView(input);
  case 's':
    return orderSample(input, bench.plugin);
  case 'p':
    bench.engine.handleDeviceCap();
    return;
  case 't':
    return TimerProc(nullptr, WM_TIMER, 0, 0);
  case 'r':
    return bench.engine.setRotMode(input.signed32());
  case 'x':
    return orderToggle(input, bench);
  case 'b':
    bench.engine.mTraSensBase = input.signed32();
    bench.engine.mRotSensBase = input.signed32();
    return;
  case 'h':
    bench.plugin.mMinThreshold = input.signed32();
    return;
  case 'e':
    return orderEntity(input);
  case 'S':
    return orderSelection(input);
  case 'm':
    return orderMark(input);
  case 'l':
    return orderLayout(input);
  case 'V':
    return orderVariable(input);
  case 'w':
    return orderWindow(input, bench);
  case 'k':
    bench.plugin.mPendingKey = input.signed32();
    return;
  case 'c':
    bench.plugin.mPendingSpecial = input.flag() ? kFirstEvent + input.byte() : input.signed32();
    return;
  case 'M':
    bench.engine.mMenuEntries.push_back(input.text(input.byte() % kMaxMacro));
    return;
  case 'd':
    return orderDocument(input, bench);
  case 'q':
    host::runQueue();
    return;
  case 'f':
    return orderFault(input, bench);
  default:
    return;
  }
}

/// An order, also if an ordered fault strikes: in a pass, whose loop would catch it, or in what is done here
/// to the host itself. Out of a tick nothing may come.
void tryToObey(std::uint8_t letter, Input& input, Bench& bench) {
  try {
    obey(letter, input, bench);
  } catch (const call_log::InjectedFault&) {
    require(bench.hadFault && letter != 't', "thrown only what was ordered, and never out of a tick");
  }
}

bool isFiniteView(const host::ViewState& v) {
  return isFinite(v.position - AcGePoint3d(0, 0, 0)) && isFinite(v.target - AcGePoint3d(0, 0, 0)) &&
         isFinite(v.up) && std::isfinite(v.fieldWidth) && std::isfinite(v.fieldHeight);
}

/// The cap is let go, on a host that is whole again.
void release(Bench& bench) {
  call_log::clear();
  host::setHasDocument(true);
  host::setHasDocumentManager(true);
  OvAutoCad& p = bench.plugin;
  p.mCapX = p.mCapY = p.mCapZ = p.mCapA = p.mCapB = p.mCapC = 0;
  p.mMinThreshold = 0;
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
    require(host::viewCounts().nonFiniteCalls == 0, "the host is told numbers only");
    require(letter == 'v' || letter == 'q' || letter == 'd' || !wasFinite || isFiniteView(host::view()),
            "a view stays one");
  }
  release(bench);
  require(host::viewCounts().nonFiniteCalls == 0, "the host is told numbers only, at the release too");
  return 0;
}
