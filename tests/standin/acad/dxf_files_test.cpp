#include <filesystem>
#include <set>

#include "dxf_reader.h"
#include "host_test.h"

// Drawings made by others, with both kinds of line ends, blanks and comments. The fuzzer covers damaged ones.
// scripts/install installs the package that holds them.
TEST_F(HostTest, LoadsLibraryOfParts) {
  int count = 0;
  std::set<std::string> empty;
  for (const auto& entry : std::filesystem::recursive_directory_iterator("/usr/share/librecad")) {
    if (entry.path().extension() != ".dxf")
      continue;
    ++count;
    host::reset();
    const dxf::Result result = dxf::load(entry.path().string());
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.entities, host::entityCount()) << entry.path();
    std::size_t strokes = 0;
    for (int i = 1; i <= host::entityCount(); ++i)
      strokes += host::strokes(i).size();
    if (strokes == 0)
      empty.insert(entry.path().filename().string());
  }
  EXPECT_GT(count, 1000);
  // A part whose shapes are on a layout, and empty sheets.
  EXPECT_EQ(empty, (std::set<std::string>{"s1.dxf", "speak2.dxf", "empty.dxf"}));
}
