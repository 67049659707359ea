// What the application keeps for each document: nothing so far. The manager stands ready for what belongs to
// one drawing rather than to the plug-in.

#include <arxHeaders.h>

namespace {

class CDocData {};

AcApDataManager<CDocData> gDocVars;

} // namespace
