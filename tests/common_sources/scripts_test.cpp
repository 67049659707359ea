// Plays the scripts of tests/fixtures. Traces hold what each pass changes, after vertical bars; each pass is also
// compared with the model. With OV_RENEW_TRACES set, outcomes that differ are written into the files. Transcripts
// hold the calls of host and Windows that are made, in their order.

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <optional>
#include <set>
#include <sstream>

#include "script.h"

using Lines = std::vector<std::string>;

namespace {

// ---- traces ----

/// Returns true if two texts have the same words, with numbers equal but for rounding.
bool isSame(const std::string& a, const std::string& b) {
  std::istringstream as(a), bs(b);
  std::string x, y;
  while (as >> x && bs >> y) {
    char* end = nullptr;
    const double expected = std::strtod(x.c_str(), &end);
    const bool isNumber = *end == '\0' && x.compare(0, 2, "0x") != 0;
    if (x != y && !(isNumber && std::fabs(std::strtod(y.c_str(), nullptr) - expected) <=
                                    1e-9 * std::max(1.0, std::fabs(expected))))
      return false;
  }
  return !as && !(bs >> y);
}

std::string joined(std::initializer_list<double> values) {
  std::ostringstream os;
  os << std::setprecision(15);
  for (const double value : values)
    os << (std::fabs(value) < 1e-14 ? 0.0 : value) << ' '; // rounding leaves a little where 0 is exact
  std::string text = os.str();
  text.pop_back();
  return text;
}

/// Returns what a call did as a trace names it; empty if traces don't name it.
std::string noteOf(const model::Call& call) {
  std::ostringstream os;
  const auto in = [&call](std::size_t i) { return static_cast<std::uint64_t>(call.in.at(i)); };
  if (call.name == "update" || call.name == "updateDisplay")
    os << (call.name == "update" ? "shown 3d" : "shown 2d");
  else if (call.name == "acgsSetViewParameters")
    os << "stored";
  else if (call.name == "Sleep")
    os << "slept " << in(0);
  else if (call.name == "UpdateWindow")
    os << "drawn " << in(0);
  else if (call.name == "SendMessageW" && in(1) == WM_MOUSEWHEEL)
    os << "sent " << in(0) << std::hex << " wheel 0x" << in(2) << " 0x" << in(3);
  else if (call.name == "SendMessageW")
    os << "sent " << in(0) << (in(1) == WM_VSCROLL ? " vscroll " : " hscroll ") << in(2) << ' ' << in(3);
  return os.str();
}

class Trace : public Script {
protected:
  void SetUp() override {
    Script::SetUp();
    mExpected.emplace(mInputs);
  }
  /// Plays a pass and returns its line with the outcome.
  std::string played(const std::string& text);

private:
  /// Returns what a pass may change.
  Values state();

  std::optional<model::Engine> mExpected;
  std::vector<model::Call> mCalls;
};

std::string Trace::played(const std::string& text) {
  const std::string head = text.substr(0, text.find_last_not_of(" |", text.find('|')) + 1);
  const Values before = state(), barsBefore = barPositions();
  mExpected->readSettings();
  EXPECT_EQ(rig::contradiction(
                mCalls, [&] { play(head); },
                [&](model::Replay& replay) { EXPECT_EQ(mExpected->handleDeviceCap(replay), mIsHandled); }),
            "");
  Lines parts = {head, mIsHandled ? "handled" : "not handled"};
  // A change within rounding is named only if the line names it.
  const auto addChanges = [&](const Values& from, const Values& to) {
    for (std::size_t i = 0; i < to.size(); ++i)
      if (!isSame(from[i].second, to[i].second) || text.find("| " + to[i].first + ' ') != std::string::npos)
        parts.push_back(to[i].first + ' ' + to[i].second);
  };
  addChanges(before, state());
  for (const model::Call& call : mCalls) {
    if (call.name == "Sleep")
      addChanges(barsBefore, barPositions());
    if (const std::string note = noteOf(call); !note.empty())
      parts.push_back(note);
  }
  std::string outcome;
  for (std::size_t i = 0, next = 0; i < parts.size(); i = next) {
    while (next < parts.size() && parts[next] == parts[i])
      ++next;
    outcome += (i > 0 ? " | " : "") + parts[i] + (next - i > 1 ? " x" + std::to_string(next - i) : "");
  }
  return outcome;
}

Values Trace::state() {
  const host::ViewState v = host::view();
  const host::LayoutState l = host::layout();
  Values all = {{"cap", proxy().mCapIsMoving ? "moving" : "at rest"},
                {"locks", std::to_string(host::held().locks)},
                {"eye", joined({v.position.x, v.position.y, v.position.z})},
                {"target", joined({v.target.x, v.target.y, v.target.z})},
                {"up", joined({v.up.x, v.up.y, v.up.z})},
                {"field", joined({v.fieldWidth, v.fieldHeight})},
                {"layout", joined({l.viewHeight, l.centre.x, l.centre.y})}};
  for (int i = 1; i <= host::entityCount(); ++i) {
    std::string numbers;
    if (const auto* const circleP = dynamic_cast<const AcDbCircle*>(host::entity(i))) {
      const AcGePoint3d c = circleP->center();
      const AcGeVector3d n = circleP->normal();
      numbers = joined({c.x, c.y, c.z, n.x, n.y, n.z, circleP->radius()});
    } else {
      const AcDbStroke stroke = host::strokes(i).at(0);
      for (const AcGePoint3d& p : stroke)
        numbers += (numbers.empty() ? "" : " ") + joined({p.x, p.y, p.z});
    }
    all.emplace_back("entity " + std::to_string(i), numbers);
  }
  return all;
}

void renew(const std::string& file, const ScriptLine& line) {
  std::ifstream in(scriptPath(file), std::ios::binary);
  std::string all;
  int number = 0;
  for (std::string text; std::getline(in, text);)
    all += (++number == line.number ? line.text : text) + "\n";
  std::ofstream(scriptPath(file), std::ios::binary) << all;
}

TEST_P(Trace, LeavesTheseOutcomes) {
  const ScriptCase& c = GetParam();
  for (const ScriptLine& line : c.lines) {
    SCOPED_TRACE(c.file + ":" + std::to_string(line.number) + ": " + line.text);
    if (line.word() != "pass") {
      play(line.text);
      continue;
    }
    const std::string found = played(line.text);
    const bool isRenewing = std::getenv("OV_RENEW_TRACES") != nullptr;
    EXPECT_TRUE(isRenewing || isSame(found, line.text)) << "found: " << found;
    if (HasFailure())
      return; // what follows would differ, too
    if (!isSame(found, line.text))
      renew(c.file, {line.number, found});
  }
}

INSTANTIATE_TEST_SUITE_P(Engine, Trace, testing::ValuesIn(playableCases({"engine.trace", "scroll.trace"})));

// ---- transcripts ----

/// Returns a line of the journal as a transcript has it.
std::string transcribed(std::string call) {
  static const std::set<std::string> kOfWindows = {
      "Beep",          "GetClassNameW",   "GetCursorPos",       "GetModuleFileNameW", "GetParent",
      "GetScrollInfo", "GetWindow",       "GetWindowRect",      "IsWindowVisible",    "KillTimer",
      "MessageBoxW",   "PtInRect",        "SendMessageW",       "SetTimer",           "Sleep",
      "UpdateWindow",  "WindowFromPoint", "WideCharToMultiByte"};
  const std::string operation = call.substr(0, call.find(' '));
  if (operation == "KillTimer")
    call = operation;
  for (const std::string& home : {rig::home().native(), rig::home().backslashed()})
    for (std::size_t at = call.find(home); at != std::string::npos; at = call.find(home))
      call.replace(at, home.size(), "HOME");
  return (kOfWindows.count(operation) != 0 ? "  win " : "  ") + call + "\n";
}

class Transcript : public Script {};

TEST_P(Transcript, ListsTheseCalls) {
  const std::set<std::string> actions = {"pass", "keys", "tick", "start"};
  std::string expected, found;
  for (const ScriptLine& line : GetParam().lines) {
    const bool isCall = line.text[0] == ' ';
    if (!isCall || kHasDesktop || line.text.compare(2, 4, "win ") != 0)
      expected += line.text + "\n";
    if (isCall)
      continue;
    SCOPED_TRACE(GetParam().file + ":" + std::to_string(line.number) + ": " + line.text);
    found += line.text + "\n";
    call_log::startRecording();
    play(line.text);
    for (const std::string& call : call_log::stopRecording())
      found += actions.count(line.word()) != 0 ? transcribed(call) : "";
  }
  EXPECT_EQ(found, expected) << "at " << GetParam().file << ":" << GetParam().lines.at(0).number;
}

INSTANTIATE_TEST_SUITE_P(Engine, Transcript,
                         testing::ValuesIn(playableCases({"motion.transcript", "scrolling.transcript",
                                                          "keys.transcript"})));

} // namespace
