#include <iostream>

#include "log_fixture.h"
#include "stream_capture.h"

#ifndef _WIN32
#include "file_limit.h"
#endif

namespace {

using Texts = std::vector<std::string>;

class LoggingFile : public LogFixture {};

std::string headerOf(const std::string& logFile) {
  const std::string rule(90, '-');
  return rule + "\nOrvane logfile '" + logFile + "' opened at " + Util::getDate() + "\n" + rule +
         "\n"
         "    Time    |Typ|  TID |      File      | Line|        Class And Method         | LogText\n"
         "------------+---+------+----------------+-----+---------------------------------+---------\n";
}

TEST_F(LoggingFile, BeginsWithAHeaderAndAppends) {
  mFolder.write("log.txt", "what was there\n");
  rig::StreamCapture out(std::cout);
  gLogging.init(mPars);
  EXPECT_EQ(mFolder.backslashed("log.txt"), gLogging.mFilePath);
  EXPECT_EQ("what was there\n" + headerOf("log.txt"), bytes());
  ASSERT_TRUE(record("first")); // on disk when its statement is over
  const std::string before = bytes();
  EXPECT_EQ("first\n", before.substr(before.size() - 6));
  gLogging.init(gLogging);
  EXPECT_EQ(before + headerOf("log.txt"), bytes());
  ASSERT_TRUE(record("second"));
  EXPECT_EQ("second", textOf(lines().back()));
  EXPECT_EQ("", out.take());
}

TEST_F(LoggingFile, TakesOverAllParametersAndForgetsAHexDump) {
  mPars.mSectionName = "OTHER";
  mPars.mExclFileToLog = "file.cpp";
  mPars.mIsWarning = false;
  gLogging << LOG_HEX_DUMP;
  gLogging.init(mPars);
  EXPECT_EQ(mPars.dump(2), gLogging.dump(2));
  EXPECT_FALSE(gLogging.mIsHexDump);
}

TEST_F(LoggingFile, AnotherFileTakesOverFromTheFirst) {
  gLogging.init(mPars);
  ASSERT_TRUE(record("one"));
  mPars.mLogFile = "other.txt";
  gLogging.init(mPars);
  ASSERT_TRUE(record("two"));
  EXPECT_EQ(Texts{"one"}, texts());
  EXPECT_EQ(Texts{"two"}, texts("other.txt"));
  mPars.mIsLogToFile = false;
  gLogging.init(mPars);
  EXPECT_EQ(nullptr, gLogging.mFileStream);
  ASSERT_TRUE(record("nowhere"));
  EXPECT_EQ(Texts{"two"}, texts("other.txt"));
}

TEST_F(LoggingFile, WithoutANameItTakesOneAndWithAFolderItKeepsTheFolder) {
  mPars.mLogFile.clear();
  gLogging.init(mPars);
  EXPECT_EQ(headerOf("forgot_to_name_this_file_log.txt"), bytes("forgot_to_name_this_file_log.txt"));
  mFolder.makeFolder("else where");
  mPars.mLogFile = mFolder.backslashed("else where\\my.log");
  mPars.mSettingsDirPath = "c:\\no such folder";
  gLogging.init(mPars);
  EXPECT_EQ(mPars.mLogFile, gLogging.mFilePath);
  EXPECT_EQ(headerOf(mPars.mLogFile), bytes("else where\\my.log"));
}

TEST_F(LoggingFile, OneThatCantBeOpenedLeavesTheConsole) {
  mPars.mLogFile = mFolder.backslashed("no such folder\\log.txt");
  mPars.mIsLogToCnsl = true;
  rig::StreamCapture out(std::cout);
  gLogging.init(mPars);
  const std::string report = out.take();
  EXPECT_EQ("|ERR|", report.substr(12, 5));
  EXPECT_EQ("Opening log file '" + mPars.mLogFile + "failed!\n", textOf(report));
  EXPECT_FALSE(gLogging.mIsLogToFile);
  ASSERT_TRUE(record("goes on"));
  EXPECT_EQ("goes on\n", textOf(out.take()));
}

TEST_F(LoggingFile, TheConsoleGetsTheHeaderWithTheFileAndNoneWithoutIt) {
  mPars.mIsLogToCnsl = true;
  rig::StreamCapture out(std::cout);
  gLogging.init(mPars);
  ASSERT_TRUE(record("x"));
  EXPECT_EQ(bytes(), out.take());
  mPars.mIsLogToFile = false;
  gLogging.init(mPars);
  EXPECT_EQ("", out.take());
  ASSERT_TRUE(record("y"));
  EXPECT_EQ("y\n", textOf(out.take()));
}

TEST_F(LoggingFile, OthersReadItWhileItIsWritten) {
  gLogging.init(mPars);
  std::ifstream reader(mFolder.native("log.txt"), std::ios::binary);
  const std::string before(std::istreambuf_iterator<char>(reader), {});
  EXPECT_EQ(headerOf("log.txt"), before);
  ASSERT_TRUE(record("while it is read"));
  reader.clear();
  reader.seekg(static_cast<std::streamoff>(before.size()));
  const std::string grown(std::istreambuf_iterator<char>(reader), {});
  EXPECT_EQ("while it is read\n", textOf(grown));
}

TEST_F(LoggingFile, DumpsAllFields) {
  LogPars pars;
  pars.mSettingsDirPath = "c:\\folder";
  pars.mMaxSize = -7;
  pars.mExclFileToLog = "only.cpp";
  EXPECT_EQ("      mSectionName: LOGGING\n"
            "  mSettingsDirPath: c:\\folder\n"
            "          mLogFile: autocad_addin_log.txt\n"
            "          mMaxSize: -7\n"
            "      mIsLogToFile: 1\n"
            "      mIsLogToCnsl: 0\n"
            "        mIsWarning: 0\n"
            "       mIsCreation: 1\n"
            "          mIsTrace: 0\n"
            "         mIsDevCom: 0\n"
            "         mIsIntCom: 0\n"
            "           mIsInfo: 1\n"
            "          mIsDebug: 0\n"
            "            mIsTmp: 0\n"
            "    mExclFileToLog: only.cpp",
            pars.dump(2));
}

#ifndef _WIN32

TEST_F(LoggingFile, AFullDiskLosesRecordsAndLaterOnesComeWhole) {
  gLogging.init(mPars);
  ASSERT_TRUE(record("before"));
  const std::string before = bytes();
  {
    const FileLimit limit(before.size());
    ASSERT_TRUE(record("lost"));
    ASSERT_TRUE(record("lost, too"));
  }
  EXPECT_EQ(before, bytes());
  ASSERT_TRUE(record("after"));
  EXPECT_EQ((Texts{"before", "after"}), texts());
  {
    const FileLimit limit(bytes().size() + 20);
    ASSERT_TRUE(record("has room for its first columns"));
    ASSERT_TRUE(record("has none"));
  }
  // The torn line has no end of its own; the next record doesn't continue it.
  ASSERT_TRUE(record("a line of its own"));
  ASSERT_TRUE(record("last"));
  const std::vector<std::string> all = records();
  ASSERT_EQ(5u, all.size());
  EXPECT_EQ(20u, all[2].size());
  EXPECT_EQ("a line of its own", textOf(all[3]));
  EXPECT_EQ("last", textOf(all[4]));
}

#endif

} // namespace
