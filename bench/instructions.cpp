// What is counted in instructions: passes over a motion sample, and the bare host calls that they make, each
// so often that the first one's extra work doesn't show. Run under callgrind, which leaves a file of counts
// for each.

#include <valgrind/callgrind.h>

#include "bare_pass.h"
#include "surroundings.h"

namespace {

constexpr int kTimes = 200;

void turnSample(int i) {
  const int sign = i % 2 == 0 ? 1 : -1;
  bench::setSample(30 * sign, -20 * sign, 10 * sign, 40 * sign, -50 * sign, 60 * sign);
}

/// Counts what the function takes, on the calling thread alone.
template <class F> void count(const char* name, F work) {
  for (int i = 0; i < kTimes; ++i) {
    turnSample(i);
    work();
  }
  CALLGRIND_ZERO_STATS;
  CALLGRIND_TOGGLE_COLLECT;
  for (int i = 0; i < kTimes; ++i) {
    turnSample(i);
    work();
  }
  CALLGRIND_TOGGLE_COLLECT;
  CALLGRIND_DUMP_STATS_AT(name);
}

} // namespace

int main() {
  bench::plugin();
  bench::setQuietLog();
  count("ours", [] { bench::engine().handleDeviceCap(); });
  count("bare", [] { bench::barePass(bench::plugin(), nullptr); });
  bench::stopEngine();
}
