#ifndef PROGRAM_H
#define PROGRAM_H

#include "options.h"

namespace program {

constexpr int kExitGood = 0;
/// The plug-in didn't do all that it should, or something failed on the way.
constexpr int kExitFailed = 1;
/// The command line, the session or the drawing can't be used; nothing was played.
constexpr int kExitUnusable = 2;

/// Runs the whole program and returns its exit status. Reports each mistake in one line on standard error.
int run(const Options& options);

} // namespace program

#endif
