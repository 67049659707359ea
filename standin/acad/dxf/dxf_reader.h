#ifndef DXF_READER_H
#define DXF_READER_H

#include <map>
#include <string>

/// Reads drawings from DXF files in text form.
namespace dxf {

struct Result {
  /// One line with the file, the line where there is one, and the reason. Empty on success.
  std::string error;
  int entities = 0;
  /// What was left out: kind and count.
  std::map<std::string, int> skipped;

  bool isLoaded() const { return error.empty(); }
  /// "12 entities; left out: 3 TEXT, 1 HATCH", for a person to read.
  std::string summary() const;
};

/// Adds the drawing in the file to the host's model space; a drawing without entities is valid. Adds nothing
/// on a failure: the file can't be read, isn't a complete DXF file in text form, or holds an invalid number
/// in an entity.
Result load(const std::string& path);

} // namespace dxf

#endif
