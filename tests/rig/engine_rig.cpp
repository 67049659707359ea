#include "engine_rig.h"

#include <algorithm>
#include <cstdio>
#include <iomanip>
#include <sstream>

#include "calls.h"
#include "environment.h"
#include "logging.h"
#include "motion/motion_state.h"
#include "util.h"

#ifndef _WIN32
#include "desktop.h"
#endif

namespace rig {

TempFolder& home() {
  static TempFolder folder;
  return folder;
}

namespace {

constexpr char kLogFile[] = "Orvaner/autocad_addin_log.txt";

} // namespace

void useOwnHome() {
  setEnvironment("USERPROFILE", home().native());
  home().makeFolder("Orvaner");
  home().makeFolder("Orvaner/Applications");
}

std::string settingsText(const std::vector<std::pair<std::string, std::string>>& changes) {
  static const std::pair<const char*, const char*> kValues[] = {{"name", "AutoCAD Plug-in"},
                                                                {"version", "2.9.0"},
                                                                {"transSensBase", "20000"},
                                                                {"rotSensBase", "10000"},
                                                                {"minThreshold", "0"},
                                                                {"maxContMoveTime", "500"},
                                                                {"toggleRotationCenter", "on"},
                                                                {"toggleRotationAxis", "off"},
                                                                {"scrollTreeAndList", "on"},
                                                                {"useInt3dIntrfce", "off"},
                                                                {"logFile", "autocad_addin_log.txt"},
                                                                {"maxSize", "50000"},
                                                                {"logToFile", "on"},
                                                                {"logToCnsl", "off"},
                                                                {"warning", "on"},
                                                                {"creation", "on"},
                                                                {"trace", "on"},
                                                                {"devcom", "on"},
                                                                {"intcom", "on"},
                                                                {"info", "on"},
                                                                {"debug", "on"},
                                                                {"tmp", "on"},
                                                                {"fileToLog", ""}};
  std::string text = "[PROGRAM]\n";
  for (const auto& [key, value] : kValues) {
    const std::string name = key;
    const auto change = std::find_if(changes.begin(), changes.end(),
                                     [&name](const auto& candidate) { return candidate.first == name; });
    if (name == "logFile")
      text += "\n[LOGGING]\n";
    text += "\t" + name + " = " + (change == changes.end() ? value : change->second) + "\n";
  }
  return text;
}

std::size_t logSize() {
  std::error_code error;
  const auto size = std::filesystem::file_size(home().native(kLogFile), error);
  return error ? 0 : static_cast<std::size_t>(size);
}

std::string logText(std::size_t from) {
  std::ifstream file(home().native(kLogFile), std::ios::binary);
  file.seekg(static_cast<std::streamoff>(from));
  return std::string(std::istreambuf_iterator<char>(file), {});
}

std::vector<std::string> records(std::size_t from) {
  constexpr std::size_t kTypeColumn = 13;
  constexpr std::size_t kThreadColumn = 17;
  constexpr std::size_t kFileColumn = 24;
  constexpr std::size_t kTextColumn = 82;
  std::ostringstream thread;
  thread << std::setw(6) << Util::getThreadId() << '|';
  std::vector<std::string> found;
  std::istringstream lines(logText(from));
  std::string line;
  while (std::getline(lines, line)) {
    if (line.size() < kTextColumn || line[12] != '|' ||
        line.compare(kThreadColumn, thread.str().size(), thread.str()) != 0 ||
        line.compare(kFileColumn, 16, "daemon_proxy.cpp") == 0)
      continue;
    found.push_back(line.substr(kTypeColumn, 3) + " " + line.substr(kTextColumn));
  }
  return found;
}

host::ViewState viewFrom(AcGePoint3d eye, AcGePoint3d target, AcGeVector3d up, double width, double height,
                         bool perspective) {
  host::ViewState state;
  state.position = eye;
  state.target = target;
  state.up = up;
  state.fieldWidth = width;
  state.fieldHeight = height;
  state.perspective = perspective;
  return state;
}

namespace {

std::string threeNumbers(double x, double y, double z, int digits) {
  std::string all;
  for (const double value : {x, y, z}) {
    char number[64];
    std::snprintf(number, sizeof number, "%.*f", digits, value);
    const std::string trimmed = number;
    const bool isZero = trimmed.find_first_not_of("-0.") == std::string::npos;
    all += (all.empty() ? "" : " ") + (isZero && trimmed[0] == '-' ? trimmed.substr(1) : trimmed);
  }
  return all;
}

} // namespace

std::string text(const AcGePoint3d& p, int digits) {
  return threeNumbers(p.x, p.y, p.z, digits);
}

std::string text(const AcGeVector3d& v, int digits) {
  return threeNumbers(v.x, v.y, v.z, digits);
}

std::unique_ptr<AcDbLine> line(AcGePoint3d start, AcGePoint3d end) {
  return std::make_unique<AcDbLine>(start, end);
}

} // namespace rig

namespace {

std::unique_ptr<OvAutoCad> gPluginP;
bool gHasOwnSettings = false;

/// Ends the engine before the home folder goes with the program.
class StopAtEnd : public ::testing::Environment {
public:
  void TearDown() override { gPluginP.reset(); }
};

const ::testing::Environment* const gStopAtEnd = ::testing::AddGlobalTestEnvironment(new StopAtEnd);

void freshSurroundings() {
  calls::clear();
  host::reset();
#ifndef _WIN32
  desktop::reset();
  desktop::holdClock();
  desktop::setTickStep(1); // loops that wait for the clock end
#endif
}

} // namespace

void EngineTest::restart(const std::vector<std::pair<std::string, std::string>>& settingsChanges) {
  gPluginP.reset();
  rig::useOwnHome();
  rig::home().remove(rig::kMenuFile);
  rig::home().write(rig::kSettingsFile, rig::settingsText(settingsChanges));
  devlink_twin::reset();
  gPluginP = std::make_unique<OvAutoCad>();
  gHasOwnSettings = !settingsChanges.empty();
}

void EngineTest::stop() {
  gPluginP.reset();
}

void EngineTest::SetUp() {
  freshSurroundings();
  if (!gPluginP || gHasOwnSettings) {
    restart();
    freshSurroundings();
  }
  OvAutoCad& p = plugin();
  setSample(0, 0, 0);
  p.mPendingKey = -1;
  p.mPendingSpecial = 0;
  p.mToggleRotationCenter = true;
  p.mToggleRotationAxis = false;
  p.mScrollTreeAndList = true;
  p.mMinThreshold = 0;
  AutoCadProxy& e = proxy();
  e.mViewMode = 0;
  e.mCapIsMoving = false;
  e.mIsDocLocked = false;
  e.mObjectMoveMode = false;
  e.mMenuIsLoaded = false;
  e.setRotMode(0);
  e.mZoomAllAfterView = false;
  e.mModes.publish({});
  e.mMenuEntries.clear();
  motion::selCenterPoint = AcGePoint3d(0, 0, 0);
  motion::selAxisVector = AcGeVector3d(0, 0, 0);
  motion::selCenterValid = false;
  motion::selAxisValid = false;
  mLogStart = rig::logSize();
}

void EngineTest::TearDown() {
  calls::clear();
  const host::Held held = host::held();
  EXPECT_EQ(held.selectionSets, 0);
  EXPECT_EQ(held.openForRead, 0);
  EXPECT_EQ(held.openForWrite, 0);
  EXPECT_EQ(host::viewCounts().nonFiniteCalls, 0);
}

OvAutoCad& EngineTest::plugin() {
  return *gPluginP;
}

AutoCadProxy& EngineTest::proxy() {
  return *gPluginP->mAutoCadProxyP;
}

void EngineTest::setSample(int x, int y, int z, int a, int b, int c) {
  OvAutoCad& p = plugin();
  p.mCapX = static_cast<std::int16_t>(x);
  p.mCapY = static_cast<std::int16_t>(y);
  p.mCapZ = static_cast<std::int16_t>(z);
  p.mCapA = static_cast<std::int16_t>(a);
  p.mCapB = static_cast<std::int16_t>(b);
  p.mCapC = static_cast<std::int16_t>(c);
}

bool EngineTest::pass(int x, int y, int z, int a, int b, int c) {
  setSample(x, y, z, a, b, c);
  return proxy().handleDeviceCap();
}

void EngineTest::release() {
  pass(0, 0, 0);
}

std::vector<std::string> EngineTest::takeRecords() {
  const std::vector<std::string> found = rig::records(mLogStart);
  mLogStart = rig::logSize();
  return found;
}
