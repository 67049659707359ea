// Session files: a good one comes back the same when its actions are written down again, a bad one plays
// nothing and names its lines.
//
// Input: the file.

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>

#include "check.h"
#include "session.h"

using fuzz::require;
using fuzz::requireSame;
using namespace session;

namespace {

constexpr char kName[] = "a.session";
constexpr std::size_t kMostErrors = 20;

std::string shortest(double value) {
  char text[64];
  return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

std::string codeName(const Action& action) {
  const std::string name = session::eventName(action.mEventCode);
  for (const session::EventName& event : session::kEventNames)
    if (event.mIsView && event.mName == name)
      return name;
  throw fuzz::Broken("a view that there is");
}

std::string selectionText(const Action& action) {
  if (action.mSelection == Selection::objects) {
    std::string text;
    require(!action.mObjects.empty(), "objects to select");
    for (const int number : action.mObjects) {
      require(number >= 1, "objects count from 1");
      text += ' ' + std::to_string(number);
    }
    return text;
  }
  require(action.mObjects.empty(), "no objects beside a set");
  return action.mSelection == Selection::all    ? " all"
         : action.mSelection == Selection::none ? " none"
                                                : " line";
}

std::string lookText(const Action& action) {
  std::string text;
  for (const double value : action.mLook) {
    require(std::isfinite(value), "a view of numbers");
    text += ' ' + shortest(value);
  }
  return text;
}

/// What stands behind the player's name in a line that says the same.
std::string deviceText(const Action& action) {
  switch (action.mVerb) {
  case Verb::motion: {
    std::string text = "motion";
    for (const int axis : action.mAxes)
      text += ' ' + std::to_string(axis);
    return text;
  }
  case Verb::view:
    return "view " + codeName(action);
  case Verb::zoom:
    require(action.mEventCode == kEventZoomAll, "code of the zoom");
    return "zoom";
  case Verb::key:
    return "key " + std::to_string(action.mEventCode - kEventFirstKey);
  case Verb::rotation:
    return "rotation " + std::to_string(action.mRotationCode) + (action.mIsOn ? " zoomall" : "");
  case Verb::mode:
    return "mode";
  case Verb::event:
    require(action.mEventCode >= 0, "codes below zero are motion");
    return "event " + std::to_string(action.mEventCode);
  case Verb::away:
    return "away " + shortest(action.mDuration);
  default:
    throw fuzz::Broken("a verb of the device");
  }
}

std::string hostText(const Action& action) {
  constexpr const char* kPlaces[] = {"view", "tree", "list", "edit", "wheel", "none"};
  const std::string state = action.mIsOn ? " on" : " off";
  switch (action.mVerb) {
  case Verb::select:
    return "select" + selectionText(action);
  case Verb::type:
    return "type " + action.mText;
  case Verb::layout:
    return "layout" + state;
  case Verb::perspective:
    return "perspective" + state;
  case Verb::pointer:
    return std::string("pointer ") + kPlaces[static_cast<int>(action.mPointer)];
  case Verb::look:
    return "look" + lookText(action);
  case Verb::fit:
    return "fit";
  case Verb::caption:
    return "caption " + action.mText;
  case Verb::wait:
    return "wait";
  default:
    throw fuzz::Broken("a verb of the host");
  }
}

std::string lineOf(const Action& action) {
  return shortest(action.mSeconds) +
         (action.mWho == Who::device ? " device " + deviceText(action) : " host " + hostText(action));
}

std::vector<std::string> wordsOf(const std::string& line) {
  std::vector<std::string> words(1);
  for (const char c : line) {
    if (c != ' ' && c != '\t')
      words.back() += c;
    else if (!words.back().empty())
      words.emplace_back();
  }
  if (words.back().empty())
    words.pop_back();
  return words;
}

/// The line as it stands in the file says what the action says: the same words, and numbers of the same
/// value.
void checkWords(const std::string& line, const Action& action) {
  if (action.mVerb == Verb::type || action.mVerb == Verb::caption)
    return; // a text, blanks and all
  const std::vector<std::string> found = wordsOf(lineOf(action));
  const std::vector<std::string> expected = wordsOf(line);
  require(found.size() <= expected.size(), "no word that wasn't there");
  require(found.size() == expected.size() || expected[found.size()][0] == '#',
          "no word lost but a comment's");
  for (std::size_t i = 0; i < found.size(); ++i)
    if (std::strtod(found[i].c_str(), nullptr) != std::strtod(expected[i].c_str(), nullptr) ||
        std::isalpha(static_cast<unsigned char>(found[i][0])))
      requireSame(found[i], expected[i], "the action says what its line says");
}

/// A line of a file, by its number.
std::string lineAt(const std::string& text, int number) {
  std::size_t start = text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
  for (int i = 1; i < number; ++i)
    start = text.find('\n', start) + 1;
  std::string line = text.substr(start, text.find('\n', start) - start);
  if (!line.empty() && line.back() == '\r')
    line.pop_back();
  return line;
}

void checkGood(const Session& found, const std::string& file) {
  double last = 0;
  int line = 0;
  std::string text;
  for (const Action& action : found.mActions) {
    require(action.mSeconds >= last && action.mSeconds <= kMaxSeconds,
            "times never decrease, nor exceed a day");
    require(action.mLine > line, "actions in the file's order");
    last = action.mSeconds;
    line = action.mLine;
    text += lineOf(action) + '\n';
    checkWords(lineAt(file, line), action);
  }
  require(found.actionsOf(Who::device).size() + found.actionsOf(Who::host).size() == found.mActions.size(),
          "each action belongs to one player");
  const Session again = parse(text, kName);
  require(again.isGood(), "actions written down are good lines");
  std::string textAgain;
  for (const Action& action : again.mActions) {
    textAgain += lineOf(action) + '\n';
    if (action.mWho == Who::device) {
      Action alone;
      std::string error;
      require(parseDeviceLine(deviceText(action), alone, error), "a device's line is good alone, too");
      requireSame(deviceText(alone), deviceText(action), "and says the same");
    }
  }
  requireSame(textAgain, text, "actions read back are the same");
}

void checkBad(const Session& found) {
  require(found.mActions.empty(), "nothing is played of a bad session");
  require(found.mErrors.size() <= kMostErrors, "the first errors only");
  int last = 0;
  for (const std::string& error : found.mErrors) {
    const std::string head = std::string(kName) + ":";
    require(error.compare(0, head.size(), head) == 0, "an error names its file");
    require(error.find('\n') == std::string::npos, "an error is one line");
    const std::size_t colon = error.find(": ");
    require(colon != std::string::npos && colon + 2 < error.size(), "an error gives its reason");
    if (colon + 1 == head.size())
      continue; // of the file as a whole
    int line = 0;
    const char* const end = error.data() + colon;
    const auto [stop, code] = std::from_chars(error.data() + head.size(), end, line);
    require(code == std::errc{} && stop == end && line > last, "an error names its line, and lines ascend");
    last = line;
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const Session found = parse(text, kName);
  if (found.isGood())
    checkGood(found, text);
  else
    checkBad(found);
  Action action;
  action.mLine = -1;
  std::string error;
  if (parseDeviceLine(text.substr(0, text.find('\n')), action, error))
    require(error.empty() && !deviceText(action).empty(), "a good line has no error");
  else
    require(action.mLine == -1, "a bad line leaves the action alone");
  return 0;
}
