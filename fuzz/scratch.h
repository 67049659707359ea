#ifndef FUZZ_SCRATCH_H
#define FUZZ_SCRATCH_H

#include <string>

#include "temp_folder.h"

namespace fuzz {

/// The folder of this program. It is written to for each input, so it belongs where memory is the disk:
/// scripts/fuzz says so with TMPDIR.
inline rig::TempFolder& scratch() {
  static rig::TempFolder folder;
  return folder;
}

} // namespace fuzz

#endif
