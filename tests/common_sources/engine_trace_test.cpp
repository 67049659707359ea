// Plays the traces of tests/fixtures, pass by pass, and compares view, layout, objects, locks and controls
// with what stands behind the bars. engine_trace.py has worked that out by itself, from other formulas; the
// heads of the traces tell what their words mean.

#include <algorithm>
#include <map>
#include <sstream>

#include "engine_script.h"

#ifndef _WIN32
#include "desktop.h"
#endif

namespace {

constexpr double kTolerance = 1e-9; // relative, and absolute below 1

/// What a pass may change: name, as the trace writes it, and numbers.
using State = std::map<std::string, std::vector<double>>;

/// What stands behind a bar is either a new value of the state, or a note. Gives the notes, sorted.
std::vector<std::string> takeOutcome(const std::string& outcome, State& state) {
  std::vector<std::string> notes;
  std::istringstream parts(outcome);
  for (std::string part; std::getline(parts, part, '|');) {
    part = part.substr(part.find_first_not_of(' '));
    part.erase(part.find_last_not_of(' ') + 1);
    if (part == "cap moving" || part == "cap at rest") {
      state["cap"] = {part == "cap moving" ? 1.0 : 0.0};
      continue;
    }
    const std::size_t nameEnd = part.find(' ', part.compare(0, 7, "entity ") == 0 ? 7 : 0);
    const auto found = state.find(part.substr(0, nameEnd));
    if (found != state.end()) {
      std::istringstream values(part.substr(nameEnd));
      found->second = numbersOf(values);
      continue;
    }
    const std::size_t times = part.find(" x");
    const int count = times == std::string::npos ? 1 : std::stoi(part.substr(times + 2));
    notes.insert(notes.end(), static_cast<std::size_t>(count), part.substr(0, times));
  }
  std::sort(notes.begin(), notes.end());
  return notes;
}

class EngineTrace : public EngineScript, public testing::WithParamInterface<ScriptCase> {
protected:
  void SetUp() override {
    EngineScript::SetUp();
    host::setFrameSink(
        [this](const host::Frame& frame) { mNotes.push_back(frame.is2d ? "shown 2d" : "shown 3d"); });
  }
  void TearDown() override {
    host::setFrameSink(nullptr);
    EngineScript::TearDown();
  }

  void playPass(const std::string& text);

private:
  void expectState(const State& expected);
  State state();
  std::vector<std::string> barPositions();
  void takeWindowNotes();

  std::vector<std::string> mNotes; // of the pass
#ifndef _WIN32
  std::size_t mSleeps = 0; // how many of the desktop's are told
#endif
};

void EngineTrace::playPass(const std::string& text) {
  const std::size_t bar = text.find('|');
  ASSERT_NE(bar, std::string::npos) << "no outcome; run engine_trace.py";
  State expected = state();
  host::ViewState expectedStored = host::storedView();
  const std::int64_t stored = host::viewCounts().storedViews;
  const std::vector<std::string> positions = barPositions();
  mNotes.clear();
  mNotes.push_back(passOf(text) ? "handled" : "not handled");
  takeWindowNotes();
  for (const std::string& position : barPositions())
    if (std::find(positions.begin(), positions.end(), position) == positions.end())
      mNotes.push_back(position);
  if (host::viewCounts().storedViews != stored)
    mNotes.push_back("stored");

  const std::vector<std::string> expectedNotes = takeOutcome(text.substr(bar + 1), expected);
  if (std::find(expectedNotes.begin(), expectedNotes.end(), "stored") != expectedNotes.end())
    expectedStored = host::view();
  std::sort(mNotes.begin(), mNotes.end());
  EXPECT_EQ(mNotes, expectedNotes);
  expectState(expected);
  EXPECT_EQ(rig::text(host::storedView().position, 12), rig::text(expectedStored.position, 12));
  EXPECT_EQ(rig::text(host::storedView().up, 12), rig::text(expectedStored.up, 12));
  EXPECT_EQ(proxy().mIsDocLocked, host::held().locks != 0);
}

void EngineTrace::expectState(const State& expected) {
  const State actual = state();
  for (const auto& [name, values] : expected) {
    const std::vector<double>& found = actual.at(name);
    ASSERT_EQ(found.size(), values.size()) << name;
    for (std::size_t i = 0; i < values.size(); ++i)
      EXPECT_NEAR(found[i], values[i], kTolerance * std::max(1.0, std::fabs(values[i])))
          << name << ", number " << i + 1;
  }
}

State EngineTrace::state() {
  const host::ViewState v = host::view();
  const host::LayoutState l = host::layout();
  State all = {{"cap", {proxy().mCapIsMoving ? 1.0 : 0.0}},
               {"locks", {static_cast<double>(host::held().locks)}},
               {"eye", {v.position.x, v.position.y, v.position.z}},
               {"target", {v.target.x, v.target.y, v.target.z}},
               {"up", {v.up.x, v.up.y, v.up.z}},
               {"field", {v.fieldWidth, v.fieldHeight}},
               {"projection", {v.perspective ? 1.0 : 0.0}},
               {"layout", {l.viewHeight, l.centre.x, l.centre.y}}};
  for (int i = 1; i <= host::entityCount(); ++i) {
    std::vector<double>& values = all["entity " + std::to_string(i)];
    std::vector<AcGePoint3d> points;
    if (mKinds[static_cast<std::size_t>(i) - 1] == "circle") {
      const auto& circle = static_cast<const AcDbCircle&>(*host::entity(i));
      points = {circle.center(), AcGePoint3d::kOrigin + circle.normal()};
    } else {
      points = host::strokes(i).at(0);
    }
    for (const AcGePoint3d& p : points)
      values.insert(values.end(), {p.x, p.y, p.z});
    if (mKinds[static_cast<std::size_t>(i) - 1] == "circle")
      values.push_back(static_cast<const AcDbCircle&>(*host::entity(i)).radius());
  }
  return all;
}

#ifndef _WIN32

std::vector<std::string> EngineTrace::barPositions() {
  std::vector<std::string> positions;
  for (std::size_t i = 0; i < mWindows.size(); ++i) {
    const desktop::Window window = desktop::window(mWindows[i]);
    const std::string start = "at " + std::to_string(i + 1);
    if (window.vertical)
      positions.push_back(start + " vertical " + std::to_string(window.vertical->position));
    if (window.horizontal)
      positions.push_back(start + " horizontal " + std::to_string(window.horizontal->position));
  }
  return positions;
}

/// Notes what was done to the windows, and how long the engine slept, since the pass before.
void EngineTrace::takeWindowNotes() {
  const std::vector<desktop::SleepRecord> sleeps = desktop::sleeps();
  for (; mSleeps < sleeps.size(); ++mSleeps)
    if (sleeps[mSleeps].isWatched)
      mNotes.push_back("slept " + std::to_string(sleeps[mSleeps].milliseconds));
  for (std::size_t i = 0; i < mWindows.size(); ++i) {
    const std::string number = std::to_string(i + 1);
    desktop::changeWindow(mWindows[i], [&](desktop::Window& window) {
      for (const desktop::SentMessage& sent : window.sent) {
        std::ostringstream note;
        note << "sent " << number;
        if (sent.message == WM_MOUSEWHEEL)
          note << " wheel 0x" << std::hex << sent.wParam << " 0x" << sent.lParam;
        else
          note << (sent.message == WM_VSCROLL ? " vscroll " : " hscroll ") << sent.wParam << " "
               << sent.lParam;
        mNotes.push_back(note.str());
      }
      mNotes.insert(mNotes.end(), static_cast<std::size_t>(window.updates), "drawn " + number);
      window.sent.clear();
      window.updates = 0;
    });
  }
}

#else

// The windows of a real desktop are their owners' affair; only engine.trace is played there.
std::vector<std::string> EngineTrace::barPositions() {
  return {};
}
void EngineTrace::takeWindowNotes() {}

#endif

TEST_P(EngineTrace, DoesAsWorkedOut) {
  for (const ScriptLine& line : GetParam().lines) {
    SCOPED_TRACE(GetParam().file + ":" + std::to_string(line.number) + ": " + line.text);
    if (line.word() == "pass")
      playPass(line.text);
    else
      set(line.text);
    if (HasFailure())
      return; // what follows would differ too
  }
}

TEST(EngineTraces, AreThere) {
  EXPECT_GT(readScript("engine.trace").size(), 50U);
  EXPECT_GT(readScript("scroll.trace").size(), 30U);
}

INSTANTIATE_TEST_SUITE_P(Engine, EngineTrace, testing::ValuesIn(readScript("engine.trace")), caseName);
#ifndef _WIN32
INSTANTIATE_TEST_SUITE_P(Scroll, EngineTrace, testing::ValuesIn(readScript("scroll.trace")), caseName);
#endif

} // namespace
