#include "bench.h"

#include <algorithm>
#include <chrono>

#include <benchmark/benchmark.h>

namespace bench {

namespace {

std::vector<Result>& allResults() {
  static std::vector<Result> sResults;
  return sResults;
}

/// Returns the nanoseconds of an operation, measured once.
double timeOf(const Row& row, const Work& work) {
  using Clock = std::chrono::steady_clock;
  if (row.prepare)
    row.prepare();
  const Clock::time_point start = Clock::now();
  work(row.batch);
  const std::chrono::duration<double, std::nano> taken = Clock::now() - start;
  return taken.count() / row.batch / row.share;
}

void runRow(const Row& row, benchmark::State& state) {
  if (row.start)
    row.start();
  timeOf(row, row.ours);
  timeOf(row, row.theirs);
  std::vector<double> ours, theirs, ratios;
  bool isOursFirst = false;
  for (auto _ : state) {
    isOursFirst = !isOursFirst;
    double own = isOursFirst ? timeOf(row, row.ours) : 0;
    const double other = timeOf(row, row.theirs);
    if (!isOursFirst)
      own = timeOf(row, row.ours);
    ours.push_back(own);
    theirs.push_back(other);
    ratios.push_back(own / other);
    state.SetIterationTime((own + other) * row.batch * 1e-9);
  }
  if (row.stop)
    row.stop();
  allResults().push_back(
      {row.what, row.reference, "ns", median(ours), median(theirs), median(ratios), row.goal, false});
}

} // namespace

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

void add(const Row& row) {
  benchmark::RegisterBenchmark(row.what.c_str(), [row](benchmark::State& state) { runRow(row, state); })
      ->Iterations(row.pairs)
      ->UseManualTime();
}

void add(const std::string& what, const std::function<Result()>& measure) {
  benchmark::RegisterBenchmark(what.c_str(), [measure](benchmark::State& state) {
    for (auto _ : state)
      allResults().push_back(measure());
  })->Iterations(1);
}

const std::vector<Result>& results() {
  return allResults();
}

} // namespace bench
