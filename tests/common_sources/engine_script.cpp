#include "engine_script.h"

#include <cctype>
#include <fstream>
#include <sstream>

#ifndef _WIN32
#include "desktop.h"
#endif

namespace {

constexpr std::int32_t kTraSensBase = 20000;
constexpr std::int32_t kRotSensBase = 10000;

AcGePoint3d point(const std::vector<double>& v, std::size_t from = 0) {
  return {v.at(from), v.at(from + 1), v.at(from + 2)};
}

} // namespace

std::string fixturePath(const std::string& file) {
  return std::string(OV_FIXTURES) + "/" + file;
}

std::vector<ScriptCase> readScript(const std::string& file) {
  std::ifstream in(fixturePath(file));
  std::vector<ScriptCase> cases;
  ScriptLine line;
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

std::string caseName(const testing::TestParamInfo<ScriptCase>& info) {
  std::string name;
  for (const char c : info.param.name) {
    if (std::isalnum(static_cast<unsigned char>(c)) != 0)
      name += c;
    else if (!name.empty() && name.back() != '_')
      name += '_';
  }
  return name + "_" + std::to_string(info.index);
}

void PrintTo(const ScriptCase& scriptCase, std::ostream* os) {
  *os << scriptCase.file << ": " << scriptCase.name;
}

std::vector<double> numbersOf(std::istream& in) {
  std::vector<double> values;
  for (double value = 0; in >> value;)
    values.push_back(value);
  return values;
}

void EngineScript::SetUp() {
  EngineTest::SetUp();
  plugin().mScrollTreeAndList = false;
}

void EngineScript::TearDown() {
  proxy().mTraSensBase = kTraSensBase;
  proxy().mRotSensBase = kRotSensBase;
  EngineTest::TearDown();
}

bool EngineScript::passOf(const std::string& text) {
  std::istringstream in(text.substr(text.find(' ')));
  const std::vector<double> s = numbersOf(in);
  EXPECT_EQ(s.size(), 6U);
  const auto axis = [&s](std::size_t i) { return static_cast<int>(s.at(i)); };
  return pass(axis(0), axis(1), axis(2), axis(3), axis(4), axis(5));
}

void EngineScript::set(const std::string& text) {
  std::istringstream in(text);
  std::string word;
  in >> word;
  if (word == "entity") {
    addEntity(in);
  } else if (word == "window") {
    addWindow(in);
  } else if (word == "bar") {
    setBar(in);
  } else if (word == "toggle") {
    std::string name, value;
    in >> name >> value;
    setToggle(name, value == "on");
  } else if (word == "mark") {
    int number = 0;
    std::string mark;
    in >> number >> mark;
    host::setCannotBeOpened(host::entityId(number), mark == "closed");
    host::setRefusesTransform(host::entityId(number), mark == "locked");
  } else {
    setNumbers(word, numbersOf(in), text.find("perspective") != std::string::npos);
  }
}

void EngineScript::setNumbers(const std::string& word, const std::vector<double>& v, bool isPerspective) {
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
    SetCursorPos(whole(0), whole(1));
  } else {
    FAIL() << "unknown word";
  }
}

void EngineScript::setToggle(const std::string& name, bool isOn) {
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

void EngineScript::addEntity(std::istream& in) {
  std::string kind;
  in >> kind;
  const std::vector<double> v = numbersOf(in);
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

#ifndef _WIN32

void EngineScript::addWindow(std::istream& in) {
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

void EngineScript::setBar(std::istream& in) {
  std::size_t number = 0;
  std::string which;
  in >> number >> which;
  const std::vector<double> v = numbersOf(in);
  const desktop::ScrollBar bar = {static_cast<int>(v.at(0)), static_cast<int>(v.at(1)),
                                  static_cast<UINT>(v.at(2)), static_cast<int>(v.at(3))};
  desktop::changeWindow(mWindows.at(number - 1), [&](desktop::Window& window) {
    (which == "vertical" ? window.vertical : window.horizontal) = bar;
  });
}

#else

// The windows of a real desktop are their owners' affair.
void EngineScript::addWindow(std::istream&) {
  FAIL() << "no records of windows here";
}
void EngineScript::setBar(std::istream&) {}

#endif
