#include "session_data.h"

#include "session.h"
#include "wide_text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <deque>
#include <fstream>

namespace program {

namespace {

using nlohmann::json;

/// Segments of each drawing in the report, few enough for a browser to draw smoothly.
constexpr std::size_t kSegmentBudget = 60000;
/// Longer lists of objects that move together are written once, under a number.
constexpr std::size_t kLongList = 24;

json matrix(const AcGeMatrix3d& m) {
  json out = json::array();
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 4; ++column)
      out.push_back(m.entry[row][column]);
  }
  return out;
}

json framesJson(const Recorder& recorder, const SessionInput& input, MovedWriter& moved) {
  json out = json::array();
  auto nextEvent = input.mEvents.begin();
  std::array<int, 6> delivered{};
  double before = 0;
  std::vector<MovedGroup> earlier;
  for (std::size_t n = 0; n < recorder.frames().size(); ++n) {
    const RecordedFrame& frame = recorder.frames()[n];
    const double gap = frame.mUnixSeconds - before;
    before = frame.mUnixSeconds;
    for (; nextEvent != input.mEvents.end() && nextEvent->mUnixSeconds <= before; ++nextEvent) {
      if (nextEvent->mKind == DeviceEvent::Kind::motion)
        delivered = nextEvent->mSample;
    }
    if (n <= input.mFirstFrame)
      joinMotion(earlier, frame.mMoved);
    if (n < input.mFirstFrame)
      continue;
    json entry = frameData(frame, recorder.start(), moved);
    if (n == input.mFirstFrame)
      entry["moved"] = moved.write(earlier);
    const auto explained = input.mSamples.find(n);
    entry["sample"] = explained == input.mSamples.end() ? json(delivered) : json(explained->second);
    if (gap < 0.25) // a longer gap is rest
      entry["ms"] = gap * 1000;
    if (input.mFirstFrame > 0)
      entry["n"] = n;
    out.push_back(std::move(entry));
  }
  return out;
}

json eventsJson(const std::vector<DeviceEvent>& events, double start) {
  json out = json::array();
  for (const DeviceEvent& event : events) {
    json entry = {{"t", event.mUnixSeconds - start}};
    switch (event.mKind) {
    case DeviceEvent::Kind::motion:
      entry["kind"] = "motion";
      entry["sample"] = event.mSample;
      break;
    case DeviceEvent::Kind::event:
      entry["kind"] = "event";
      entry["code"] = event.mCode;
      entry["name"] = session::eventName(static_cast<std::int32_t>(event.mCode));
      break;
    case DeviceEvent::Kind::mode:
      entry["kind"] = "mode";
      entry["name"] = event.mText;
      break;
    }
    out.push_back(std::move(entry));
  }
  return out;
}

json historyJson(const std::vector<host::HistoryLine>& history, double start, bool isTyped) {
  json out = json::array();
  for (const host::HistoryLine& line : history) {
    if (line.isTyped == isTyped)
      out.push_back(lineData(line, start));
  }
  return out;
}

json rangeJson(const ScrollRange& range) {
  return {{"min", range.mMin}, {"max", range.mMax}, {"page", range.mPage}};
}

json controlsJson(const Recorder& recorder, const std::vector<ControlInfo>& infos) {
  json out = json::array();
  const auto scrolls = recorder.scrolls();
  for (std::size_t i = 0; i < infos.size(); ++i) {
    json positions = json::array();
    for (const auto& scroll : scrolls) {
      const ScrollState& state = scroll.mValue[i];
      const json entry = {std::max(0.0, scroll.mUnixSeconds - recorder.start()), state.mVertical,
                          state.mHorizontal};
      if (positions.empty() || positions.back()[1] != entry[1] || positions.back()[2] != entry[2])
        positions.push_back(entry);
    }
    out.push_back({{"name", infos[i].mName},
                   {"class", infos[i].mClassName},
                   {"vertical", rangeJson(infos[i].mVertical)},
                   {"horizontal", rangeJson(infos[i].mHorizontal)},
                   {"positions", std::move(positions)}});
  }
  return out;
}

std::string rotationName(int code) {
  static const char* const kNames[] = {"objscreen", "objorigin", "camstandard", "camtarget", "camhover"};
  const int mode = code % 10;
  std::string name = mode >= 0 && mode <= 4 ? kNames[mode] : std::to_string(code);
  if (code % 100 >= 10)
    name += ", horizon kept";
  if (code >= 100 && mode != 4)
    name += ", hover";
  return name;
}

/// Returns the settings that the session changed, over time: what the toggle commands printed, and the device's
/// rotation mode.
json statesJson(const SessionInput& input, double start) {
  json rotation = json::array({{0.0, rotationName(0)}});
  for (const session::Action& action : input.mDeviceActions) {
    if (action.mVerb == session::Verb::rotation)
      rotation.push_back({action.mSeconds, rotationName(action.mRotationCode)});
  }
  json out = json::array({{{"name", "rotation"}, {"rest", ""}, {"changes", rotation}}});
  for (const host::HistoryLine& line : input.mHistory) {
    const auto toggle = readToggle(line);
    if (!toggle)
      continue;
    auto state = std::find_if(out.begin(), out.end(),
                              [&](const json& known) { return known["name"] == toggle->first; });
    if (state == out.end()) {
      out.push_back({{"name", toggle->first}, {"rest", false}, {"changes", json::array()}});
      state = out.end() - 1;
    }
    (*state)["changes"].push_back({line.seconds - start, toggle->second});
  }
  return out;
}

json plugInTimeJson(const std::vector<double>& times) {
  return {{"median", shareOf(times, 0.5) * 1000},
          {"most", shareOf(times, 0.99) * 1000}, // p99
          {"longest", shareOf(times, 1) * 1000}};
}

json countsJson(const Recorder& recorder, const SessionInput& input) {
  const auto motions = countOf(input.mEvents, DeviceEvent::Kind::motion);
  const auto others = countOf(input.mEvents, DeviceEvent::Kind::event);
  const auto typed = std::count_if(input.mHistory.begin(), input.mHistory.end(),
                                   [](const host::HistoryLine& line) { return line.isTyped; });
  return {{"deviceEvents", motions + others},
          {"motions", motions},
          {"keys", others},
          {"frames", recorder.shownFrames()},
          {"framesKept", recorder.frames().size()},
          {"framesPerSecond", recorder.framesPerSecond()},
          {"plugInMs", plugInTimeJson(recorder.plugInTimes())},
          {"typed", typed}};
}

} // namespace

std::string Outcome::effects() const {
  std::string out;
  const auto add = [&out](bool is, const char* effect) {
    if (is)
      out += (out.empty() ? "" : ", ") + std::string(effect);
  };
  add(mMovedView, "moved the view");
  add(mMovedObjects, "moved objects");
  add(mScrolled, "scrolled");
  add(mTyped, "typed");
  return out;
}

json MovedWriter::write(const std::vector<MovedGroup>& groups) {
  json out = json::array();
  for (const MovedGroup& group : groups) {
    json entry = {
        {"drawing", group.mDrawing}, {"count", group.mObjects.size()}, {"matrix", matrix(group.mTransform)}};
    if (group.mObjects.size() <= kLongList)
      entry["objects"] = group.mObjects;
    else
      entry["list"] = listNumber(group.mObjects);
    out.push_back(std::move(entry));
  }
  return out;
}

std::size_t MovedWriter::listNumber(const std::vector<int>& objects) {
  for (std::size_t i = mLists.size(); i > 0; --i) {
    if (mLists[i - 1] == objects)
      return i - 1;
  }
  mLists.push_back(objects);
  return mLists.size() - 1;
}

json frameData(const RecordedFrame& frame, double start, MovedWriter& moved) {
  json entry = {{"t", frame.mUnixSeconds - start},
                {"drawing", frame.mDrawing},
                {"eye", xyz(frame.mView.position)},
                {"target", xyz(frame.mView.target)},
                {"up", xyz(frame.mView.up)},
                {"field", {frame.mView.fieldWidth, frame.mView.fieldHeight}},
                {"perspective", frame.mView.perspective},
                {"mode", frame.mIs2d ? 1 : 2},
                {"moved", moved.write(frame.mMoved)}};
  if (frame.mIs2d) {
    entry["centre"] = {frame.mLayout.centre.x, frame.mLayout.centre.y};
    entry["height"] = frame.mLayout.viewHeight;
  }
  if (frame.mPlugInSeconds > 0)
    entry["plugInMs"] = frame.mPlugInSeconds * 1000;
  return entry;
}

json lineData(const host::HistoryLine& line, double start) {
  // Loading comes before the session.
  return {{"t", std::max(0.0, line.seconds - start)}, {"text", narrowed(line.text)}};
}

std::optional<std::pair<std::string, bool>> readToggle(const host::HistoryLine& line) {
  const std::string text = narrowed(line.text);
  const std::size_t from = text.find("=> ");
  const std::size_t to = text.find(':');
  if (line.isTyped || from == std::string::npos || to == std::string::npos || to < from)
    return std::nullopt;
  return std::pair(text.substr(from + 3, to - from - 3), text.find(" on", to) != std::string::npos);
}

json sessionData(const Recorder& recorder, const SessionInput& input, MovedWriter& moved) {
  const double start = recorder.start();
  json out;
  out["session"] = input.mSessionName;
  out["unix"] = start;
  out["seconds"] = input.mEnd - start;
  for (const DrawingData& drawing : recorder.drawings())
    out["drawings"].push_back(drawing.toJson(kSegmentBudget));
  out["frames"] = framesJson(recorder, input, moved);
  out["lists"] = moved.lists();
  out["layout"] = {{"width", host::layout().width}, {"height", host::layout().height}};
  out["commands"] = historyJson(input.mHistory, start, true);
  out["printed"] = historyJson(input.mHistory, start, false);
  out["events"] = eventsJson(input.mEvents, start);
  out["controls"] = controlsJson(recorder, input.mControls);
  out["states"] = statesJson(input, start);
  out["captions"] = json::array();
  for (const auto& caption : recorder.captions())
    out["captions"].push_back({{"t", caption.mUnixSeconds - start}, {"text", caption.mValue}});
  out["pointer"] = json::array();
  for (const auto& pointer : recorder.pointers())
    out["pointer"].push_back({{"t", pointer.mUnixSeconds - start},
                              {"on", session::kPointerNames[static_cast<int>(pointer.mValue)]}});
  out["selection"] = json::array();
  for (const auto& selection : recorder.selections())
    out["selection"].push_back({{"t", selection.mUnixSeconds - start}, {"objects", selection.mValue}});
  out["log"] = input.mLog;
  out["counts"] = countsJson(recorder, input);
  out["result"] = {{"loaded", input.mOutcome.mIsLoaded},
                   {"tookEvents", input.mOutcome.mTookEvents},
                   {"effects", input.mOutcome.effects()},
                   {"unloaded", input.mOutcome.mIsUnloaded}};
  if (const model::Check* const checkP = input.mOutcome.mCheckP)
    out["check"] = {{"explained", checkP->explained},
                    {"notObservable", checkP->notObservable},
                    {"contradicted", checkP->contradicted},
                    {"summary", checkP->summary()},
                    {"firstContradiction", checkP->firstContradiction}};
  return out;
}

double shareOf(std::vector<double> values, double share) {
  if (values.empty())
    return 0;
  std::sort(values.begin(), values.end());
  const auto below = static_cast<std::size_t>(share * static_cast<double>(values.size()));
  return values[std::min(below, values.size() - 1)];
}

std::vector<std::string> lastLines(const std::string& path, std::size_t limit) {
  std::deque<std::string> lines;
  std::ifstream file(path, std::ios::binary);
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line.back() == '\r')
      line.pop_back();
    lines.push_back(std::move(line));
    if (lines.size() > limit)
      lines.pop_front();
  }
  return {lines.begin(), lines.end()};
}

} // namespace program
