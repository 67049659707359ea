#include <cmath>
#include <functional>
#include <iomanip>
#include <iostream>
#include <limits>
#include <random>
#include <regex>
#include <set>
#include <stdexcept>
#include <thread>

#include "log_fixture.h"
#include "stream_capture.h"

#ifndef _WIN32
#include "desktop.h"
#endif

namespace {

class LoggingRecord : public LogFixture {
protected:
  LoggingRecord() { gLogging.init(mPars); }
};

void logFromAMixedPath();

constexpr char kLetters[TMP + 1][4] = {"ERR", "WRN", "CRT", "TRC", "DCM", "ICM", "INF", "DBG", "TMP"};

TEST_F(LoggingRecord, StandsInFixedColumns) {
#ifndef _WIN32
  desktop::setSystemTime(SYSTEMTIME{2026, 11, 0, 22, 9, 5, 43, 807});
#endif
  const int line = __LINE__ + 1;
  OV_LOG(CRT, "Settings", "Settings::Settings", "Text " << 12 << '|' << " of it  ");
  ASSERT_TRUE(record(""));
#ifndef _WIN32
  desktop::setSystemTime(std::nullopt);
#endif
  char head[64];
  std::snprintf(head, sizeof head, "|CRT|%6u|*record_test.cpp|%5d| ", Util::getThreadId(), line);
  const Texts all = records();
  ASSERT_EQ(2u, all.size());
  EXPECT_EQ(head + std::string("Settings::Settings::Settings    | Text 12| of it  "), all[0].substr(12));
  EXPECT_TRUE(std::regex_match(all[0].substr(0, 12), std::regex("\\d\\d:\\d\\d:\\d\\d\\.\\d{3}")));
#ifndef _WIN32
  EXPECT_EQ("09:05:43.807", all[0].substr(0, 12));
#endif
  EXPECT_EQ(kTextColumn, all[1].size());
  EXPECT_EQ("| ", all[1].substr(kTextColumn - 2));
  EXPECT_EQ('\n', bytes().back());
}

TEST_F(LoggingRecord, EachGateLetsItsTypeThroughErrorsHaveNoneAndNoneHoldsTheLock) {
  LogPars& pars = gLogging;
  bool* const kGates[] = {nullptr,        &pars.mIsWarning, &pars.mIsCreation,
                          &pars.mIsTrace, &pars.mIsDevCom,  &pars.mIsIntCom,
                          &pars.mIsInfo,  &pars.mIsDebug,   &pars.mIsTmp};
  for (int open = ERR; open <= TMP; ++open) {
    mFolder.write("log.txt", ""); // the log appends
    for (int type = WRN; type <= TMP; ++type)
      *kGates[type] = type == open;
    for (const int type : {-1, 9, 1 << 30, -(1 << 30)})
      EXPECT_FALSE(record("x", type)) << type;
    // On one thread, a lock that stayed would hold the next record for ever.
    for (int type = ERR; type <= TMP; ++type)
      EXPECT_EQ(type == ERR || type == open, record("x", type)) << kLetters[type];
    const Texts all = lines();
    ASSERT_EQ(open == ERR ? 1u : 2u, all.size());
    EXPECT_EQ("|ERR|", all.front().substr(12, 5));
    EXPECT_EQ(kLetters[open], all.back().substr(13, 3));
  }
}

TEST_F(LoggingRecord, AFilteredRecordNeverEvaluatesItsText) {
  int evaluated = 0;
  const auto text = [&] { return ++evaluated; };
  gLogging.mIsDebug = false;
  OV_LOG(DBG, "Class", "Class::method", text());
  gLogging.mExclFileToLog = "other.cpp";
  OV_LOG(ERR, "Class", "Class::method", text());
  gLogging.mExclFileToLog.clear();
  gLogMagic = 0; // as while the log doesn't exist
  OV_LOG(ERR, "Class", "Class::method", text());
  gLogMagic = LOG_MAGIC;
  EXPECT_EQ(0, evaluated);
  OV_LOG(ERR, "Class", "Class::method", "evaluated " << text());
  EXPECT_EQ(Texts{"evaluated 1"}, texts());
}

TEST_F(LoggingRecord, TheExclusiveFileShutsOutAllOthersEvenTheirErrors) {
  gLogging.mExclFileToLog = "util.cpp";
  gLogging.mIsDebug = false;
  EXPECT_TRUE(record("1", ERR, "util.cpp"));
  EXPECT_TRUE(record("2", INF, "c:\\src\\util.cpp"));
  EXPECT_TRUE(record("3", INF, "/src/util.cpp"));
  EXPECT_TRUE(record("4", INF, "c:\\a/util.cpp"));
  EXPECT_FALSE(record("x", INF, "src/a\\util.cpp")); // a slash goes before any backslash
  EXPECT_FALSE(record("x", ERR, "c:\\src\\cnfg.cpp"));
  EXPECT_FALSE(record("x", ERR, "Util.cpp"));
  EXPECT_FALSE(record("x", ERR, "util.cpp.cpp"));
  EXPECT_FALSE(record("x", DBG, "util.cpp")); // its gate counts all the same
  gLogging.mExclFileToLog = "logging_record_test.cpp";
  OV_LOG(INF, "Class", "Class::method", "5"); // whichever way the compiler writes the path
  EXPECT_EQ((Texts{"1", "2", "3", "4", "5"}), texts());
  gLogging.mExclFileToLog = "place.cpp";
  logFromAMixedPath();
  EXPECT_EQ("|       place.cpp|   70| Class::Class::method            | here", records().back().substr(23));
}

TEST_F(LoggingRecord, PrintsBytesAsATable) {
  const auto table = [this](const std::string& data) {
    recordOf([&data](std::ostream&) { gLogging << LOG_HEX_DUMP << data << " then " << 255; });
    const std::string all = bytes();
    return all.substr(all.rfind("Class::method") + 34);
  };
  const std::string head = "\n       0  1  2  3  4  5  6  7  8  9";
  // The rest of the record goes on in hexadecimal.
  EXPECT_EQ(head + " then ff\n", table(""));
  EXPECT_EQ(head + "\n   0: 41 a 0  then ff\n", table(std::string("A\n\0", 3)));
  EXPECT_EQ(head + "\n   0: 30 31 32 33 34 35 36 37 38 39 \n  10: ffffff80 ffffffff 7f  then ff\n",
            table("0123456789\x80\xFF\x7F"));
  EXPECT_EQ(head + "\n   0: 30 31 32 33 34 35 36 37 38 39  then ff\n", table("0123456789"));
  // Only the string behind the mark, and only in this record.
  recordOf([](std::ostream&) { gLogging << "A" << 31; });
  EXPECT_EQ("A31", textOf(lines().back()));
}

TEST_F(LoggingRecord, ManipulatorsCountForTheWholeOfTheirRecordAndEndWithIt) {
  const struct {
    std::function<void(std::ostream&)> manipulate;
    const char* text;
  } kManipulators[] = {
      {[](std::ostream&) {}, "25ab1.53125"},
      {[](std::ostream& os) { os << std::setw(4); }, "  25ab1.53125"},
      {[](std::ostream& os) { os << std::setfill('.') << std::setw(4); }, "..25ab1.53125"},
      {[](std::ostream& os) { os << std::hex << std::showbase; }, "0x19ab1.53125"},
      {[](std::ostream& os) { os << std::showpos; }, "+25ab+1.53125"},
      {[](std::ostream& os) { os << std::setprecision(3); }, "25ab1.53"},
      {[](std::ostream& os) { os << std::fixed; }, "25ab1.531250"},
      {[](std::ostream& os) { os << std::setfill('*'); }, "25ab1.53125"}, // alone, and without a trace
      {[](std::ostream& os) { os << std::setw(4); }, "  25ab1.53125"},
      {[](std::ostream&) {}, "25ab1.53125"},
  };
  for (const auto& entry : kManipulators) {
    recordOf([&entry](std::ostream& os) {
      entry.manipulate(os);
      os << 25;
      os << "a";
      os << 'b';
      os << 1.53125;
    });
    EXPECT_EQ(entry.text, textOf(lines().back()));
  }
  recordOf([](std::ostream& os) {
    os << std::left << std::setw(3);
    os << "a";
    os << std::setw(3);
    os << 'b';
    os << std::setw(3);
    gLogging << std::string("c") << "|";
  });
  EXPECT_EQ("a  b  c  |", textOf(lines().back()));
}

TEST_F(LoggingRecord, HostLocaleLeavesNumbersPlain) {
  class Dots : public std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Dots));
  OV_LOG(INF, "Class", "Class::method", "renews the stream");
  OV_LOG(INF, "Class", "Class::method", 1234567);
  const std::string dump = mPars.dump(0);
  std::locale::global(before);
  EXPECT_EQ("1234567", texts().back());
  EXPECT_NE(std::string::npos, dump.find("mMaxSize: 50000\n")) << dump;
}

TEST_F(LoggingRecord, FailureLosesItsRecordOnly) {
  const auto thrower = []() -> int { throw std::runtime_error("no text"); };
  EXPECT_NO_THROW(OV_LOG(INF, "Class", "Class::method", "begun " << thrower()));
  recordOf([](std::ostream& os) { os.setstate(std::ios::badbit); }); // as a stream without memory does
  OV_LOG(INF, "Class", "Class::method", "next");
  class Broken : public std::streambuf {};
  Broken broken;
  std::streambuf* const before = std::cout.rdbuf(&broken);
  std::cout.exceptions(std::ios::badbit);
  gLogging.mIsLogToCnsl = true;
  EXPECT_NO_THROW(OV_LOG(INF, "Class", "Class::method", "first " << std::hex));
  gLogging.mIsLogToCnsl = false;
  std::cout.exceptions(std::ios::goodbit);
  std::cout.rdbuf(before);
  std::cout.clear();
  OV_LOG(INF, "Class", "Class::method", "last " << 255);
  EXPECT_EQ((Texts{"next", "first ", "last 255"}), texts());
}

TEST_F(LoggingRecord, ALongOrManyLinedTextGoesOutAsItStands) {
  const std::string large(200000, 'x');
  ASSERT_TRUE(record("two\nlines"));
  ASSERT_TRUE(record(large));
  ASSERT_TRUE(record("small"));
  const Texts all = records();
  ASSERT_EQ(4u, all.size());
  EXPECT_EQ("two", textOf(all[0]));
  EXPECT_EQ("lines", all[1]);
  EXPECT_EQ(large, textOf(all[2]));
  EXPECT_EQ("small", textOf(all[3]));
}

TEST_F(LoggingRecord, LinesOfFourThreadsStayWholeAndTheirTimesRise) {
  constexpr int kThreads = 4, kRecords = 25000;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t] {
      for (int i = 0; i < kRecords; ++i)
        OV_LOG(INF, "Class", "Class::method", t << ' ' << i << " end");
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  const Texts all = records();
  ASSERT_EQ(static_cast<std::size_t>(kThreads * kRecords), all.size());
  int next[kThreads] = {};
  std::set<std::string> ids;
  int falls = 0;
  std::string last = "00:00:00.000";
  for (const std::string& line : all) {
    ASSERT_EQ("|INF|", line.substr(12, 5));
    const auto t = static_cast<std::size_t>(textOf(line)[0] - '0');
    ASSERT_LT(t, std::size_t{kThreads}) << line;
    ASSERT_EQ(std::to_string(t) + ' ' + std::to_string(next[t]++) + " end", textOf(line));
    ids.insert(line.substr(17, 6));
    const std::string time = line.substr(0, 12);
    // For those who test at midnight.
    falls += time < last && !(last.substr(0, 2) == "23" && time.substr(0, 2) == "00");
    last = time;
  }
  EXPECT_EQ(0, falls);
  EXPECT_EQ(std::size_t{kThreads}, ids.size()) << "each under its own id";
}

#ifndef _WIN32

void logFromAFunction() {
  OV_LOG(INF, "Global", "logFromAFunction", "at the end");
}

TEST_F(LoggingRecord, AStatementIsSafeWhileTheStaticsGo) {
  // What was made before a statement ran for the first time goes after all that this first run has made.
  const auto logFromADestructor = [] {
    struct Late {
      ~Late() { logFromAFunction(); }
    };
    static Late late;
    logFromAFunction();
    std::exit(0);
  };
  EXPECT_EXIT(logFromADestructor(), testing::ExitedWithCode(0), "");
  const Texts all = records();
  ASSERT_EQ(3u, all.size());
  EXPECT_EQ(all[0].substr(24), all[1].substr(24));
  EXPECT_EQ("Logging::~Logging(): destructing ...", textOf(all[2]));
}

#endif

TEST_F(LoggingRecord, AnotherLogIsUsableFromItsBirthToItsDeath) {
  rig::StreamCapture out(std::cout);
  gLogMagic = 0;
  {
    Logging log;
    EXPECT_EQ(LOG_MAGIC, gLogMagic);
    EXPECT_EQ("c:\\def_log.txt", log.mLogFile);
    EXPECT_EQ("", log.mFilePath);
    EXPECT_EQ(5000, log.mMaxSize);
    // Errors alone pass before init(), and reach nobody.
    EXPECT_FALSE(log.mIsLogToFile || log.mIsLogToCnsl);
    for (int type = WRN; type <= TMP; ++type)
      EXPECT_FALSE(log.beginRecord(type, "f", "prefix")) << kLetters[type];
    EXPECT_TRUE(log.beginRecord(ERR, "f", "prefix"));
    log << LOG_MAGIC;
    EXPECT_EQ(-1, log.backupLogFile());
  }
  EXPECT_EQ(0, gLogMagic);
  EXPECT_EQ("", out.take());
  gLogMagic = LOG_MAGIC;
  // Its last word went to the log that is still there.
  EXPECT_EQ(Texts{"Logging::~Logging(): destructing ..."}, texts());
}

// Stands last: the compiler takes all that follows for another file.
#line 69 "c:\\common_sources/place.cpp"
void logFromAMixedPath() {
  OV_LOG(INF, "Class", "Class::method", "here");
}

} // namespace
