#ifndef BARE_PASS_H
#define BARE_PASS_H

#include <arxHeaders.h>

class OvAutoCad;

/// A pass over a motion sample as someone would write it who has only the one case to serve that the rows
/// have: model space, parallel projection, mode "objscreen", no selection, the pointer on the drawing. The
/// host's calls are those of the engine's pass, in its order, and so is the arithmetic.
namespace bench {

/// Hears of each of the three steps that the default log has a record of. Null: nobody.
using StepHook = void (*)(int step, double value);

void barePass(const OvAutoCad& plugin, StepHook hook);

} // namespace bench

#endif
