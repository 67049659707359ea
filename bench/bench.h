#ifndef BENCH_H
#define BENCH_H

#include <functional>
#include <string>
#include <vector>

/// Rows that compare a piece of the plug-in with what it can't be faster than, or with what one would have
/// taken from a shelf instead.
namespace bench {

/// Does the same thing that many times in a row.
using Work = std::function<void(int count)>;

/// What is measured, and how.
struct Row {
  std::string what;
  std::string reference;
  double goal = 1;  // ours / reference, at most
  int batch = 100;  // operations in one go
  int pairs = 300;  // goes of each side
  double share = 1; // parts of one operation: objects in a sample, say
  Work ours;
  Work theirs;
  std::function<void()> prepare;     // before each go of either side, not measured; may be null
  std::function<void()> start, stop; // around all goes, not measured; may be null
};

/// What came out.
struct Result {
  std::string what;
  std::string reference;
  std::string unit; // of ours and reference
  double ours = 0;
  double theirs = 0;
  double ratio = 0;
  double goal = 0;
  bool isDifference = false; // ratio and goal are of ours minus reference
};

/// Registers a row with Google Benchmark, under its text. Both sides take turns, in changing order, within
/// one run: what disturbs the machine for a moment disturbs a pair, and the median of the pairs' ratios
/// forgets it.
void add(const Row& row);
/// Registers a row that works its result out by itself.
void add(const std::string& what, const std::function<Result()>& measure);

/// Returns the results in the order of the rows, once they have run.
const std::vector<Result>& results();

double median(std::vector<double> values);

// Each file of rows registers its own.
void addLogRows();
void addFileRows();
void addMotionRows();
void addObjectRows();
void addRestRow();

} // namespace bench

#endif
