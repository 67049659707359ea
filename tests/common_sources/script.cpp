#include "script.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

#ifndef _WIN32
#include "desktop.h"
#endif

std::string scriptPath(const std::string& file) {
  return std::string(OV_FIXTURES) + "/" + file;
}

std::vector<ScriptCase> playableCases(std::initializer_list<const char*> files) {
  static const std::set<std::string> kNeedDesktop = {"window", "timebox", "reader"};
  std::vector<ScriptCase> cases;
  for (const char* const file : files) {
    std::ifstream in(scriptPath(file));
    ScriptLine line;
    while (++line.number, std::getline(in, line.text)) {
      line.text.erase(line.text.find_last_not_of(" \r") + 1);
      if (line.word() == "case")
        cases.push_back({file, line.text.substr(5), {}});
      else if (!line.text.empty() && line.text[0] != '#')
        cases.back().lines.push_back(line);
    }
    if (line.number < 100)
      throw std::runtime_error("can't read " + scriptPath(file));
  }
  const auto needsDesktop = [](const ScriptLine& line) { return kNeedDesktop.count(line.word()) != 0; };
  cases.erase(std::remove_if(cases.begin(), cases.end(),
                             [&](const ScriptCase& c) {
                               return !kHasDesktop &&
                                      std::any_of(c.lines.begin(), c.lines.end(), needsDesktop);
                             }),
              cases.end());
  return cases;
}

void PrintTo(const ScriptCase& c, std::ostream* os) {
  *os << c.file << ": " << c.name;
}

void Script::SetUp() {
  EngineTest::SetUp();
  plugin().mScrollTreeAndList = false;
  mInputs.mPluginP = &plugin();
  rig::home().remove(rig::kMenuReader);
}

void Script::play(const std::string& text) {
  std::istringstream in(text);
  std::string word, rest, of;
  in >> word;
  if (word == "toggle" || word == "entity") // two words
    word += (in >> of, " " + of);
  std::getline(in >> std::ws, rest);
  std::istringstream numbers(rest);
  const std::vector<double> v{std::istream_iterator<double>(numbers), {}};
  const auto whole = [&v](std::size_t i) { return static_cast<int>(v.at(i)); };
  const auto point = [&v](std::size_t i) { return AcGePoint3d(v.at(i), v.at(i + 1), v.at(i + 2)); };
  const bool isOn = rest == "on";
  const auto takeSample = [&] {
    for (std::size_t i = 0; i < 6; ++i)
      mInputs.mSample[i] = static_cast<short>(v.at(i));
    setSample(whole(0), whole(1), whole(2), whole(3), whole(4), whole(5));
  };
  const auto addPolyline = [&] {
    std::vector<AcGePoint3d> points;
    for (std::size_t i = 0; i < v.size(); i += 3)
      points.push_back(point(i));
    host::add(std::make_unique<AcDb3dPolyline>(points, false));
  };
  const std::map<std::string, std::function<void()>> words = {
      {"view",
       [&] {
         host::view() = {point(0), point(3), point(6).asVector(),
                         v.at(9),  v.at(10), rest.find("perspective") != std::string::npos};
       }},
      {"rotation",
       [&] {
         proxy().setRotMode(whole(0));
         mInputs.mRotation = model::rotationValues(whole(0), false);
       }},
      {"threshold", [&] { plugin().mMinThreshold = whole(0); }},
      {"divisors",
       [&] {
         plugin().mTraSensBase = proxy().mTraSensBase = whole(0);
         plugin().mRotSensBase = proxy().mRotSensBase = whole(1);
       }},
      {"tab",
       [&] {
         host::setVariable("tilemode", static_cast<short>(whole(0)));
         host::setVariable("cvport", static_cast<short>(whole(1)));
       }},
      {"layout",
       [&] {
         host::layout() = {v.at(0), v.at(1), v.at(2), {v.at(3), v.at(4)}};
       }},
      {"select",
       [&] {
         host::selectNumbers({v.begin(), v.end()});
       }},
      {"pointer", [&] { SetCursorPos(whole(0), whole(1)); }},
      {"mark",
       [&] {
         AcDbHostRecord& record = host::entity(whole(0))->mHost;
         record.cannotBeOpened = rest.find("closed") != std::string::npos;
         record.refusesTransform = rest.find("locked") != std::string::npos;
       }},
      {"toggle center", [&] { plugin().mToggleRotationCenter = isOn; }},
      {"toggle axis", [&] { plugin().mToggleRotationAxis = isOn; }},
      {"toggle scroll", [&] { plugin().mScrollTreeAndList = isOn; }},
      {"toggle objects", [&] { proxy().mObjectMoveMode = isOn; }},
      {"toggle valid", [&] { host::setViewValid(isOn); }},
      {"entity line", [&] { host::add(rig::line(point(0), point(3))); }},
      {"entity point", [&] { host::add(std::make_unique<AcDbPoint>(point(0))); }},
      {"entity circle",
       [&] { host::add(std::make_unique<AcDbCircle>(point(0), point(3).asVector(), v.at(6))); }},
      {"entity poly", addPolyline},
      {"macro", [&] { proxy().mMenuEntries.push_back(rest); }},
      {"menu", [&] { proxy().mMenuIsLoaded = rest == "loaded"; }},
      {"key", [&] { plugin().mPendingKey = whole(0); }},
      {"special", [&] { plugin().mPendingSpecial = whole(0); }},
      {"sample", takeSample},
      {"timebox", [&] { proxy().mMaxContMoveTime = static_cast<std::uint32_t>(v.at(0)); }},
      {"zoomall", [&] { proxy().mZoomAllAfterView = isOn; }},
      {"int3d", [&] { proxy().mUseInt3dIntrfce = isOn; }},
      {"folder",
       [&] {
         plugin().mApplicationsDirPath =
             rig::home().backslashed(rest == "gone" ? "gone" : "Orvaner/Applications");
       }},
      {"pass",
       [&] {
         takeSample();
         mIsHandled = proxy().handleDeviceCap();
       }},
      {"keys", [&] { proxy().handleDeviceKeys(); }},
      {"tick", [&] { TimerProc(nullptr, WM_TIMER, 0, 0); }},
      {"start", [&] { proxy().StartDotNETPlugin(); }},
      {"window", [&] { addWindow(rest); }},
      {"bar", [&] { setBar(rest); }},
      {"reader", [&] { setReader(rest); }},
  };
  const auto found = words.find(word);
  ASSERT_NE(found, words.end()) << "unknown word";
  found->second();
}

#ifndef _WIN32

void Script::addWindow(const std::string& text) {
  std::istringstream in(text);
  std::size_t parent = 0;
  int left = 0, top = 0, width = 0, height = 0;
  std::string name, shown;
  in >> parent >> name >> left >> top >> width >> height >> shown;
  desktop::Window window;
  window.className.assign(name.begin(), name.end());
  window.rect = desktop::rectangle(left, top, width, height);
  window.parent = parent == 0 ? nullptr : mWindows.at(parent - 1);
  window.isVisible = shown == "shown";
  mWindows.push_back(desktop::addWindow(window));
}

void Script::setBar(const std::string& text) {
  std::istringstream in(text);
  std::size_t number = 0;
  std::string which;
  desktop::ScrollBar bar;
  in >> number >> which >> bar.min >> bar.max >> bar.page >> bar.position;
  desktop::changeWindow(mWindows.at(number - 1), [&](desktop::Window& window) {
    (which == "vertical" ? window.vertical : window.horizontal) = bar;
  });
}

void Script::setReader(const std::string& place) {
  rig::home().remove(rig::kMenuReader);
  if (place == "here")
    rig::home().write(rig::kMenuReader, "reads menus");
  const std::string module = place == "nowhere" ? "plug-in.arx" : rig::home().backslashed("plug-in.arx");
  desktop::setModulePath(std::wstring(module.begin(), module.end()));
}

Values Script::barPositions() const {
  Values positions;
  for (std::size_t i = 0; i < mWindows.size(); ++i) {
    const desktop::Window window = desktop::window(mWindows[i]);
    const std::string name = "at " + std::to_string(i + 1);
    if (window.vertical)
      positions.emplace_back(name + " vertical", std::to_string(window.vertical->position));
    if (window.horizontal)
      positions.emplace_back(name + " horizontal", std::to_string(window.horizontal->position));
  }
  return positions;
}

#else

void Script::addWindow(const std::string&) {}
void Script::setBar(const std::string&) {}
void Script::setReader(const std::string&) {}
Values Script::barPositions() const {
  return {};
}

#endif
