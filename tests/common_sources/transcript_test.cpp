// Plays the transcripts of tests/fixtures and compares the calls of host and Windows, one by one, with those
// that stand there. Their heads tell what the words mean.

#include <algorithm>
#include <set>
#include <sstream>

#include "call_log.h"
#include "engine_script.h"

#ifndef _WIN32
#include "desktop.h"
#endif

namespace {

constexpr char kReader[] = "OvScribe2018.dll";
constexpr char kIndent[] = "  "; // in front of a call
constexpr char kWindows[] = "win ";

#ifndef _WIN32
constexpr bool kHasDesktop = true;
#else
constexpr bool kHasDesktop = false; // Windows tells nobody which calls it got
#endif

bool isCall(const std::string& line) {
  return line.compare(0, 2, kIndent) == 0;
}

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

/// A line of the journal as a transcript has it.
std::string transcribed(std::string call) {
  static const std::set<std::string> kOfWindows = {
      "Beep",          "GetClassNameW",   "GetCursorPos",       "GetModuleFileNameW", "GetParent",
      "GetScrollInfo", "GetWindow",       "GetWindowRect",      "IsWindowVisible",    "KillTimer",
      "MessageBoxW",   "PtInRect",        "SendMessageW",       "SetTimer",           "Sleep",
      "UpdateWindow",  "WindowFromPoint", "WideCharToMultiByte"};
  const std::string operation = call.substr(0, call.find(' '));
  if (operation == "KillTimer")
    call = operation;
  replaceAll(call, rig::home().native(), "HOME");
  replaceAll(call, rig::home().backslashed(), "HOME");
  return (kOfWindows.count(operation) != 0 ? kWindows : "") + call;
}

/// Cases of a file that can be played here.
std::vector<ScriptCase> playable(const std::string& file) {
  static const std::set<std::string> kNeedDesktop = {"window", "timebox", "reader"};
  std::vector<ScriptCase> cases = readScript(file);
  const auto isOut = [](const ScriptCase& c) {
    return !kHasDesktop && std::any_of(c.lines.begin(), c.lines.end(), [](const ScriptLine& line) {
      return kNeedDesktop.count(line.word()) != 0;
    });
  };
  cases.erase(std::remove_if(cases.begin(), cases.end(), isOut), cases.end());
  return cases;
}

std::vector<ScriptCase> allPlayable() {
  std::vector<ScriptCase> all;
  for (const char* file : {"motion.transcript", "scrolling.transcript", "keys.transcript"}) {
    const std::vector<ScriptCase> cases = playable(file);
    all.insert(all.end(), cases.begin(), cases.end());
  }
  return all;
}

class Transcript : public EngineScript, public testing::WithParamInterface<ScriptCase> {
protected:
  void SetUp() override {
    EngineScript::SetUp();
    mMenuFolder = plugin().mApplicationsDirPath;
    mTimeBox = proxy().mMaxContMoveTime;
  }
  void TearDown() override {
    plugin().mApplicationsDirPath = mMenuFolder;
    proxy().mMaxContMoveTime = mTimeBox;
    proxy().mUseInt3dIntrfce = false;
    rig::home().remove(kReader);
    EngineScript::TearDown();
  }

  /// The case as it should stand in its file: its lines, and below each what it called.
  std::vector<std::string> played();

private:
  /// False: the line does nothing that is recorded.
  bool act(const ScriptLine& line);
  bool setUpKeys(const std::string& word, const std::string& rest);
  void setReader(const std::string& place);

  std::string mMenuFolder;
  std::uint32_t mTimeBox = 0;
};

std::vector<std::string> Transcript::played() {
  std::vector<std::string> lines;
  for (const ScriptLine& line : GetParam().lines) {
    if (isCall(line.text))
      continue;
    SCOPED_TRACE(GetParam().file + ":" + std::to_string(line.number) + ": " + line.text);
    lines.push_back(line.text);
    call_log::startRecording();
    const bool isAct = act(line);
    const std::vector<std::string> recorded = call_log::stopRecording();
    for (const std::string& call : isAct ? recorded : std::vector<std::string>())
      lines.push_back(kIndent + transcribed(call));
  }
  return lines;
}

bool Transcript::act(const ScriptLine& line) {
  const std::string word = line.word();
  if (word == "pass")
    passOf(line.text);
  else if (word == "keys")
    proxy().handleDeviceKeys();
  else if (word == "tick")
    TimerProc(nullptr, WM_TIMER, 0, 0);
  else if (word == "start")
    proxy().StartDotNETPlugin();
  else {
    const std::string rest = word.size() < line.text.size() ? line.text.substr(word.size() + 1) : "";
    if (!setUpKeys(word, rest))
      set(line.text);
    return false;
  }
  return true;
}

bool Transcript::setUpKeys(const std::string& word, const std::string& rest) {
  if (word == "macro") {
    proxy().mMenuEntries.push_back(rest);
  } else if (word == "menu") {
    proxy().mMenuIsLoaded = rest == "loaded";
  } else if (word == "key") {
    plugin().mPendingKey = std::stoi(rest);
  } else if (word == "special") {
    plugin().mPendingSpecial = std::stoi(rest);
  } else if (word == "sample") {
    std::istringstream in(rest);
    const std::vector<double> s = numbersOf(in);
    const auto axis = [&s](std::size_t i) { return static_cast<int>(s.at(i)); };
    setSample(axis(0), axis(1), axis(2), axis(3), axis(4), axis(5));
  } else if (word == "timebox") {
    proxy().mMaxContMoveTime = static_cast<std::uint32_t>(std::stoul(rest));
  } else if (word == "reader") {
    setReader(rest);
  } else if (word == "folder") {
    plugin().mApplicationsDirPath = rest == "gone" ? rig::home().backslashed("gone") : mMenuFolder;
  } else if (word == "zoomall") {
    proxy().mZoomAllAfterView = rest == "on";
  } else if (word == "int3d") {
    proxy().mUseInt3dIntrfce = rest == "on";
  } else {
    return false;
  }
  return true;
}

#ifndef _WIN32
void Transcript::setReader(const std::string& place) {
  rig::home().remove(kReader);
  if (place == "here")
    rig::home().write(kReader, "reads menus");
  const std::string module = place == "nowhere" ? "plug-in.arx" : rig::home().backslashed("plug-in.arx");
  desktop::setModulePath(std::wstring(module.begin(), module.end()));
}
#else
void Transcript::setReader(const std::string&) {
  FAIL() << "the module's path is what it is here";
}
#endif

TEST_P(Transcript, MakesTheseCallsInThisOrder) {
  std::string expected, actual;
  for (const ScriptLine& line : GetParam().lines) {
    if (kHasDesktop || !isCall(line.text) || line.text.compare(2, 4, kWindows) != 0)
      expected += line.text + "\n";
  }
  for (const std::string& line : played())
    actual += line + "\n";
  EXPECT_EQ(actual, expected) << "at " << GetParam().file << ":" << GetParam().lines.at(0).number;
}

TEST(Transcripts, AreThere) {
  for (const char* file : {"motion.transcript", "scrolling.transcript", "keys.transcript"})
    EXPECT_GE(readScript(file).size(), 5U) << file;
}

INSTANTIATE_TEST_SUITE_P(Engine, Transcript, testing::ValuesIn(allPlayable()), caseName);

} // namespace
