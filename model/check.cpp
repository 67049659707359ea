#include "check.h"

namespace model {

constexpr std::size_t MOST_TRIES = 10000; // for a pass, on the average
constexpr int APPL_FUNC_START = 0x20020;  // code of the first key

std::vector<int> rotationValues(int code, bool zoomAllAfterView) {
  code = std::max(code, 0);
  const int digit = code % 10 > 4 ? 0 : code % 10;
  return {digit == 4 ? 2 : digit, code % 100 >= 10, code >= 100 || digit == 4, zoomAllAfterView};
}

int Pass::rotationCode() const {
  return values[ROT_MODE] + 10 * values[KEEP_HORIZON] + 100 * values[HOVER_MODE];
}

Check::Check(const Settings& settings, std::function<void(const Pass&)> onPass)
    : mSettings(settings), mOnPass(std::move(onPass)), mKnown{Engine(*this), {}, {Pass()}}, mTried(mKnown) {
  for (auto& stored : mStored)
    stored.push_back({0, 0, 0, 1});
}

void Check::delivered(int thread, std::int64_t order, Input first, const std::vector<int>& values) {
  for (std::size_t i = 0; i < values.size(); ++i)
    mStored.at(first + i).push_back({values[i], thread, order, 0});
}

void Check::eventDelivered(std::int64_t order, int code) {
  const std::set<int> special = {0x20009, 0x2000A, 0x2000B, 0x2000C, 0x20016, 0x20017, 0x20018};
  if (code >= APPL_FUNC_START || special.count(code) != 0)
    mKnown.events[code >= APPL_FUNC_START ? KEY : SPECIAL].emplace_back(order, code);
}

void Check::entered(int thread, std::int64_t order) {
  for (auto& inputs : mStored)
    for (Stored& stored : inputs)
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

/// Chooses one of that number, 0 first. After advance() and a fresh start, the next ones.
int Check::pick(int count) {
  if (count < 2)
    return 0;
  if (mNext == mChoices.size())
    mChoices.emplace_back(0, count);
  return mChoices[mNext++].first;
}

/// Advances to the next combination of choices. Returns false if there is none.
bool Check::advance() {
  mChoices.resize(mNext);
  while (mChoices.size() > mFrozen && ++mChoices.back().first == mChoices.back().second)
    mChoices.pop_back();
  return mChoices.size() > mFrozen;
}

/// Returns the interval in which the engine is now: between the last call's end and the next one's entry.
std::pair<std::int64_t, std::int64_t> Check::now() const {
  const std::size_t next = mReplayP->position();
  return {next == 0 ? mTickP->entered : mTickP->calls[next - 1].order,
          next == mTickP->calls.size() ? mTickP->ended : mTickP->calls[next].entered};
}

/// Chooses among the last value that is certainly stored and the later ones, the newest first. All axes come from
/// one event if that fits.
int Check::read(std::size_t input) {
  const auto [from, to] = now();
  const auto& stored = mStored.at(input);
  int oldest = 0, newest = 0;
  for (int i = 0; i < static_cast<int>(stored.size()) && stored[i].delivered < to; ++i) {
    newest = i;
    if (stored[i].certain != 0 && stored[i].certain <= from)
      oldest = i;
  }
  const int count = newest - oldest + 1;
  if (input == X)
    mCommonEvent = count == 1 ? 0 : pick(count + 1);
  const bool isCommon = input < ROT_MODE && mCommonEvent < count;
  return mTried.passes.back().values[input] = stored[newest - (isCommon ? mCommonEvent : pick(count))].value;
}

/// Chooses one of the events that may be pending, the newest first, if something is served now. A pass begins with
/// the question for a key; the choices before that are final, since they explain the earlier passes.
int Check::pending(Slot slot) {
  if (slot == KEY) {
    Pass& before = mTried.passes.back();
    before.ended = mTickP->calls[mReplayP->position() - 1].entered; // GetTickCount
    mTried.passes.push_back({before.values, before.ended, mTickP->ended, {}});
    mFrozen = mNext;
  }
  if (mReplayP->next() != "acDocManagerPtr")
    return -1;
  const auto& events = mTried.events[slot];
  const auto isDelivered = [to = now().second](const auto& event) { return event.first < to; };
  mGone = std::count_if(events.begin(), events.end(), isDelivered);
  mGone -= pick(static_cast<int>(mGone) + 1);
  return mGone == 0 ? -1 : events[mGone - 1].second - (slot == KEY ? APPL_FUNC_START : 0);
}

void Check::served(Slot slot) {
  auto& events = mTried.events[slot];
  mTried.passes.back().served.push_back(events[mGone - 1].second);
  events.erase(events.begin(), events.begin() + mGone);
}

void Check::tick(const Tick& tick) {
  const auto isPass = [](const Call& call) { return call.text == L"tilemode"; };
  const std::int64_t passes = std::count_if(tick.calls.begin(), tick.calls.end(), isPass);
  for (auto& stored : mStored)
    while (stored.size() > 1 && stored[1].certain != 0 && stored[1].certain < tick.entered)
      stored.pop_front();
  if (contradicted != 0) {
    notObservable += passes;
    return;
  }
  mTickP = &tick;
  mChoices.clear();
  std::size_t begun = 0, furthest = 0; // passes, including the one before the tick; calls
  std::string reason;
  for (std::size_t tries = 0; tries == 0 || (tries < MOST_TRIES * begun && advance()); ++tries) {
    mTried = mKnown;
    mNext = mFrozen = 0;
    Replay replay(tick.calls, tick.records, mSettings.loggedTypes);
    mReplayP = &replay;
    try {
      mTried.engine.timerProc(replay);
      replay.end();
      explained += passes;
      return accept();
    } catch (const Contradiction& contradiction) {
      if (replay.position() < furthest)
        continue;
      furthest = replay.position();
      begun = mTried.passes.size();
      reason = contradiction.what();
    }
  }
  const auto before = std::clamp<std::int64_t>(static_cast<std::int64_t>(begun) - 2, 0, passes);
  firstContradiction = text("at ", tick.seconds, " s, pass ", explained + before + 1, ": ", reason);
  explained += before;
  notObservable += std::max<std::int64_t>(passes - before - 1, 0);
  contradicted = 1;
}

/// Takes over what explains the tick, and reports its passes.
void Check::accept() {
  constexpr std::size_t IDLE_CALLS = 6; // KillTimer, twice GetTickCount, tilemode, cvport, SetTimer
  const Engine &before = mKnown.engine, &after = mTried.engine;
  const bool isIdle = mTickP->calls.size() == IDLE_CALLS && before.viewMode == after.viewMode &&
                      before.menuIsLoaded == after.menuIsLoaded;
  auto& passes = mTried.passes;
  for (std::size_t i = 1; i < passes.size(); ++i) {
    passes[i].isIdle = isIdle;
    passes[i].endsTick = i + 1 == passes.size() && after.keepGoing;
    mOnPass(passes[i]);
  }
  passes.erase(passes.begin(), passes.end() - 1);
  mKnown = mTried;
}

std::string Check::summary() const {
  return text(explained + notObservable + contradicted, " passes: ", explained, " explained, ", notObservable,
              " not observable, ", contradicted, " contradicted");
}

} // namespace model
