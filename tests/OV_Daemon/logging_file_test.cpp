#include <iostream>

#include "log_fixture.h"
#include "stream_capture.h"

namespace {

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

TEST_F(LoggingFile, AnotherFileTakesOverWithAllParametersAndTheConsoleGetsWhatTheFileGets) {
  gLogging.init(mPars);
  ASSERT_TRUE(record("one"));
  mPars.mSectionName = "OTHER";
  mPars.mLogFile = "other.txt";
  mPars.mIsLogToCnsl = true;
  gLogging << LOG_HEX_DUMP;
  rig::StreamCapture out(std::cout);
  gLogging.init(mPars);
  EXPECT_EQ(mPars.dump(2), gLogging.dump(2));
  EXPECT_FALSE(gLogging.mIsHexDump);
  ASSERT_TRUE(record("two"));
  EXPECT_EQ(Texts{"one"}, texts());
  EXPECT_EQ(Texts{"two"}, texts("other.txt"));
  EXPECT_EQ(bytes("other.txt"), out.take());
  mPars.mIsLogToFile = false;
  gLogging.init(mPars);
  EXPECT_EQ(nullptr, gLogging.mFileStream);
  EXPECT_EQ("", out.take()) << "no header without a file";
  ASSERT_TRUE(record("console"));
  EXPECT_EQ("console\n", textOf(out.take()));
  EXPECT_EQ(Texts{"two"}, texts("other.txt"));
  // A file that can't be opened leaves the console, too.
  mPars.mIsLogToFile = true;
  mPars.mLogFile = mFolder.backslashed("no such folder\\log.txt");
  gLogging.init(mPars);
  const std::string report = out.take();
  EXPECT_EQ("|ERR|", report.substr(12, 5));
  EXPECT_EQ("Opening log file '" + mPars.mLogFile + "failed!\n", textOf(report));
  EXPECT_FALSE(gLogging.mIsLogToFile);
  ASSERT_TRUE(record("goes on"));
  EXPECT_EQ("goes on\n", textOf(out.take()));
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

} // namespace
