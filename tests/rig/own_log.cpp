// The log of a program that has no module.

#include "logging.h"

static Logging gLog;

Logging& gLogging = gLog;
