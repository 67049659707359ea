// Runs the rows and prints one table; with a folder as its argument, writes it there as JSON and Markdown
// too.

#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include "bench.h"
#include "surroundings.h"

namespace {

/// Tells which row is under way; the table comes at the end.
class Progress : public benchmark::BenchmarkReporter {
public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs)
      std::cerr << "measured: " << run.run_name.function_name << '\n';
  }
};

bool isMet(const bench::Result& result) {
  return result.ratio <= result.goal;
}

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, value < 10 ? "%.3f" : value < 1000 ? "%.1f" : "%.0f", value);
  return text;
}

std::string markdown() {
  std::ostringstream os;
  os << "| What | Ours | Reference | Ratio | Goal | Met |\n|---|---|---|---|---|---|\n";
  for (const bench::Result& r : bench::results()) {
    os << "| " << r.what << " | " << number(r.ours) << ' ' << r.unit << " | " << number(r.theirs) << ' '
       << r.unit << ", " << r.reference << " | " << (r.isDifference ? "+" : "") << number(r.ratio) << " | "
       << (r.isDifference ? "+" : "") << r.goal << " | " << (isMet(r) ? "yes" : "no") << " |\n";
  }
  return os.str();
}

std::string json() {
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
                    {"met", isMet(r)}});
  return nlohmann::ordered_json{{"rows", rows}}.dump(2) + "\n";
}

void printTable() {
  std::printf("%-58s %12s %12s %8s %8s\n", "what", "ours", "reference", "ratio", "goal");
  for (const bench::Result& r : bench::results())
    std::printf("%-58s %9s %-2s %9s %-2s %8.3f %8g %s\n", r.what.c_str(), number(r.ours).c_str(),
                r.unit.c_str(), number(r.theirs).c_str(), r.unit.c_str(), r.ratio, r.goal,
                isMet(r) ? "" : "  not met");
}

bool write(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::trunc);
  file << text;
  file.close();
  if (!file)
    std::cerr << "can't write " << path << '\n';
  return static_cast<bool>(file);
}

} // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  bench::addLogRows();
  bench::addFileRows();
  bench::addMotionRows();
  bench::addInstructionRow();
  bench::addObjectRows();
  bench::addRestRow();
  Progress progress;
  benchmark::RunSpecifiedBenchmarks(&progress);
  bench::stopEngine();
  printTable();
  if (argc < 2)
    return 0;
  const std::string folder = argv[1];
  return write(folder + "/bench.json", json()) && write(folder + "/bench.md", markdown()) ? 0 : 1;
}
