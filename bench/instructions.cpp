// Makes passes for callgrind to count: the engine's with the argument "ours", otherwise the bare ones.

#include <cstring>

#include <valgrind/callgrind.h>

#include "bare_pass.h"
#include "surroundings.h"

int main(int argc, char** argv) {
  const bool isOurs = argc > 1 && std::strcmp(argv[1], "ours") == 0;
  bench::plugin();
  bench::setQuietLog();
  for (const bool isCounted : {false, true}) {
    if (isCounted)
      CALLGRIND_TOGGLE_COLLECT;
    for (int i = 0; i < bench::kCountedPasses; ++i) {
      bench::turnSample(i);
      if (isOurs)
        bench::engine().handleDeviceCap();
      else
        bench::barePass(bench::plugin());
    }
  }
  CALLGRIND_TOGGLE_COLLECT;
  bench::stopEngine();
}
