// Plays the traces of tests/fixtures, pass by pass, and compares view, layout, objects, locks and controls
// with what stands behind the bars. engine_trace.py has worked that out by itself, from other formulas; the
// heads of the traces tell what their words mean.

#include <algorithm>
#include <cctype>
#include <fstream>
#include <map>
#include <sstream>

#include "engine_rig.h"

#ifndef _WIN32
#include "desktop.h"
#endif

namespace {

constexpr double kTolerance = 1e-9; // relative, and absolute below 1

struct Line {
  int number = 0;
  std::string text;
};

struct Case {
  std::string file;
  std::string name;
  std::vector<Line> lines;
};

/// Names a case in the output of a failed test.
void PrintTo(const Case& c, std::ostream* os) {
  *os << c.file << ": " << c.name;
}

std::vector<Case> readCases(const std::string& file) {
  std::ifstream in(std::string(OV_FIXTURES) + "/" + file);
  std::vector<Case> cases;
  Line line;
  while (std::getline(in, line.text)) {
    ++line.number;
    line.text.erase(line.text.find_last_not_of(" \r") + 1);
    if (line.text.compare(0, 5, "case ") == 0)
      cases.push_back({file, line.text.substr(5), {}});
    else if (!cases.empty() && !line.text.empty() && line.text[0] != '#')
      cases.back().lines.push_back(line);
  }
  return cases;
}

std::string testName(const testing::TestParamInfo<Case>& info) {
  std::string name;
  for (const char c : info.param.name) {
    if (std::isalnum(static_cast<unsigned char>(c)) != 0)
      name += c;
    else if (!name.empty() && name.back() != '_')
      name += '_';
  }
  return name + "_" + std::to_string(info.index);
}

std::vector<double> numbers(std::istream& in) {
  std::vector<double> values;
  for (double value = 0; in >> value;)
    values.push_back(value);
  return values;
}

AcGePoint3d point(const std::vector<double>& v, std::size_t from = 0) {
  return {v.at(from), v.at(from + 1), v.at(from + 2)};
}

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
      found->second = numbers(values);
      continue;
    }
    const std::size_t times = part.find(" x");
    const int count = times == std::string::npos ? 1 : std::stoi(part.substr(times + 2));
    notes.insert(notes.end(), static_cast<std::size_t>(count), part.substr(0, times));
  }
  std::sort(notes.begin(), notes.end());
  return notes;
}

class EngineTrace : public EngineTest, public testing::WithParamInterface<Case> {
protected:
  void SetUp() override {
    EngineTest::SetUp();
    plugin().mScrollTreeAndList = false;
    proxy().mTraSensBase = 20000;
    proxy().mRotSensBase = 10000;
    host::setFrameSink(
        [this](const host::Frame& frame) { mNotes.push_back(frame.is2d ? "shown 2d" : "shown 3d"); });
  }
  void TearDown() override {
    proxy().mTraSensBase = 20000;
    proxy().mRotSensBase = 10000;
    host::setFrameSink(nullptr);
    EngineTest::TearDown();
  }

  void play(const std::string& text);

private:
  void setNumbers(const std::string& word, const std::vector<double>& v, bool isPerspective);
  void playPass(std::istream& in, const std::string& outcome);
  void expectState(const State& expected);
  State state();
  void setToggle(const std::string& name, bool isOn);
  void addEntity(std::istream& in);
  void setMark(int number, const std::string& mark);
  void addWindow(std::istream& in);
  void setBar(std::istream& in);
  void setPointer(int x, int y);
  std::vector<std::string> barPositions();
  void takeWindowNotes();

  std::vector<std::string> mKinds; // of the entities
  std::vector<std::string> mNotes; // of the pass
#ifndef _WIN32
  std::vector<HWND> mWindows;
  std::size_t mSleeps = 0; // how many of the desktop's are told
#endif
};

void EngineTrace::play(const std::string& text) {
  const std::size_t bar = text.find('|');
  std::istringstream in(text.substr(0, bar));
  std::string word;
  in >> word;
  if (word == "pass") {
    ASSERT_NE(bar, std::string::npos) << "no outcome; run engine_trace.py";
    playPass(in, text.substr(bar + 1));
  } else if (word == "entity") {
    addEntity(in);
  } else if (word == "window") {
    addWindow(in);
  } else if (word == "bar") {
    setBar(in);
  } else if (word == "toggle" || word == "mark") {
    std::string which, value;
    in >> which >> value;
    word == "toggle" ? setToggle(which, value == "on") : setMark(std::stoi(which), value);
  } else {
    const std::vector<double> v = numbers(in);
    in.clear();
    std::string projection; // behind the numbers of a view
    in >> projection;
    setNumbers(word, v, projection == "perspective");
  }
}

void EngineTrace::setNumbers(const std::string& word, const std::vector<double>& v, bool isPerspective) {
  const auto whole = [&v](std::size_t i) { return static_cast<int>(v.at(i)); };
  if (word == "view") {
    host::setView(
        rig::viewFrom(point(v), point(v, 3), point(v, 6).asVector(), v.at(9), v.at(10), isPerspective));
  } else if (word == "rotation") {
    proxy().setRotMode(whole(0));
  } else if (word == "threshold") {
    plugin().mMinThreshold = whole(0);
  } else if (word == "divisors") {
    proxy().mTraSensBase = whole(0);
    proxy().mRotSensBase = whole(1);
  } else if (word == "tab") {
    host::setVariable("tilemode", static_cast<short>(whole(0)));
    host::setVariable("cvport", static_cast<short>(whole(1)));
  } else if (word == "layout") {
    host::setLayoutState({v.at(0), v.at(1), v.at(2), AcGePoint2d(v.at(3), v.at(4))});
  } else if (word == "select") {
    host::selectNumbers(std::vector<int>(v.begin(), v.end()));
  } else if (word == "pointer") {
    setPointer(whole(0), whole(1));
  } else {
    FAIL() << "unknown word";
  }
}

void EngineTrace::playPass(std::istream& in, const std::string& outcome) {
  const std::vector<double> s = numbers(in);
  ASSERT_EQ(s.size(), 6U);
  const auto axis = [&s](std::size_t i) { return static_cast<int>(s[i]); };
  State expected = state();
  host::ViewState expectedStored = host::storedView();
  const std::int64_t stored = host::viewCounts().storedViews;
  const std::vector<std::string> positions = barPositions();
  mNotes.clear();
  mNotes.push_back(pass(axis(0), axis(1), axis(2), axis(3), axis(4), axis(5)) ? "handled" : "not handled");
  takeWindowNotes();
  for (const std::string& position : barPositions())
    if (std::find(positions.begin(), positions.end(), position) == positions.end())
      mNotes.push_back(position);
  if (host::viewCounts().storedViews != stored)
    mNotes.push_back("stored");

  const std::vector<std::string> expectedNotes = takeOutcome(outcome, expected);
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

void EngineTrace::setToggle(const std::string& name, bool isOn) {
  if (name == "center")
    plugin().mToggleRotationCenter = isOn;
  else if (name == "axis")
    plugin().mToggleRotationAxis = isOn;
  else if (name == "scroll")
    plugin().mScrollTreeAndList = isOn;
  else if (name == "objects")
    proxy().mObjectMoveMode = isOn;
  else if (name == "valid")
    host::setViewValid(isOn);
  else
    FAIL() << "unknown toggle";
}

void EngineTrace::addEntity(std::istream& in) {
  std::string kind;
  in >> kind;
  const std::vector<double> v = numbers(in);
  if (kind == "line")
    host::add(rig::line(point(v), point(v, 3)));
  else if (kind == "point")
    host::add(std::make_unique<AcDbPoint>(point(v)));
  else if (kind == "circle")
    host::add(std::make_unique<AcDbCircle>(point(v), point(v, 3).asVector(), v.at(6)));
  else {
    ASSERT_EQ(kind, "poly");
    std::vector<AcGePoint3d> points;
    for (std::size_t i = 0; i < v.size(); i += 3)
      points.push_back(point(v, i));
    host::add(std::make_unique<AcDb3dPolyline>(points, false));
  }
  mKinds.push_back(kind);
}

void EngineTrace::setMark(int number, const std::string& mark) {
  host::setCannotBeOpened(host::entityId(number), mark == "closed");
  host::setRefusesTransform(host::entityId(number), mark == "locked");
}

#ifndef _WIN32

void EngineTrace::addWindow(std::istream& in) {
  int parent = 0, left = 0, top = 0, width = 0, height = 0;
  std::string name, shown;
  in >> parent >> name >> left >> top >> width >> height >> shown;
  desktop::Window window;
  window.className.assign(name.begin(), name.end());
  window.rect = desktop::rectangle(left, top, width, height);
  window.parent = parent == 0 ? nullptr : mWindows.at(static_cast<std::size_t>(parent) - 1);
  window.isVisible = shown == "shown";
  mWindows.push_back(desktop::addWindow(window));
}

void EngineTrace::setBar(std::istream& in) {
  std::size_t number = 0;
  std::string which;
  in >> number >> which;
  const std::vector<double> v = numbers(in);
  const desktop::ScrollBar bar = {static_cast<int>(v.at(0)), static_cast<int>(v.at(1)),
                                  static_cast<UINT>(v.at(2)), static_cast<int>(v.at(3))};
  desktop::changeWindow(mWindows.at(number - 1), [&](desktop::Window& window) {
    (which == "vertical" ? window.vertical : window.horizontal) = bar;
  });
}

void EngineTrace::setPointer(int x, int y) {
  SetCursorPos(x, y);
}

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
void EngineTrace::addWindow(std::istream&) {}
void EngineTrace::setBar(std::istream&) {}
void EngineTrace::setPointer(int, int) {}
std::vector<std::string> EngineTrace::barPositions() {
  return {};
}
void EngineTrace::takeWindowNotes() {}

#endif

TEST_P(EngineTrace, DoesAsWorkedOut) {
  for (const Line& line : GetParam().lines) {
    SCOPED_TRACE(GetParam().file + ":" + std::to_string(line.number) + ": " + line.text);
    play(line.text);
    if (HasFailure())
      return; // what follows would differ too
  }
}

TEST(EngineTraces, AreThere) {
  EXPECT_GT(readCases("engine.trace").size(), 50U);
  EXPECT_GT(readCases("scroll.trace").size(), 30U);
}

INSTANTIATE_TEST_SUITE_P(Engine, EngineTrace, testing::ValuesIn(readCases("engine.trace")), testName);
#ifndef _WIN32
INSTANTIATE_TEST_SUITE_P(Scroll, EngineTrace, testing::ValuesIn(readCases("scroll.trace")), testName);
#endif

} // namespace
