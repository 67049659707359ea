#ifndef LOG_FIXTURE_H
#define LOG_FIXTURE_H

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "logging.h"
#include "temp_folder.h"

/// The global log with a folder of its own and all types on. The log is off after the test. The folder is the
/// current one meanwhile, so that even a log with a wrong path leaves its file there.
class LogFixture : public testing::Test {
protected:
  using Texts = std::vector<std::string>;

  LogFixture() {
    std::filesystem::current_path(mFolder.native());
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
    std::filesystem::current_path(mFolderBefore);
  }

  /// Writes a record. Returns whether the gate let it through.
  static bool record(const std::string& text, int type = INF, const char* file = "file.cpp") {
    if (!gLogging.beginRecord(type, file, Util::logPrefix(file, 1, "Class", "method")))
      return false;
    gLogging << text << LOG_MAGIC;
    return true;
  }

  std::string bytes(const std::string& name = "log.txt") const { return mFolder.read(name); }
  Texts lines(const std::string& name = "log.txt") const {
    Texts all;
    std::istringstream text(bytes(name));
    for (std::string line; std::getline(text, line);)
      all.push_back(line);
    return all;
  }
  /// Returns the text after the columns of a record.
  static std::string textOf(const std::string& line) {
    return line.size() < kTextColumn ? "no record: " + line : line.substr(kTextColumn);
  }
  /// Returns the texts of the records after the first header.
  Texts texts(const std::string& name = "log.txt") const {
    Texts all = lines(name);
    if (all.size() < kHeaderLines)
      return {"no header"};
    all.erase(all.begin(), all.begin() + kHeaderLines);
    for (std::string& line : all)
      line = textOf(line);
    return all;
  }

  static constexpr std::size_t kHeaderLines = 5;
  // As long as the thread's id has six digits at most.
  static constexpr std::size_t kTextColumn = 12 + 1 + 3 + 1 + 6 + 1 + 16 + 2 + 4 + 2 + 32 + 2;

  const std::filesystem::path mFolderBefore = std::filesystem::current_path();
  rig::TempFolder mFolder;
  LogPars mPars;
};

#endif
