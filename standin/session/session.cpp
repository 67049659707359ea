#include "session.h"

#include "verbs.h"
#include "words.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace session {

namespace {

/// Errors that are kept; more would only hide the first.
constexpr std::size_t kMaxErrors = 20;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// above  the line before, null if there is none
Action readLine(std::string_view line, const Action* above) {
  Words words(line);
  Action action;
  const std::string_view time = words.word("time");
  if (time.front() == 'p')
    action.mPass = Words(time.substr(1)).integer("pass", 1, kMaxPass);
  else
    action.mSeconds = Words(time).number("time", 0, kMaxSeconds);
  if (above && (above->mPass > 0) != (action.mPass > 0))
    throw LineError("the line above counts " + std::string(above->mPass > 0 ? "passes" : "seconds"));
  if (above && (action.mSeconds < above->mSeconds || action.mPass < above->mPass))
    throw LineError("time is before that of the line above");
  const std::string_view who = words.word("player");
  if (who != "device" && who != "host")
    throw LineError("unknown player " + quoted(who) + "; known: device, host");
  action.mWho = who == "device" ? Who::device : Who::host;
  readVerb(words, action);
  if (action.mVerb == Verb::tick && action.mPass == 0)
    throw LineError("only a session that counts passes has ticks");
  if (action.mVerb >= Verb::away && action.mVerb <= Verb::dominant && action.mPass > 0)
    throw LineError("a session that counts passes has the samples that come of it");
  return action;
}

bool parseLine(Who who, std::string_view line, Action& action, std::string& error) {
  error.clear();
  if (!line.empty() && line.back() == '\r')
    line.remove_suffix(1);
  try {
    Words words(line);
    if (words.isAtEnd())
      return false;
    Action found;
    found.mWho = who;
    readVerb(words, found);
    action = std::move(found);
    return true;
  } catch (const LineError& reason) {
    error = reason.what();
    return false;
  }
}

Session failed(const std::string& fileName, const std::string& reason) {
  return {{}, {fileName + ": " + reason}};
}

} // namespace

std::vector<Action> Session::actionsOf(Who who) const {
  std::vector<Action> found;
  std::copy_if(mActions.begin(), mActions.end(), std::back_inserter(found),
               [who](const Action& action) { return action.mWho == who; });
  return found;
}

Session parse(std::string_view text, const std::string& fileName) {
  if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark)
    text.remove_prefix(kByteOrderMark.size());
  if (text.find('\0') != std::string_view::npos)
    return failed(fileName, "not a text file");

  Session session;
  for (int number = 1; !text.empty() && session.mErrors.size() < kMaxErrors; ++number) {
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (!line.empty() && line.back() == '\r')
      line.remove_suffix(1);
    try {
      if (Words(line).isAtEnd())
        continue;
      const Action* const aboveP = session.mActions.empty() ? nullptr : &session.mActions.back();
      session.mActions.push_back(readLine(line, aboveP));
      session.mActions.back().mLine = number;
    } catch (const LineError& error) {
      session.mErrors.push_back(fileName + ":" + std::to_string(number) + ": " + error.what());
    }
  }
  if (!session.isGood())
    session.mActions.clear();
  return session;
}

Session read(const std::string& path) {
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored))
    return failed(path, "is a folder");
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file)
    return failed(path, std::string("can't be opened: ") + std::strerror(errno));
  const std::string text(std::istreambuf_iterator<char>(file), {});
  return parse(text, path);
}

bool parseDeviceLine(std::string_view line, Action& action, std::string& error) {
  return parseLine(Who::device, line, action, error);
}

bool parseHostLine(std::string_view line, Action& action, std::string& error) {
  return parseLine(Who::host, line, action, error);
}

std::string deviceLine(const Action& action) {
  std::string text = "motion";
  switch (action.mVerb) {
  case Verb::motion:
    for (const std::int16_t axis : action.mAxes)
      text += " " + std::to_string(axis);
    return text;
  case Verb::rotation:
    return "rotation " + std::to_string(action.mRotationCode) + (action.mIsOn ? " zoomall" : "");
  default:
    break;
  }
  for (const EventName& event : kEventNames)
    if (event.mCode == action.mEventCode && event.mIsView)
      return std::string("view ") + event.mName;
  return action.mVerb == Verb::event ? "event " + std::to_string(action.mEventCode)
                                     : eventName(action.mEventCode);
}

std::string eventName(std::int32_t code) {
  for (const EventName& event : kEventNames) {
    if (event.mCode == code)
      return event.mName;
  }
  if (code >= kEventFirstKey)
    return "key " + std::to_string(code - kEventFirstKey);
  char text[16];
  std::snprintf(text, sizeof text, "0x%x", static_cast<unsigned>(code));
  return text;
}

} // namespace session
