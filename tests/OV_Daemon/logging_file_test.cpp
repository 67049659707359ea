// Where the log's records go: its file, the backup, the console.

#include <iostream>

#include "log_fixture.h"
#include "stream_capture.h"

namespace {

class LoggingFile : public LogFixture {
protected:
  void start(int maxSize) {
    mPars.mMaxSize = maxSize;
    gLogging.init(mPars);
  }
  /// Writes a record that makes the file that large.
  void fillTo(std::size_t size) {
    ASSERT_TRUE(record(std::string(size - bytes().size() - kTextColumn - 1, 'x')));
    ASSERT_EQ(size, bytes().size());
  }
};

std::string headerOf(const std::string& logFile) {
  const std::string rule(90, '-');
  return rule + "\nOrvane logfile '" + logFile + "' opened at " + Util::getDate() + "\n" + rule +
         "\n"
         "    Time    |Typ|  TID |      File      | Line|        Class And Method         | LogText\n"
         "------------+---+------+----------------+-----+---------------------------------+---------\n";
}

TEST_F(LoggingFile, StartsWithHeaderAndAppends) {
  mFolder.write("log.txt", "old\n");
  gLogging.init(mPars);
  EXPECT_EQ("old\n" + headerOf("log.txt"), bytes());
  ASSERT_TRUE(record("first"));
  const std::string before = bytes(); // flushed
  EXPECT_EQ("first\n", before.substr(before.size() - 6));
  gLogging.init(gLogging);
  EXPECT_EQ(before + headerOf("log.txt"), bytes());
}

TEST_F(LoggingFile, InitTakesAllParameters) {
  gLogging.init(mPars);
  ASSERT_TRUE(record("one"));
  mPars.mSectionName = "OTHER";
  mPars.mLogFile = "other.txt";
  mPars.mIsLogToCnsl = true;
  gLogging << LOG_HEX_DUMP;
  rig::StreamCapture out(std::cout);
  gLogging.init(mPars);
  EXPECT_EQ(mPars.dump(2), gLogging.dump(2));
  ASSERT_TRUE(record("two"));
  EXPECT_EQ(Texts{"one"}, texts());
  EXPECT_EQ(Texts{"two"}, texts("other.txt"));
  EXPECT_EQ(bytes("other.txt"), out.take());
  mPars.mIsLogToFile = false;
  gLogging.init(mPars);
  EXPECT_EQ("", out.take()) << "no header without a file";
  ASSERT_TRUE(record("console"));
  EXPECT_EQ("console\n", textOf(out.take()));
  EXPECT_EQ(Texts{"two"}, texts("other.txt"));
  mPars.mIsLogToFile = true;
  mPars.mLogFile = mFolder.backslashed("no such folder\\log.txt");
  gLogging.init(mPars);
  const std::string report = out.take();
  EXPECT_EQ("|ERR|", report.substr(12, 5));
  EXPECT_EQ("Opening log file '" + mPars.mLogFile + "failed!\n", textOf(report));
  EXPECT_FALSE(gLogging.mIsLogToFile);
}

TEST_F(LoggingFile, PathFollowsFolderAndName) {
  mPars.mLogFile.clear();
  gLogging.init(mPars);
  EXPECT_EQ(headerOf("forgot_to_name_this_file_log.txt"), bytes("forgot_to_name_this_file_log.txt"));
  mPars.mLogFile = mFolder.backslashed("my.log");
  mPars.mSettingsDirPath = "c:\\no such folder";
  gLogging.init(mPars);
  EXPECT_EQ(headerOf(mPars.mLogFile), bytes("my.log"));
}

TEST_F(LoggingFile, RotatesAtTheLimit) {
  start(1); // 1000 bytes
  mFolder.write("log.txt", "");
  fillTo(600);
  mFolder.write("log.txt", ""); // a file that someone empties is counted from there
  fillTo(600);
  std::ofstream(mFolder.native("log.txt"), std::ios::app)
      << std::string(399, 'o'); // and so is what others add
  ASSERT_TRUE(record("below the limit"));
  EXPECT_FALSE(mFolder.exists("log.bak"));
  ASSERT_TRUE(record("rotates"));
  EXPECT_EQ("below the limit", textOf(lines("log.bak").back().substr(399)));
  EXPECT_EQ(Texts{"rotates"}, texts());
  fillTo(1000);
  ASSERT_TRUE(record("rotates again"));
  EXPECT_EQ("rotates", texts("log.bak").front()) << "the old backup is replaced";
  EXPECT_EQ(Texts{"rotates again"}, texts());
}

TEST_F(LoggingFile, LimitWrapsAt32Bits) {
  start(4294968); // times 1000 is 2^32 + 704
  ASSERT_TRUE(record(std::string(704, 'x')));
  ASSERT_TRUE(record("rotates"));
  EXPECT_EQ(Texts{"rotates"}, texts());
  start(2147484); // times 1000 is 2^31 + 352: negative as a signed number
  ASSERT_TRUE(record("rotates too"));
  EXPECT_EQ(Texts{"rotates too"}, texts());
  gLogging.mFileStream->close(); // has the position -1, which reaches no limit
  mFolder.remove("log.bak");
  ASSERT_TRUE(record("lost"));
  EXPECT_FALSE(mFolder.exists("log.bak"));
}

TEST_F(LoggingFile, LastDotOfPathStartsExtension) {
  mFolder.makeFolder("dotted.d");
  const char* const kNames[][2] = {{"dotted.d\\log", "dotted.bak"}, {".\\a.b.c", ".\\a.b.bak"}};
  for (const auto& [name, backup] : kNames) {
    mPars.mLogFile = name;
    start(0);
    EXPECT_TRUE(record("one") && record("two"));
    EXPECT_EQ(Texts{"one"}, texts(backup));
    EXPECT_EQ(Texts{"two"}, texts(name));
  }
}

TEST_F(LoggingFile, FailedRotationLeavesConsole) {
  mFolder.makeFolder("full\\log.bak\\content");
  const std::string folder = mFolder.backslashed();
  const struct {
    std::string path, report;
    int code;
  } kCases[] = {{"\\full\\log.txt", "'" + folder + "\\full\\log.bak' couldn't be removed!\n", -2},
                {"\\.", "File '" + folder + "\\.' couldn't be renamed to '" + folder + "\\.bak'!\n", -3},
                {"\\none\\log.txt", "Opening of stream of'" + folder + "\\none\\log.txt' failed!\n", 0}};
  for (const auto& c : kCases) {
    start(0);
    gLogging.mFilePath = folder + c.path;
    rig::StreamCapture out(std::cout);
    gLogging.mIsLogToCnsl = true;
    ASSERT_TRUE(record("one"));
    const std::string first = out.take();
    EXPECT_EQ(c.report, first.substr(0, c.report.size()));
    EXPECT_EQ("one\n", textOf(first.substr(std::min(first.size(), c.report.size()))));
    ASSERT_TRUE(record("two"));
    EXPECT_EQ("two\n", textOf(out.take())) << "no second attempt";
    EXPECT_EQ(c.code, gLogging.backupLogFile());
  }
}

} // namespace
