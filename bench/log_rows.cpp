// The log: a record of a motion step, of which the default log writes three in each pass.

#include "bench.h"

#include <thread>

#include <benchmark/benchmark.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include "logging.h"
#include "surroundings.h"

namespace bench {

namespace {

constexpr double kValue = -0.01735; // of the first step
constexpr double kValueStep = 1e-5;
constexpr int kThreads = 3;       // as many as the plug-in has
constexpr int kRecordsOfPass = 3; // one for each direction of a move

void writeRecords(int count) {
  for (int i = 0; i < count; ++i)
    OV_LOG(INF, "AutoCadProxy", "AutoCadProxy::moveXYZ",
           "Move x-Direction, value: " << kValue + i * kValueStep);
}

void filterRecords(int count) {
  for (int i = 0; i < count; ++i)
    OV_LOG(DBG, "AutoCadProxy", "AutoCadProxy::rotate", "Rotate Axis: " << kValue << "(" << i << ")");
}

std::shared_ptr<spdlog::logger> gSpdlogP;

void startSpdlog() {
  gSpdlogP = std::make_shared<spdlog::logger>(
      "other", std::make_shared<spdlog::sinks::basic_file_sink_mt>(home().native("Orvaner/other_log.txt")));
  gSpdlogP->set_pattern("%H:%M:%S.%e|%3!l|%6t|%16s| %4#| %-32!!| %v", spdlog::pattern_time_type::utc);
  gSpdlogP->flush_on(spdlog::level::info);
}

void writeSpdlogRecords(int count) {
  for (int i = 0; i < count; ++i) {
    gSpdlogP->log({"common_sources/host/view_motion.cpp", __LINE__, "AutoCadProxy::AutoCadProxy::moveXYZ"},
                  spdlog::level::info, "Move x-Direction, value: {:.6g}", kValue + i * kValueStep);
  }
}

void filterSpdlogRecords(int count) {
  for (int i = 0; i < count; ++i)
    SPDLOG_LOGGER_CALL(gSpdlogP, spdlog::level::debug, "Rotate Axis: {:.6g}({})", kValue, i);
}

void inThreads(const Work& work, int count) {
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i)
    threads.emplace_back(work, count / kThreads);
  for (std::thread& thread : threads)
    thread.join();
}

} // namespace

void addLogRows() {
  Row row;
  row.start = [] {
    setDefaultLog();
    startSpdlog();
  };
  row.stop = [] { gSpdlogP.reset(); };
  row.what = "a record written with flush, default log";
  row.reference = "spdlog, file sink, flush on each";
  row.goal = 3;
  row.ours = writeRecords;
  row.theirs = writeSpdlogRecords;
  add(row);

  row.what = "a record of one of three threads at once";
  row.batch = 1500;
  row.pairs = 101;
  row.ours = [](int count) { inThreads(writeRecords, count); };
  row.theirs = [](int count) { inThreads(writeSpdlogRecords, count); };
  add(row);

  Row pass = row;
  pass.what = "a 3D pass, six axes, default log";
  pass.reference = "the bare calls and arithmetic, spdlog";
  pass.batch = 200;
  pass.pairs = 300;
  pass.prepare = resetView;
  pass.start = [] {
    setDefaultLog();
    startSpdlog();
    startPasses();
  };
  pass.stop = [] {
    endPasses();
    gSpdlogP.reset();
  };
  pass.ours = passOurs;
  pass.theirs = [](int count) {
    for (int i = 0; i < count; ++i) {
      passBare(1);
      writeSpdlogRecords(kRecordsOfPass);
    }
  };
  add(pass);

  row.what = "a record filtered out by type";
  row.reference = "spdlog's disabled level";
  row.goal = 0;
  row.batch = 20000;
  row.pairs = 300;
  row.ours = filterRecords;
  row.theirs = filterSpdlogRecords;
  add(row);
}

} // namespace bench
