#ifndef DRAWING_FILE_H
#define DRAWING_FILE_H

#include <string>

namespace program {

/// Reads a drawing into the host's document and tells on standard output what came of it. False, with one
/// line that names file and reason, if it can't be used.
bool openDrawing(const std::string& path, std::string& reason);

} // namespace program

#endif
