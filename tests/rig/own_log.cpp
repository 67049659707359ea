// The log of a program that has no module.

#include "logging.h"

namespace {

Logging gLog;

} // namespace

Logging& gLogging = gLog;
