#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <iostream>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include "file_faults.h"
#include "log_fixture.h"
#include "stream_capture.h"

namespace {

class LoggingRotation : public LogFixture {
protected:
  /// Bytes of a header and no record.
  std::size_t headerSize() const { return bytes().size(); }
};

TEST_F(LoggingRotation, ARecordThatFindsTheLimitReachedIsTheFirstOfTheNewFile) {
  mPars.mMaxSize = 1; // 1000 bytes
  gLogging.init(mPars);
  // One byte below the limit doesn't rotate, and the file may pass the limit by one record.
  ASSERT_TRUE(record(std::string(999 - headerSize() - kTextColumn - 1, 'x')));
  ASSERT_EQ(999u, bytes().size());
  ASSERT_TRUE(record("passes it"));
  EXPECT_FALSE(mFolder.exists("log.bak"));
  ASSERT_TRUE(record("rotates"));
  EXPECT_EQ("passes it", texts("log.bak").back());
  EXPECT_EQ(Texts{"rotates"}, texts());
  // Exactly the limit does, too, and the old backup is gone then.
  ASSERT_TRUE(record(std::string(1000 - bytes().size() - kTextColumn - 1, 'y')));
  ASSERT_EQ(1000u, bytes().size());
  ASSERT_TRUE(record("again"));
  EXPECT_EQ("rotates", texts("log.bak").front());
  EXPECT_EQ(Texts{"again"}, texts());
}

TEST_F(LoggingRotation, AFileThatSomeoneEmptiesBeginsItsCountAnew) {
  mPars.mMaxSize = 1;
  gLogging.init(mPars);
  ASSERT_TRUE(record(std::string(300, 'x')));
  mFolder.write("log.txt", "");
  ASSERT_TRUE(record(std::string(500, 'y')));
  ASSERT_TRUE(record("goes on"));
  EXPECT_FALSE(mFolder.exists("log.bak"));
}

TEST_F(LoggingRotation, CountsWhatOthersAppend) {
  mPars.mMaxSize = 1;
  gLogging.init(mPars);
  for (int i = 0; i < 3; ++i) { // each time below the limit by our own bytes alone
    std::ofstream(mFolder.native("log.txt"), std::ios::app | std::ios::binary) << std::string(200, 'o');
    ASSERT_TRUE(record("ours"));
  }
  ASSERT_FALSE(mFolder.exists("log.bak"));
  ASSERT_TRUE(record("rotates"));
  EXPECT_EQ(Texts{"rotates"}, texts());
}

#ifndef _WIN32
TEST_F(LoggingRotation, APipeHasNoSizeAndStaysWhereItIs) {
  ASSERT_EQ(0, mkfifo(mFolder.native("pipe.txt").c_str(), 0600));
  const int reader = open(mFolder.native("pipe.txt").c_str(), O_RDWR);
  mPars.mLogFile = "pipe.txt";
  mPars.mMaxSize = 0;
  gLogging.init(mPars);
  ASSERT_TRUE(record("one"));
  ASSERT_TRUE(record("two"));
  char bytes[4096] = {};
  EXPECT_GT(read(reader, bytes, sizeof bytes - 1), 0);
  EXPECT_NE(std::string::npos, std::string(bytes).find("| two\n"));
  EXPECT_FALSE(mFolder.exists("pipe.bak"));
  close(reader);
}
#endif

TEST_F(LoggingRotation, TheLimitIsFormedIn32Bits) {
  mPars.mMaxSize = 4294968; // times 1000 is 2^32 + 704
  gLogging.init(mPars);
  ASSERT_TRUE(record(std::string(704, 'x')));
  ASSERT_TRUE(record("rotates"));
  EXPECT_EQ(Texts{"rotates"}, texts());
  mPars.mMaxSize = 2147484; // times 1000 is 2^31 + 352, below zero as a signed number
  gLogging.init(mPars);
  ASSERT_TRUE(record("rotates, too"));
  EXPECT_EQ(Texts{"rotates, too"}, texts());
}

TEST_F(LoggingRotation, TheLastDotOfTheWholePathIsWhereTheBackupsNameEnds) {
  // By relative paths, so that no dot but those given here counts.
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(mFolder.native());
  mFolder.makeFolder("plain");
  mFolder.makeFolder("dotted.d");
  const char* const kNames[][2] = {{"plain\\log", "plain\\log.bak"},
                                   {"plain\\a.b.c", "plain\\a.b.bak"},
                                   {"dotted.d\\log", "dotted.bak"},
                                   {"plain\\x.", "plain\\x.bak"}};
  mPars.mMaxSize = 0;
  for (const auto& [name, backup] : kNames) {
    mPars.mLogFile = name;
    gLogging.init(mPars);
    EXPECT_TRUE(record("one") && record("two"));
    EXPECT_EQ(Texts{"one"}, texts(backup)) << name;
    EXPECT_EQ(Texts{"two"}, texts(name)) << name;
  }
  std::filesystem::current_path(before);
}

TEST_F(LoggingRotation, AFailureIsReportedOnceThenTheConsoleGoesOnUntilTheNextStart) {
  const std::string log = mFolder.backslashed("log.txt"), backup = mFolder.backslashed("log.bak");
  const struct {
    std::function<void()> breakIt;
    int code; // of the rotation
    std::string report;
  } kSteps[] = {
      {[this] { mFolder.makeFolder("log.bak\\content"); }, -2, "'" + backup + "' couldn't be removed!\n"},
      {[] { file_faults::failRename(EACCES); }, -3,
       "File '" + log + "' couldn't be renamed to '" + backup + "'!\n"},
      {[this] { file_faults::afterRename([this] { mFolder.makeFolder("log.txt"); }); }, 0,
       "Opening of stream of'" + log + "' failed!\n"}};
  for (const auto& step : kSteps) {
    SCOPED_TRACE(step.report);
    mPars.mMaxSize = 0;
    gLogging.init(mPars);
    step.breakIt();
    rig::StreamCapture out(std::cout);
    gLogging.mIsLogToCnsl = true;
    ASSERT_TRUE(record("one")); // and the lock is back
    const std::string first = out.take();
    EXPECT_EQ(step.report, first.substr(0, step.report.size()));
    EXPECT_EQ("one\n", textOf(first.substr(std::min(first.size(), step.report.size()))));
    ASSERT_TRUE(record("two"));
    EXPECT_EQ("two\n", textOf(out.take())) << "no second attempt";
    mPars.mMaxSize = 1;
    mFolder.remove("log.txt");
    mFolder.remove("log.bak");
    gLogging.init(mPars);
    ASSERT_TRUE(record("new start"));
    EXPECT_EQ(Texts{"new start"}, texts());
    step.breakIt();
    EXPECT_EQ(step.code, gLogging.backupLogFile());
    EXPECT_EQ(step.report, out.take());
    mFolder.remove("log.txt");
    mFolder.remove("log.bak");
  }
}

} // namespace
