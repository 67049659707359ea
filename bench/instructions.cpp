// What is counted in instructions: steps on the road of a motion sample, each done alike so often that the
// first one's extra work doesn't show. Run under callgrind, which leaves a file of counts for each.

#include <string>

#include <valgrind/callgrind.h>

#include "host.h"
#include "logging.h"
#include "surroundings.h"

namespace {

constexpr int kTimes = 200;

/// Counts what the function takes, on the calling thread alone.
template <class F> void count(const char* name, F work) {
  for (int i = 0; i < kTimes; ++i)
    work(i);
  CALLGRIND_ZERO_STATS;
  CALLGRIND_TOGGLE_COLLECT;
  for (int i = 0; i < kTimes; ++i)
    work(i);
  CALLGRIND_TOGGLE_COLLECT;
  CALLGRIND_DUMP_STATS_AT(name);
}

void turnSample(int i) {
  const int sign = i % 2 == 0 ? 1 : -1;
  bench::setSample(30 * sign, -20 * sign, 10 * sign, 40 * sign, -50 * sign, 60 * sign);
}

void pass(int i) {
  turnSample(i);
  bench::engine().handleDeviceCap();
}

} // namespace

int main() {
  bench::plugin();
  bench::setDefaultLog();
  count("record",
        [](int i) { OV_LOG(INF, "AutoCadProxy", "AutoCadProxy::moveXYZ", "value: " << 0.0123 + i * 1e-5); });
  count("filtered record",
        [](int i) { OV_LOG(DBG, "AutoCadProxy", "AutoCadProxy::rotate", "angle: " << i); });
  count("pass, default log", pass);
  bench::setQuietLog();
  count("pass, log filtered", pass);
  count("pass at rest", [](int) {
    bench::setSample(0, 0, 0, 0, 0, 0);
    bench::engine().handleDeviceCap();
  });
  host::add(std::make_unique<AcDbLine>(AcGePoint3d(0, 0, 0), AcGePoint3d(0, 10, 5)));
  host::selectAll();
  count("object moved", [](int i) { bench::engine().transformSelection2d(i % 2 == 0 ? 300 : -300, 0); });
  bench::engine().mIsDocLocked = false;
  bench::stopEngine();
}
