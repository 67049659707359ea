#include "engine_rig.h"

#include <iomanip>
#include <sstream>

#include "call_log.h"
#include "environment.h"
#include "logging.h"
#include "util.h"

#ifndef _WIN32
#include "desktop.h"
#endif

namespace rig {

constexpr char kLogFile[] = "Orvaner/autocad_addin_log.txt";

TempFolder& home() {
  static TempFolder folder;
  return folder;
}

void useOwnHome() {
  setEnvironment("USERPROFILE", home().native());
  home().makeFolder("Orvaner");
  home().makeFolder("Orvaner/Applications");
}

void freshSurroundings() {
  call_log::clear();
  host::reset();
#ifndef _WIN32
  desktop::reset();
  desktop::holdClock();
  desktop::setTickStep(1); // loops that wait for the clock end
#endif
}

std::string settingsText(const std::vector<std::pair<std::string, std::string>>& changes) {
  std::string text =
      "[PROGRAM]\nname=AutoCAD Plug-in\nversion=2.9.0\ntransSensBase=20000\nrotSensBase=10000\n"
      "minThreshold=0\nmaxContMoveTime=500\ntoggleRotationCenter=on\ntoggleRotationAxis=off\n"
      "scrollTreeAndList=on\nuseInt3dIntrfce=off\n\n[LOGGING]\nlogFile=autocad_addin_log.txt\n"
      "maxSize=50000\nlogToFile=on\nlogToCnsl=off\nwarning=on\ncreation=on\ntrace=on\ndevcom=on\n"
      "intcom=on\ninfo=on\ndebug=on\ntmp=on\nfileToLog=\n";
  for (const auto& [key, value] : changes) {
    const std::size_t start = text.find("\n" + key + "=") + key.size() + 2;
    text.replace(start, text.find('\n', start) - start, value);
  }
  return text;
}

std::size_t logSize() {
  return home().exists(kLogFile)
             ? static_cast<std::size_t>(std::filesystem::file_size(home().native(kLogFile)))
             : 0;
}

std::vector<Record> allRecords(std::size_t from) {
  constexpr std::size_t kTextColumn = 82;
  std::vector<Record> found;
  std::ifstream lines(home().native(kLogFile), std::ios::binary);
  lines.seekg(static_cast<std::streamoff>(from));
  for (std::string line; std::getline(lines, line);)
    if (line.size() >= kTextColumn && line[12] == '|') {
      EXPECT_EQ(line.substr(kTextColumn - 2, 2), "| ") << line;
      found.push_back(
          {line.substr(13, 3), line.substr(17, 6), line.substr(24, 16), line.substr(kTextColumn)});
    }
  return found;
}

std::vector<std::string> records(std::size_t from) {
  std::ostringstream thread;
  thread << std::setw(6) << Util::getThreadId();
  std::vector<std::string> found;
  for (const Record& record : allRecords(from))
    if (record.thread == thread.str() && record.file != "daemon_proxy.cpp")
      found.push_back(record.type + " " + record.text);
  return found;
}

std::unique_ptr<AcDbLine> line(AcGePoint3d start, AcGePoint3d end) {
  return std::make_unique<AcDbLine>(start, end);
}

} // namespace rig

void EngineTest::restart(const std::vector<std::pair<std::string, std::string>>& settingsChanges) {
  mPluginP.reset();
  rig::useOwnHome();
  rig::home().remove(rig::kMenuFile);
  rig::home().write(rig::kSettingsFile, rig::settingsText(settingsChanges));
  fake_devlink::reset();
  mPluginP = std::make_unique<OvAutoCad>();
  mHasOwnSettings = !settingsChanges.empty();
}

void EngineTest::SetUp() {
  rig::freshSurroundings();
  if (!mPluginP || mHasOwnSettings) {
    restart();
    rig::freshSurroundings();
  }
  rig::resetEngine(plugin());
  mLogStart = rig::logSize();
}

void EngineTest::TearDown() {
  call_log::clear();
  const host::Held held = host::held();
  EXPECT_EQ(held.selectionSets + held.openForRead + held.openForWrite, 0);
  EXPECT_EQ(host::nonFiniteCalls(), 0);
}

std::vector<std::string> EngineTest::takeRecords() {
  const std::vector<std::string> found = rig::records(mLogStart);
  mLogStart = rig::logSize();
  return found;
}
