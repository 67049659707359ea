#ifndef LOG_FIXTURE_H
#define LOG_FIXTURE_H

#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "logging.h"
#include "temp_folder.h"

/// The global log with a folder of its own; all types are on. The log is off again after the test.
class LogFixture : public testing::Test {
protected:
  using Texts = std::vector<std::string>;

  LogFixture() {
    mPars.mSettingsDirPath = mFolder.backslashed();
    mPars.mLogFile = "log.txt";
    mPars.mMaxSize = 50000;
    mPars.mIsWarning = mPars.mIsTrace = mPars.mIsDevCom = mPars.mIsIntCom = true;
    mPars.mIsDebug = mPars.mIsTmp = true;
  }
  ~LogFixture() override {
    LogPars off;
    off.mIsLogToFile = off.mIsCreation = off.mIsInfo = false;
    gLogging.init(off);
  }

  /// A record whose text an action writes; gives what the gate said.
  template <class Action>
  static bool recordOf(const Action& write, int type = INF, const char* file = "file.cpp") {
    if (!gLogging.beginRecord(type, file, Util::logPrefix(file, 1, "Class", "method")))
      return false;
    write(*gLogging.mOs);
    gLogging << LOG_MAGIC;
    return true;
  }
  static bool record(const std::string& text, int type = INF, const char* file = "file.cpp") {
    return recordOf([&text](std::ostream& os) { os << text; }, type, file);
  }

  std::string bytes(const std::string& name = "log.txt") const { return mFolder.read(name); }
  Texts lines(const std::string& name = "log.txt") const {
    Texts all;
    std::istringstream text(bytes(name));
    for (std::string line; std::getline(text, line);)
      all.push_back(line);
    return all;
  }
  /// The lines below the first header.
  Texts records(const std::string& name = "log.txt") const {
    const Texts all = lines(name);
    EXPECT_GE(all.size(), kHeaderLines);
    return Texts(all.begin() + kHeaderLines, all.end());
  }
  /// What stands behind the columns.
  static std::string textOf(const std::string& line) {
    return line.size() < kTextColumn ? "no record: " + line : line.substr(kTextColumn);
  }
  Texts texts(const std::string& name = "log.txt") const {
    Texts all;
    for (const std::string& line : records(name))
      all.push_back(textOf(line));
    return all;
  }

  static constexpr std::size_t kHeaderLines = 5;
  // As long as the thread's id has six digits at most.
  static constexpr std::size_t kTextColumn = 12 + 1 + 3 + 1 + 6 + 1 + 16 + 2 + 4 + 2 + 32 + 2;

  rig::TempFolder mFolder;
  LogPars mPars;
};

#endif
