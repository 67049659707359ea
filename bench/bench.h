#ifndef BENCH_H
#define BENCH_H

#include <functional>
#include <string>
#include <vector>

/// Rows that compare a part of the plug-in with the bare calls that it can't do without, or with a common
/// library.
namespace bench {

/// Does the same operation that many times.
using Work = std::function<void(int count)>;

/// What is measured, and how.
struct Row {
  std::string what;
  std::string reference;
  double goal = 0;  // largest ours / reference; 0: no goal
  int batch = 100;  // operations in one measurement
  int pairs = 300;  // measurements of each side
  double share = 1; // parts of one operation: objects in a sample, say
  Work ours;
  Work theirs;
  std::function<void()> prepare;     // before each measurement, not measured; may be null
  std::function<void()> start, stop; // around all measurements; may be null
};

/// A row's result.
struct Result {
  std::string what;
  std::string reference;
  std::string unit; // of ours and reference
  double ours = 0;
  double theirs = 0;
  double ratio = 0;
  double goal = 0;
  bool isDifference = false; // ratio and goal are of ours minus reference

  bool isMet() const { return goal == 0 || ratio <= goal; }
};

/// Registers a row with Google Benchmark, under its text. Both sides alternate within one run, in changing
/// order: a short disturbance of the machine affects a pair, and the median of the pairs' ratios ignores it.
void add(const Row& row);
/// Registers a row that computes its result itself.
void add(const std::string& what, const std::function<Result()>& measure);

/// Returns the results in the order of the rows, once they have run.
const std::vector<Result>& results();

double median(std::vector<double> values);

/// Passes over the samples of turnSample(), by the plug-in and by the bare host calls.
void passOurs(int count);
void passBare(int count);
/// Begin and end a movement for such passes, on a fresh host.
void startPasses();
void endPasses();

// Each file of rows registers its own.
void addLogRows();
void addFileRows();
void addMotionRows();
void addObjectRows();
void addRestRow();

} // namespace bench

#endif
