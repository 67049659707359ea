// A process that works until it is killed.
//
//   endurance_child settings
//     loads the settings of USERPROFILE, turns a toggle, saves a millisecond later
//   endurance_child log FOLDER MAXSIZE [COUNT]
//     writes records to FOLDER/log.txt, so many or without end

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "logging.h"
#include "settings.h"

namespace {

/// Says on standard output that the work has begun.
void sayReady() {
  std::puts("ready");
  std::fflush(stdout);
}

void saveSettings() {
  {
    Settings settings;
    settings.mToggleRotationAxis = !settings.mToggleRotationAxis;
    sayReady();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  std::this_thread::sleep_for(std::chrono::seconds(10));
}

void writeLog(const std::string& folder, std::int32_t maxSize, long count) {
  LogPars pars;
  pars.mSettingsDirPath = folder;
  pars.mLogFile = "log.txt";
  pars.mMaxSize = maxSize;
  pars.mIsCreation = false;
  gLogging.init(pars);
  sayReady();
  for (long i = 0; i != count; ++i)
    OV_LOG(INF, "Child", "Child::writeLog",
           "record " << i << std::string(static_cast<std::size_t>(i % 37), 'x') << " end");
}

} // namespace

int main(int argc, char** argv) {
  const std::string work = argc > 1 ? argv[1] : "";
  if (work == "settings")
    saveSettings();
  else if (work == "log" && argc > 3)
    writeLog(argv[2], std::atoi(argv[3]), argc > 4 ? std::atol(argv[4]) : -1);
  return 0;
}
