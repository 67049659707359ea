#include "drawing_file.h"

#include "dxf.h"

namespace program {

bool openDrawing(const std::string& path, std::string& reason) {
  return host::loadDxf(path, reason);
}

} // namespace program
