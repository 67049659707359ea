// Runs the rows and prints one table; with a folder as its argument, writes them there as JSON too.

#include <cstdio>
#include <fstream>
#include <iostream>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include "bench.h"
#include "surroundings.h"

namespace {

/// Reports progress; the table comes at the end.
class Progress : public benchmark::BenchmarkReporter {
public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs)
      std::cerr << "measured: " << run.run_name.function_name << '\n';
  }
};

nlohmann::ordered_json json() {
  nlohmann::ordered_json rows = nlohmann::ordered_json::array();
  for (const bench::Result& r : bench::results())
    rows.push_back({{"what", r.what},
                    {"ours", r.ours},
                    {"reference", r.theirs},
                    {"ratio", r.ratio},
                    {"goal", r.goal},
                    {"unit", r.unit},
                    {"against", r.reference},
                    {"difference", r.isDifference},
                    {"met", r.isMet()}});
  return {{"rows", rows}};
}

std::string goalOf(const bench::Result& r) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", r.goal);
  return r.goal == 0 ? "-" : text;
}

void printTable() {
  std::printf("%-52s %12s %12s    %8s %8s\n", "what", "ours", "reference", "ratio", "goal");
  for (const bench::Result& r : bench::results())
    std::printf("%-52s %12.5g %12.5g %-2s %8.3f %8s %s\n", r.what.c_str(), r.ours, r.theirs, r.unit.c_str(),
                r.ratio, goalOf(r).c_str(), r.isMet() ? "" : "  not met");
}

} // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  bench::addRestRow(); // first, while the process holds nothing of the other rows
  bench::addLogRows();
  bench::addFileRows();
  bench::addMotionRows();
  bench::addObjectRows();
  Progress progress;
  benchmark::RunSpecifiedBenchmarks(&progress);
  bench::stopEngine();
  printTable();
  if (argc < 2)
    return 0;
  std::ofstream file(std::string(argv[1]) + "/bench.json");
  file << json().dump(2) << std::endl;
  return file ? 0 : 1;
}
