#include <filesystem>
#include <set>

#include "dxf_reader.h"
#include "host_test.h"

// Drawings that others made; damaged ones are the fuzzer's. The packages that hold them are among what the
// project installs.

namespace {

class DxfFiles : public HostTest {
protected:
  /// Returns the number of strokes.
  static size_t load(const std::string& path) {
    host::reset();
    const dxf::Result result = dxf::load(path);
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.entities, host::entityCount()) << path;
    size_t count = 0;
    for (int i = 1; i <= host::entityCount(); ++i)
      count += host::strokes(i).size();
    return count;
  }
};

TEST_F(DxfFiles, ALibraryOfPartsLoads) {
  int count = 0;
  std::set<std::string> empty;
  for (const auto& entry : std::filesystem::recursive_directory_iterator("/usr/share/librecad")) {
    if (entry.path().extension() != ".dxf")
      continue;
    ++count;
    if (load(entry.path().string()) == 0)
      empty.insert(entry.path().filename().string());
  }
  EXPECT_GT(count, 1000);
  // A part whose shapes are on a layout, and empty sheets.
  EXPECT_EQ(empty, (std::set<std::string>{"s1.dxf", "speak2.dxf", "empty.dxf"}));
}

} // namespace
