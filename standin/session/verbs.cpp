#include "verbs.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

namespace session {

namespace {

template <class Number> constexpr std::int64_t kMin = std::numeric_limits<Number>::min();
template <class Number> constexpr std::int64_t kMax = std::numeric_limits<Number>::max();

/// Largest coordinate of a look, drawing units.
constexpr double kMaxCoordinate = 1e12;
/// Shortest up vector and view direction that still say something, drawing units.
constexpr double kMinLength = 1e-9;

template <class Value>
Value oneOf(Words& words, const std::string& what, const std::map<std::string_view, Value>& choices) {
  const std::string_view found = words.word(what);
  const auto choice = choices.find(found);
  if (choice != choices.end())
    return choice->second;
  std::string names;
  for (const auto& [name, value] : choices)
    names += (names.empty() ? "" : ", ") + std::string(name);
  throw LineError("unknown " + what + " " + quoted(found) + "; known: " + names);
}

void readMotion(Words& words, Action& action) {
  const char* const names[] = {"x", "y", "z", "a", "b", "c"};
  for (std::size_t i = 0; i < action.mAxes.size(); ++i)
    action.mAxes[i] =
        static_cast<std::int16_t>(words.integer(names[i], kMin<std::int16_t>, kMax<std::int16_t>));
}

void readView(Words& words, Action& action) {
  std::map<std::string_view, std::int32_t> views;
  for (const EventName& event : kEventNames) {
    if (event.mIsView)
      views[event.mName] = event.mCode;
  }
  action.mEventCode = oneOf(words, "view", views);
}

void readZoom(Words&, Action& action) {
  action.mEventCode = kEventZoomAll;
}

void readKey(Words& words, Action& action) {
  action.mEventCode = kEventFirstKey + static_cast<std::int32_t>(words.integer("key", 0, kMaxKey));
}

void readRotation(Words& words, Action& action) {
  action.mRotationCode =
      static_cast<std::int32_t>(words.integer("rotation code", kMin<std::int32_t>, kMax<std::int32_t>));
  action.mIsOn = !words.isAtEnd() && oneOf<bool>(words, "option", {{"zoomall", true}});
  action.mEventCode = kEventRotationChanged;
}

void readMode(Words&, Action& action) {
  action.mEventCode = kEventAnnounceMode;
}

void readEvent(Words& words, Action& action) {
  // Negative codes are motion samples, and those have their own verb.
  action.mEventCode = static_cast<std::int32_t>(words.integer("event code", 0, kMax<std::int32_t>));
}

void readAway(Words& words, Action& action) {
  action.mValue = words.number("seconds", 0, kMaxSeconds);
}

std::size_t readAxis(Words& words) {
  return oneOf<std::size_t>(words, "axis", {{"x", 0}, {"y", 1}, {"z", 2}, {"a", 3}, {"b", 4}, {"c", 5}});
}

void readGain(Words& words, Action& action) {
  action.mAxis = readAxis(words);
  action.mValue = words.number("factor", -100, 100);
}

void readDeadZone(Words& words, Action& action) {
  action.mAxis = readAxis(words);
  action.mValue = words.number("counts", 0, kMax<std::int16_t>);
}

void readSwap(Words& words, Action& action) {
  action.mAxis = readAxis(words);
  action.mOtherAxis = readAxis(words);
}

void readObjects(Words& words, Action& action) {
  do
    action.mObjects.push_back(static_cast<int>(words.integer("object number", 1, kMax<int>)));
  while (!words.isAtEnd());
}

void readSelect(Words& words, Action& action) {
  const std::map<std::string_view, Selection> sets = {
      {"all", Selection::all}, {"none", Selection::none}, {"line", Selection::line}};
  Words ahead = words;
  const auto set = sets.find(ahead.word("object number, all, none or line"));
  if (set != sets.end()) {
    action.mSelection = set->second;
    words = ahead;
    return;
  }
  action.mSelection = Selection::objects;
  readObjects(words, action);
}

void readText(Words& words, Action& action) {
  action.mText = words.text("text");
}

void readOnOff(Words& words, Action& action) {
  action.mIsOn = oneOf<bool>(words, "state", {{"on", true}, {"off", false}});
}

void readPointer(Words& words, Action& action) {
  std::map<std::string_view, Pointer> places;
  for (int i = 0; i <= static_cast<int>(Pointer::none); ++i)
    places[kPointerNames[i]] = static_cast<Pointer>(i);
  action.mPointer = oneOf(words, "pointer place", places);
}

void readLook(Words& words, Action& action) {
  const char* const names[] = {"eye x",    "eye y", "eye z", "target x", "target y",
                               "target z", "up x",  "up y",  "up z"};
  auto& look = action.mLook;
  for (std::size_t i = 0; i < look.size(); ++i)
    look[i] = words.number(names[i], -kMaxCoordinate, kMaxCoordinate);
  const double sight[] = {look[0] - look[3], look[1] - look[4], look[2] - look[5]};
  const double* up = &look[6];
  const double across[] = {up[1] * sight[2] - up[2] * sight[1], up[2] * sight[0] - up[0] * sight[2],
                           up[0] * sight[1] - up[1] * sight[0]};
  if (std::hypot(sight[0], sight[1], sight[2]) < kMinLength)
    throw LineError("eye and target are the same point");
  if (std::hypot(up[0], up[1], up[2]) < kMinLength)
    throw LineError("up has no length");
  if (std::hypot(across[0], across[1], across[2]) <
      kMinLength * std::hypot(sight[0], sight[1], sight[2]) * std::hypot(up[0], up[1], up[2]))
    throw LineError("up lies along the line of sight");
}

void readDrawing(Words& words, Action& action) {
  action.mObjects = {static_cast<int>(words.integer("drawing number", 1, kMax<int>))};
}

void readNothing(Words&, Action&) {}

struct VerbEntry {
  const char* mName;
  Who mWho;
  Verb mVerb;
  void (*mRead)(Words&, Action&);
};

constexpr VerbEntry kVerbs[] = {
    {"motion", Who::device, Verb::motion, readMotion},
    {"view", Who::device, Verb::view, readView},
    {"zoom", Who::device, Verb::zoom, readZoom},
    {"key", Who::device, Verb::key, readKey},
    {"rotation", Who::device, Verb::rotation, readRotation},
    {"mode", Who::device, Verb::mode, readMode},
    {"event", Who::device, Verb::event, readEvent},
    {"away", Who::device, Verb::away, readAway},
    {"gain", Who::device, Verb::gain, readGain},
    {"deadzone", Who::device, Verb::deadzone, readDeadZone},
    {"swap", Who::device, Verb::swap, readSwap},
    {"dominant", Who::device, Verb::dominant, readOnOff},
    {"select", Who::host, Verb::select, readSelect},
    {"type", Who::host, Verb::type, readText},
    {"layout", Who::host, Verb::layout, readOnOff},
    {"viewport", Who::host, Verb::viewport, readOnOff},
    {"lock", Who::host, Verb::lock, readObjects},
    {"unlock", Who::host, Verb::unlock, readObjects},
    {"perspective", Who::host, Verb::perspective, readOnOff},
    {"pointer", Who::host, Verb::pointer, readPointer},
    {"look", Who::host, Verb::look, readLook},
    {"fit", Who::host, Verb::fit, readNothing},
    {"open", Who::host, Verb::open, readText},
    {"drawing", Who::host, Verb::drawing, readDrawing},
    {"close", Who::host, Verb::close, readNothing},
    {"caption", Who::host, Verb::caption, readText},
    {"wait", Who::host, Verb::wait, readNothing},
    {"setting", Who::host, Verb::setting, readText},
    {"tick", Who::host, Verb::tick, readNothing},
};

} // namespace

void readVerb(Words& words, Action& action) {
  action.mSource = Words(words).text("verb");
  const std::string_view name = words.word("verb");
  const auto verb = std::find_if(std::begin(kVerbs), std::end(kVerbs), [&](const VerbEntry& entry) {
    return entry.mWho == action.mWho && name == entry.mName;
  });
  if (verb == std::end(kVerbs))
    throw LineError("unknown " + std::string(action.mWho == Who::device ? "device" : "host") + " verb " +
                    quoted(name));
  action.mVerb = verb->mVerb;
  verb->mRead(words, action);
  words.expectEnd();
}

} // namespace session
