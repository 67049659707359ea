#include "bench.h"

namespace bench {

void addDeviceRows() {}

} // namespace bench
