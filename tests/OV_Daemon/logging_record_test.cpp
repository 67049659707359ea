// What a record looks like, and which records are written.

#include <iomanip>
#include <iostream>
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

void logFromMixedPath();

TEST_F(LoggingRecord, HasFixedColumns) {
#ifndef _WIN32
  desktop::setSystemTime(SYSTEMTIME{2026, 11, 0, 22, 9, 5, 43, 7});
#endif
  const int line = __LINE__ + 1;
  OV_LOG(CRT, "Settings", "Settings::Settings", "Text " << 12 << "|\n of it  ");
#ifndef _WIN32
  desktop::setSystemTime(std::nullopt);
  EXPECT_EQ("09:05:43.007", lines()[kHeaderLines].substr(0, 12));
#endif
  char rest[128];
  std::snprintf(rest, sizeof rest, "|CRT|%6u|*record_test.cpp|%5d| %-32s| Text 12|\n of it  \n",
                Util::getThreadId(), line, "Settings::Settings::Settings");
  const std::string all = bytes();
  EXPECT_EQ(rest, all.substr(all.rfind("|CRT|")));
}

TEST_F(LoggingRecord, GateOpensForItsType) {
  LogPars& pars = gLogging;
  bool* const kGates[] = {nullptr,        &pars.mIsWarning, &pars.mIsCreation,
                          &pars.mIsTrace, &pars.mIsDevCom,  &pars.mIsIntCom,
                          &pars.mIsInfo,  &pars.mIsDebug,   &pars.mIsTmp};
  const std::string kNames[] = {"ERR", "WRN", "CRT", "TRC", "DCM", "ICM", "INF", "DBG", "TMP"};
  for (int open = ERR; open <= TMP; ++open) {
    for (int type = WRN; type <= TMP; ++type)
      *kGates[type] = type == open;
    for (const int type : {-1, 9, 1 << 30, -(1 << 30)})
      EXPECT_FALSE(record("x", type)) << type;
    for (int type = ERR; type <= TMP; ++type) // a lock that isn't released stops the test here
      EXPECT_EQ(type == ERR || type == open, record("x", type)) << kNames[type];
    EXPECT_EQ(kNames[open], lines().back().substr(13, 3));
  }
}

TEST_F(LoggingRecord, FilteredRecordSkipsItsText) {
  int evaluated = 0;
  const auto text = [&] { return ++evaluated; };
  gLogging.mIsDebug = false;
  OV_LOG(DBG, "Class", "Class::method", text());
  gLogging.mExclFileToLog = "other.cpp";
  OV_LOG(ERR, "Class", "Class::method", text());
  gLogging.mExclFileToLog.clear();
  gLogMagic = 0; // there is no log
  OV_LOG(ERR, "Class", "Class::method", text());
  gLogMagic = LOG_MAGIC;
  OV_LOG(ERR, "Class", "Class::method", "evaluated " << text());
  EXPECT_EQ(Texts{"evaluated 1"}, texts());
}

TEST_F(LoggingRecord, ExclusiveFileFiltersOthers) {
  gLogging.mExclFileToLog = "util.cpp";
  gLogging.mIsDebug = false;
  for (const char* const file : {"util.cpp", "c:\\src\\util.cpp", "/src/util.cpp", "c:\\a/util.cpp"})
    EXPECT_TRUE(record("1", INF, file)) << file;
  // The last slash counts, and a backslash only without one.
  for (const char* const file : {"src/a\\util.cpp", "c:\\src\\cnfg.cpp", "Util.cpp", "util.cpp.cpp"})
    EXPECT_FALSE(record("x", ERR, file)) << file;
  EXPECT_FALSE(record("x", DBG, "util.cpp"));
  gLogging.mExclFileToLog = "place.cpp";
  logFromMixedPath();
  EXPECT_EQ("|       place.cpp|   70| Class::Class::method            | here", lines().back().substr(23));
}

TEST_F(LoggingRecord, PrintsByteTable) {
  const std::string head = "\n       0  1  2  3  4  5  6  7  8  9";
  const std::pair<std::string, std::string> kCases[] = {
      {"", ""},
      {std::string("A\n\0", 3), "\n   0: 41 a 0 "},
      {"0123456789", "\n   0: 30 31 32 33 34 35 36 37 38 39 "},
      {"0123456789\x80\xFF\x7F", "\n   0: 30 31 32 33 34 35 36 37 38 39 \n  10: ffffff80 ffffffff 7f "}};
  for (const auto& [data, table] : kCases) {
    ASSERT_TRUE(gLogging.beginRecord(INF, "f", ""));
    gLogging << LOG_HEX_DUMP << data << " then " << 255 << LOG_MAGIC;
    const std::string all = bytes();
    EXPECT_EQ(head + table + " then ff\n", all.substr(all.rfind(head)));
  }
  ASSERT_TRUE(record("A"));
  EXPECT_EQ("A", textOf(lines().back())) << "only the next text, only in its record";
}

TEST_F(LoggingRecord, ManipulatorEndsWithRecord) {
  OV_LOG(INF, "Class", "Class::method", std::hex << std::showbase << 25 << ' ' << 25);
  OV_LOG(INF, "Class", "Class::method",
         std::setfill('.') << std::setprecision(3) << std::setw(4) << 25 << 1.53125);
  OV_LOG(INF, "Class", "Class::method", std::setw(4) << 25 << 1.53125);
  EXPECT_EQ((Texts{"0x19 0x19", "..251.53", "  251.53125"}), texts());
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

TEST_F(LoggingRecord, FailureLosesOneRecord) {
  const auto thrower = []() -> int { throw std::runtime_error("no text"); };
  EXPECT_NO_THROW(OV_LOG(INF, "Class", "Class::method", "begun " << thrower()));
  OV_LOG(INF, "Class", "Class::method", "next");
  gLogging.mOs->exceptions(std::ios::failbit);
  gLogging.mOs->setstate(std::ios::badbit); // the prefix throws
  OV_LOG(INF, "Class", "Class::method", "lost");
  OV_LOG(INF, "Class", "Class::method", "last " << 255);
  EXPECT_EQ((Texts{"next", "last 255"}), texts());
}

TEST_F(LoggingRecord, ThreadsWriteWholeLines) {
  constexpr std::size_t kThreads = 3, kRecords = 2000;
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < kThreads; ++t) {
    threads.emplace_back([t] {
      for (std::size_t i = 0; i < kRecords; ++i)
        OV_LOG(INF, "Class", "Class::method", t << ' ' << i);
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  std::size_t next[kThreads] = {};
  const Texts all = texts();
  ASSERT_EQ(kThreads * kRecords, all.size());
  for (const std::string& text : all) {
    const auto t = static_cast<std::size_t>(text[0] - '0');
    ASSERT_LT(t, kThreads) << text;
    ASSERT_EQ(std::to_string(t) + ' ' + std::to_string(next[t]++), text);
  }
}

TEST_F(LoggingRecord, NewLogPassesErrorsToNobody) {
  rig::StreamCapture out(std::cout);
  gLogMagic = 0;
  {
    Logging log;
    EXPECT_EQ(LOG_MAGIC, gLogMagic);
    EXPECT_EQ("c:\\def_log.txt 5000", log.mLogFile + ' ' + std::to_string(log.mMaxSize));
    for (int type = WRN; type <= TMP; ++type)
      EXPECT_FALSE(log.beginRecord(type, "f", "prefix")) << type;
    EXPECT_TRUE(log.beginRecord(ERR, "f", "prefix"));
    log << LOG_MAGIC;
    EXPECT_EQ(-1, log.backupLogFile());
  }
  EXPECT_EQ(0, gLogMagic);
  EXPECT_EQ("", out.take());
  gLogMagic = LOG_MAGIC;
  EXPECT_EQ(Texts{"Logging::~Logging(): destructing ..."}, texts());
}

// At the end: the compiler takes all that follows for another file.
#line 69 "c:\\common_sources/place.cpp"
void logFromMixedPath() {
  OV_LOG(INF, "Class", "Class::method", "here");
}

} // namespace
