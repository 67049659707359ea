#include "drawing_file.h"

#include "dxf_reader.h"

#include <iostream>

namespace program {

bool openDrawing(const std::string& path, std::string& reason) {
  const dxf::Result result = dxf::load(path);
  reason = result.error;
  if (result.isLoaded())
    std::cout << path << ": " << result.summary() << '\n' << std::flush;
  return result.isLoaded();
}

} // namespace program
