#include "check.h"

namespace model {

namespace {

constexpr int MOST_TRIES = 10000; // for one pass
const std::set<int> SPECIAL_EVENTS = {0x20009, 0x2000A, 0x2000B, 0x2000C, 0x20016, 0x20017, 0x20018};

/// What of the engine a pass at rest can change.
std::tuple<int, bool, bool> stateOf(const Engine& engine) {
  return {engine.viewMode, engine.capIsMoving, engine.menuIsLoaded};
}

} // namespace

RotationSettings rotationSettings(int code, bool zoomAllAfterView) {
  code = std::max(code, 0);
  const int digit = code % 10 > 4 ? 0 : code % 10;
  return {digit == 4 ? 2 : digit, code % 100 >= 10, code >= 100 || digit == 4, zoomAllAfterView};
}

int rotationCode(const RotationSettings& s) {
  const int mode = s.rotMode == 2 && s.hoverMode ? 4 : s.rotMode;
  return mode + (s.keepHorizon ? 10 : 0) + (s.hoverMode && mode != 4 ? 100 : 0);
}

Check::Check(const Settings& settings, std::function<void(const Pass&)> onPass)
    : mSettings(settings), mOnPass(std::move(onPass)), mEngine(*this), mMotions(1), mRotations(1) {
  mMotions[0].certain = mRotations[0].certain = 1;
}

void Check::eventDelivered(std::int64_t order, int code) {
  if (code >= APPL_FUNC_START)
    mSlots[0].deliveries.emplace_back(order, code - APPL_FUNC_START);
  else if (SPECIAL_EVENTS.count(code) != 0)
    mSlots[1].deliveries.emplace_back(order, code);
}

void Check::entered(int thread, std::int64_t order) {
  for (History* const historyP : {&mMotions, &mRotations})
    for (Stored& stored : *historyP)
      if (stored.thread == thread && stored.certain == 0)
        stored.certain = order;
}

void Check::printed(const std::wstring& text) {
  const std::pair<const wchar_t*, bool*> toggles[] = {
      {L"=> Selection as Rotation Center: ", &mSettings.toggleRotationCenter},
      {L"=> Selected Line as Rotation Axis: ", &mSettings.toggleRotationAxis},
      {L"=> Scroll Trees and Lists: ", &mSettings.scrollTreeAndList},
      {L"=> Move Selected Object: ", &mSettings.objectMoveMode}};
  for (const auto& [line, toggleP] : toggles)
    if (text.find(line) != std::wstring::npos)
      *toggleP = !*toggleP;
}

/// Chooses one of some, 0 first, and other ones once all has started over after advance().
int Check::pick(int count) {
  if (count < 2)
    return 0;
  if (mNext == mChoices.size())
    mChoices.emplace_back(0, count);
  return mChoices[mNext++].first;
}

/// Goes on to the next choices in turn; false if there are none.
bool Check::advance() {
  mChoices.resize(mNext);
  while (mChoices.size() > mFrozen && ++mChoices.back().first == mChoices.back().second)
    mChoices.pop_back();
  const bool isOther = mChoices.size() > mFrozen;
  mNext = mFrozen = 0;
  return isOther;
}

/// Returns the tick's time between the call that is made next and the one before.
Span Check::now() const {
  const std::size_t next = mReplayP->position();
  return {next == 0 ? mTickP->span.entered : mTickP->spans[next - 1].ended,
          next == mTickP->spans.size() ? mTickP->span.ended : mTickP->spans[next].entered};
}

/// Returns the oldest candidate, and how many there are up to the newest.
std::pair<std::size_t, int> Check::candidates(const History& history) const {
  const Span time = now();
  std::size_t oldest = 0, newest = 0;
  for (std::size_t i = 0; i < history.size() && history[i].delivered < time.ended; ++i) {
    newest = i;
    if (history[i].certain != 0 && history[i].certain <= time.entered)
      oldest = i;
  }
  return {oldest, static_cast<int>(newest - oldest) + 1};
}

short Check::axis(int index) {
  const auto [oldest, count] = candidates(mMotions);
  if (index == 0)
    mCommonEvent = count == 1 ? 0 : pick(count + 1);
  const int back = mCommonEvent < count ? mCommonEvent : pick(count);
  const auto i = static_cast<std::size_t>(index);
  return mBegun.back().axes[i] = mMotions[oldest + static_cast<std::size_t>(count - 1 - back)].axes[i];
}

const RotationSettings& Check::rotation() {
  const auto [oldest, count] = candidates(mRotations);
  return mRotations[oldest + static_cast<std::size_t>(count - 1 - pick(count))].rotation;
}

/// Returns one of those that may be pending, the newest first, if something is served now.
int Check::pending(Slot& slot, int none) {
  if (mReplayP->next() != "acDocManagerPtr")
    return none;
  const std::int64_t end = now().ended;
  const auto count = static_cast<int>(std::count_if(slot.deliveries.begin(), slot.deliveries.end(),
                                                    [end](const auto& one) { return one.first < end; }));
  slot.chosen = count - pick(count + 1);
  return slot.chosen == 0 ? none : slot.deliveries[static_cast<std::size_t>(slot.chosen) - 1].second;
}

void Check::serve(Slot& slot, int firstCode) {
  const auto chosen = slot.deliveries.begin() + slot.chosen;
  mBegun.back().served.push_back((chosen - 1)->second + firstCode);
  slot.deliveries.erase(slot.deliveries.begin(), chosen);
}

int Check::pendingKey() {
  mFrozen = mNext;
  const auto [oldest, count] = candidates(mRotations);
  Pass pass;
  pass.axes = mBegun.empty() ? mAxes : mBegun.back().axes;
  pass.rotation = mRotations[oldest + static_cast<std::size_t>(count) - 1].rotation;
  pass.entered = mTickP->spans[mReplayP->position() - 1].entered; // GetTickCount
  mBegun.push_back(pass);
  return pending(mLeft[0], -1);
}

/// Reports the passes of the tick, which has been explained.
void Check::reportPasses() {
  constexpr std::size_t IDLE_CALLS = 6; // KillTimer, twice GetTickCount, tilemode, cvport, SetTimer
  const auto isAtRest = [this](int axis) {
    return std::abs(axis) <= static_cast<short>(mSettings.minThreshold);
  };
  for (std::size_t i = 0; i < mBegun.size(); ++i) {
    Pass& pass = mBegun[i];
    pass.isLast = i + 1 == mBegun.size();
    pass.ended = pass.isLast ? mTickP->span.ended : mBegun[i + 1].entered;
    pass.isAtRest = std::all_of(pass.axes.begin(), pass.axes.end(), isAtRest);
    pass.isIdle = mTickP->calls.size() == IDLE_CALLS && mBefore == stateOf(mEngine);
    mAxes = pass.axes;
    mOnPass(pass);
  }
}

void Check::tick(const Tick& tick) {
  const auto isLogged = [this](const std::string& type) { return mSettings.loggedTypes.count(type) != 0; };
  const std::int64_t passes = std::count_if(tick.calls.begin(), tick.calls.end(),
                                            [](const Call& call) { return call.text == L"tilemode"; });
  mTickP = &tick;
  mChoices.clear();
  mNext = mFrozen = 0;
  int tries = 0, pass = 0; // the one that no choice has explained yet
  std::size_t furthest = 0;
  std::string reason;
  bool isExplained = false;
  while (!isExplained && contradicted == 0) {
    Engine engine(mEngine, *this);
    Replay replay(tick.calls, tick.records, isLogged);
    mReplayP = &replay;
    mBegun.clear();
    mLeft = mSlots;
    try {
      engine.timerProc(replay);
      replay.end();
      mBefore = stateOf(mEngine);
      mEngine = engine;
      mSlots = mLeft;
      isExplained = true;
    } catch (const std::exception& contradiction) { // also results that a recording hasn't
      const int begun = static_cast<int>(mBegun.size());
      if (begun > pass || replay.position() >= furthest)
        reason = contradiction.what();
      furthest = std::max(furthest, replay.position());
      tries = begun > pass ? 1 : tries + 1;
      pass = std::max(pass, begun);
      contradicted = advance() && tries < MOST_TRIES ? 0 : 1;
    }
  }
  const std::int64_t before = isExplained ? passes : std::clamp<std::int64_t>(pass - 1, 0, passes);
  if (!reason.empty() && !isExplained)
    firstContradiction = text("at ", tick.seconds, " s, pass ", explained + before + 1, ": ", reason);
  if (isExplained && mOnPass)
    reportPasses();
  explained += before;
  notObservable += std::max<std::int64_t>(passes - before - (reason.empty() ? 0 : 1), 0);
  for (History* const historyP : {&mMotions, &mRotations})
    while (historyP->size() > 1 && (*historyP)[1].certain != 0)
      historyP->pop_front();
}

std::string Check::summary() const {
  return text(explained + notObservable + contradicted, " passes: ", explained, " explained, ", notObservable,
              " not observable, ", contradicted, " contradicted");
}

} // namespace model
