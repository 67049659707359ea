// The log: one record of a motion step, as the default log has three of in each pass.

#include "bench.h"

#include <thread>

#include <fcntl.h>
#include <unistd.h>

#include <benchmark/benchmark.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include "logging.h"
#include "surroundings.h"

namespace bench {

namespace {

constexpr double kFirstValue = -0.01735; // of the steps; what follows changes its digits
constexpr double kValueStep = 1e-5;
constexpr int kThreads = 3; // as many as the plug-in has
constexpr char kLogFile[] = "Orvaner/autocad_addin_log.txt";

void writeRecords(int count) {
  double value = kFirstValue;
  for (int i = 0; i < count; ++i) {
    value += kValueStep;
    OV_LOG(INF, "AutoCadProxy", "AutoCadProxy::moveXYZ", "Move x-Direction, value: " << value);
  }
}

std::shared_ptr<spdlog::logger> gSpdlogP;

void startSpdlog() {
  const auto sinkP =
      std::make_shared<spdlog::sinks::basic_file_sink_mt>(home().native("Orvaner/other_log.txt"));
  gSpdlogP = std::make_shared<spdlog::logger>("other", sinkP);
  gSpdlogP->set_pattern("%H:%M:%S.%e|%3!l|%6t|%16s| %4#| %-32!!| %v", spdlog::pattern_time_type::utc);
  gSpdlogP->flush_on(spdlog::level::info);
}

void writeSpdlogRecords(int count) {
  double value = kFirstValue;
  for (int i = 0; i < count; ++i) {
    value += kValueStep;
    gSpdlogP->log(
        {"common_sources/motion/view_translation.cpp", __LINE__, "AutoCadProxy::AutoCadProxy::moveXYZ"},
        spdlog::level::info, "Move x-Direction, value: {:.6g}", value);
  }
}

void inThreads(const Work& work, int count) {
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i)
    threads.emplace_back(work, count / kThreads);
  for (std::thread& thread : threads)
    thread.join();
}

int gFile = -1;
std::string gLine;

/// Takes what our log writes for a record, and opens the file for the bare write.
void openBare() {
  writeRecords(1);
  const std::string text = home().read(kLogFile);
  gLine = text.substr(text.rfind('\n', text.size() - 2) + 1);
  gFile = open(home().native(kLogFile).c_str(), O_WRONLY | O_APPEND);
}

void writeBareRecords(int count) {
  for (int i = 0; i < count; ++i)
    benchmark::DoNotOptimize(write(gFile, gLine.data(), gLine.size()));
}

void filterRecords(int count) {
  double value = kFirstValue;
  for (int i = 0; i < count; ++i) {
    benchmark::DoNotOptimize(value);
    OV_LOG(DBG, "AutoCadProxy", "AutoCadProxy::rotate", "Rotate Axis: " << value << "(" << i << ")");
  }
}

void filterSpdlogRecords(int count) {
  double value = kFirstValue;
  for (int i = 0; i < count; ++i) {
    benchmark::DoNotOptimize(value);
    SPDLOG_LOGGER_CALL(gSpdlogP, spdlog::level::debug, "Rotate Axis: {:.6g}({})", value, i);
  }
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
  row.goal = 0.9;
  row.ours = writeRecords;
  row.theirs = writeSpdlogRecords;
  add(row);

  Row filtered = row;
  filtered.what = "a record filtered out by type";
  filtered.reference = "spdlog's disabled level";
  filtered.goal = 0.5;
  filtered.batch = 20000;
  filtered.ours = filterRecords;
  filtered.theirs = filterSpdlogRecords;

  Row threads = row;
  threads.what = "a record of one of three threads at once";
  threads.reference = "spdlog, multi-threaded file sink, flush on each";
  threads.batch = 1500;
  threads.pairs = 101;
  threads.ours = [](int count) { inThreads(writeRecords, count); };
  threads.theirs = [](int count) { inThreads(writeSpdlogRecords, count); };

  Row bare;
  bare.what = "a record written with flush";
  bare.reference = "write(2) of the same bytes to the same file";
  bare.goal = 1.3;
  bare.start = [] {
    setDefaultLog();
    openBare();
  };
  bare.stop = [] { close(gFile); };
  bare.ours = writeRecords;
  bare.theirs = writeBareRecords;

  add(bare);
  add(filtered);
  add(threads);
}

} // namespace bench
