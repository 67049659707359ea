// Drawings: a file is loaded whole, and all of it can be shown, or it is refused with a reason and adds
// nothing.
//
// Input: the file.

#include "dxf_reader.h"
#include "host.h"
#include "require.h"
#include "temp_folder.h"

using fuzz::require;
using fuzz::requireSame;

namespace {

/// Returns the program's folder. It is written to for each input, so scripts/fuzz chooses a place in memory with
/// TMPDIR.
rig::TempFolder& scratch() {
  static rig::TempFolder folder;
  return folder;
}

constexpr char kFile[] = "fuzz.dxf";
constexpr int kMaxDrawn = 50; // entities; an insert may stand for millions

void checkDrawing(const dxf::Result& result) {
  require(host::entityCount() == result.entities, "as many entities as were counted");
  for (int number = 1; number <= std::min(result.entities, kMaxDrawn); ++number) {
    const AcDbEntity* const entityP = host::entity(number);
    require(entityP != nullptr, "entities count from 1");
    AcDbExtents own;
    entityP->subAddExtents({}, own);
    require(!own.isEmpty() && host::isFinite(own.minPoint()) && host::isFinite(own.maxPoint()),
            "each entity lies somewhere");
    if (entityP->isKindOf(AcDbBlockReference::desc()))
      continue;
    for (const AcDbStroke& stroke : host::strokes(number))
      for (const AcGePoint3d& point : stroke)
        require(host::isFinite(point), "lines go through points that exist");
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  scratch().write(kFile, std::string(reinterpret_cast<const char*>(data), size));
  const std::string path = scratch().native(kFile);
  host::reset();
  const dxf::Result result = dxf::load(path);
  require(!result.summary().empty(), "a summary");
  if (result.isLoaded()) {
    checkDrawing(result);
  } else {
    require(host::entityCount() == 0, "a file that is refused adds nothing");
    requireSame(result.error.substr(0, path.size() + 1), path + ":", "an error names its file");
    require(result.error.size() > path.size() + 2, "an error has a reason");
    require(result.error.find('\n') == std::string::npos, "an error is one line");
  }
  return 0;
}
