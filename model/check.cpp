#include "check.h"

#include "support.h"

namespace model {

namespace {

constexpr int APPL_FUNC_START = 0x20020;
constexpr int MOST_TRIES = 1000; // for one pass
const std::set<int> SPECIAL_EVENTS = {0x20009, 0x2000A, 0x2000B, 0x2000C, 0x20016, 0x20017, 0x20018};

const std::set<std::string>* gLoggedTypesP = nullptr; // the replay asks a plain function

bool isLogged(const std::string& type) {
  return gLoggedTypesP->count(type) != 0;
}

std::int64_t passesOf(const Tick& tick) {
  return std::count_if(tick.calls.begin(), tick.calls.end(),
                       [](const Call& call) { return call.text == L"tilemode"; });
}

std::string grouped(std::int64_t number) {
  std::string digits = std::to_string(number);
  for (int at = static_cast<int>(digits.size()) - 3; at > 0; at -= 3)
    digits.insert(static_cast<std::size_t>(at), ",");
  return digits;
}

template <class Value> void markStored(History<Value>& history, int thread, std::int64_t order) {
  for (Stored<Value>& stored : history)
    if (stored.thread == thread && stored.certain == 0)
      stored.certain = order;
}

} // namespace

RotationSettings rotationSettings(int code, bool zoomAllAfterView) {
  code = std::max(code, 0);
  const int digit = code % 10;
  RotationSettings settings;
  settings.hoverMode = code >= 100 || digit == 4;
  settings.keepHorizon = code % 100 >= 10;
  settings.rotMode = digit == 4 ? 2 : digit > 4 ? 0 : digit;
  settings.zoomAllAfterView = zoomAllAfterView;
  return settings;
}

int Chooser::pick(int count) {
  if (count < 2)
    return 0;
  if (mNext == mChoices.size())
    mChoices.push_back({0, count});
  return mChoices[mNext++].value;
}

bool Chooser::advance() {
  mChoices.resize(mNext);
  while (mChoices.size() > mFrozen && ++mChoices.back().value == mChoices.back().count)
    mChoices.pop_back();
  const bool isOther = mChoices.size() > mFrozen;
  mNext = mFrozen = 0;
  return isOther;
}

void Chooser::clear() {
  mChoices.clear();
  mNext = mFrozen = 0;
}

Check::Check(const Settings& settings) : mSettings(settings), mEngine(*this), mMotions(1), mRotations(1) {
  mMotions[0].certain = mRotations[0].certain = 1;
}

void Check::motionDelivered(int thread, std::int64_t order, const std::array<short, 6>& axes) {
  mMotions.push_back({axes, thread, order, 0});
}

void Check::eventDelivered(std::int64_t order, int code) {
  if (code >= APPL_FUNC_START)
    mKeys.emplace_back(order, code - APPL_FUNC_START);
  else if (SPECIAL_EVENTS.count(code) != 0)
    mSpecials.emplace_back(order, code);
}

void Check::rotationDelivered(int thread, std::int64_t order, const RotationSettings& settings) {
  mRotations.push_back({settings, thread, order, 0});
}

void Check::entered(int thread, std::int64_t order) {
  markStored(mMotions, thread, order);
  markStored(mRotations, thread, order);
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

void Check::menuFound(const std::string& path, const std::vector<std::string>& modes,
                      const std::vector<std::string>& menuBarValues) {
  mIsMenuThere = true;
  mMenuPath = path;
  mModes = modes;
  mMenuBarValues = menuBarValues;
}

Span Check::now() const {
  const std::size_t next = mReplayP->position();
  return {next == 0 ? mTickP->span.entered : mTickP->spans[next - 1].ended,
          next == mTickP->spans.size() ? mTickP->span.ended : mTickP->spans[next].entered};
}

/// Gives the oldest candidate, and how many there are up to the newest.
template <class Value> std::pair<std::size_t, int> Check::candidates(const History<Value>& history) const {
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
    mCommonEvent = count == 1 ? 0 : mChooser.pick(count + 1);
  const int back = mCommonEvent < count ? mCommonEvent : mChooser.pick(count);
  return mMotions[oldest + static_cast<std::size_t>(count - 1 - back)].value[static_cast<std::size_t>(index)];
}

const RotationSettings& Check::rotation() {
  const auto [oldest, count] = candidates(mRotations);
  return mRotations[oldest + static_cast<std::size_t>(count - 1 - mChooser.pick(count))].value;
}

/// Gives one of those that may be pending, the newest first, if something is served now.
int Check::pending(const Slot& slot, std::size_t& chosen, int none) {
  if (mReplayP->next() != "acDocManagerPtr")
    return none;
  const Span time = now();
  const auto isEarlier = [&time](const auto& delivery) { return delivery.first < time.ended; };
  const auto count = static_cast<int>(std::count_if(slot.begin(), slot.end(), isEarlier));
  const int back = mChooser.pick(count + 1);
  chosen = static_cast<std::size_t>(count - 1 - back);
  return back == count ? none : slot[chosen].second;
}

int Check::pendingKey() {
  mChooser.freeze();
  ++mPasses;
  return pending(mKeysLeft, mChosenKey, -1);
}

int Check::pendingSpecial() {
  return pending(mSpecialsLeft, mChosenSpecial, 0);
}

void Check::keyServed() {
  mKeysLeft.erase(mKeysLeft.begin(), mKeysLeft.begin() + static_cast<std::ptrdiff_t>(mChosenKey) + 1);
}

void Check::specialServed() {
  mSpecialsLeft.erase(mSpecialsLeft.begin(),
                      mSpecialsLeft.begin() + static_cast<std::ptrdiff_t>(mChosenSpecial) + 1);
}

bool Check::menuFile(std::string& path, std::vector<std::string>& modes,
                     std::vector<std::string>& menuBarValues) {
  if (!mIsMenuThere || mChooser.pick(2) == 1)
    return false;
  path = mMenuPath;
  modes = mModes;
  menuBarValues = mMenuBarValues;
  return true;
}

void Check::tick(const Tick& tick) {
  gLoggedTypesP = &mSettings.loggedTypes;
  mTickP = &tick;
  mChooser.clear();
  const std::int64_t passes = passesOf(tick);
  int pass = 0; // the one that no choice has explained yet
  int tries = 0;
  std::size_t furthest = 0;
  std::string reason;
  for (;;) {
    Engine engine(mEngine, *this);
    Replay replay(tick.calls, tick.records, isLogged);
    mReplayP = &replay;
    mPasses = 0;
    mKeysLeft = mKeys;
    mSpecialsLeft = mSpecials;
    try {
      engine.timerProc(replay);
      replay.end();
      mEngine = engine;
      mKeys = mKeysLeft;
      mSpecials = mSpecialsLeft;
      explained += passes;
      break;
    } catch (const std::exception& contradiction) { // also results that a recording hasn't
      if (mPasses > pass || replay.position() > furthest || reason.empty())
        reason = contradiction.what();
      furthest = std::max(furthest, replay.position());
      tries = mPasses > pass ? 1 : tries + 1;
      pass = std::max(pass, mPasses);
    }
    const bool hasOther = mChooser.advance();
    if (hasOther && tries < MOST_TRIES)
      continue;
    const std::int64_t before = std::clamp<std::int64_t>(pass - 1, 0, passes);
    if (!hasOther && contradicted == 0)
      firstContradiction =
          text("at ", tick.seconds, " s, pass ", explained + notObservable + before + 1, ": ", reason);
    explained += before;
    contradicted += hasOther ? 0 : 1;
    notObservable += std::max<std::int64_t>(passes - before - (hasOther ? 0 : 1), 0);
    resume(tick);
    break;
  }
  while (mMotions.size() > 1 && mMotions[1].certain != 0)
    mMotions.pop_front();
  while (mRotations.size() > 1 && mRotations[1].certain != 0)
    mRotations.pop_front();
}

/// Reads what can be read of the state off the tick's calls, so that the next one can be held against it.
void Check::resume(const Tick& tick) {
  for (const Call& call : tick.calls) {
    if (call.name == "SetTimer" && !call.threw) {
      mEngine.timerId = call.out.at(0);
      mEngine.capIsMoving = call.in.at(0) == 10;
    } else if (call.name == "lockDocument" || call.name == "unlockDocument") {
      mEngine.isDocLocked = call.name == "lockDocument";
    }
  }
  mKeys.clear();
  mSpecials.clear();
}

std::string Check::summary() const {
  return grouped(explained + notObservable + contradicted) + " passes: " + grouped(explained) +
         " explained, " + grouped(notObservable) + " not observable, " + grouped(contradicted) +
         " contradicted";
}

} // namespace model
