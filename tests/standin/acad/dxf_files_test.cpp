#include <cmath>
#include <filesystem>
#include <set>

#include "dxf_reader.h"
#include "host_test.h"

// Drawings that others made; damaged ones are the fuzzer's. The packages that hold them are among what the
// project installs.

namespace {

const std::string kModels = "/usr/share/assimp/models/DXF/";
const std::string kLibrary = "/usr/share/librecad";

class DxfFiles : public HostTest {
protected:
  static dxf::Result load(const std::string& path) {
    host::reset();
    const dxf::Result result = dxf::load(path);
    const AcDbExtents box = host::extents();
    EXPECT_EQ(result.entities, host::entityCount()) << path;
    EXPECT_EQ(result.error, "");
    EXPECT_TRUE(box.isEmpty() || std::isfinite((box.maxPoint() - box.minPoint()).length())) << path;
    return result;
  }
  static size_t strokeCount() {
    size_t count = 0;
    for (int i = 1; i <= host::entityCount(); ++i)
      count += host::strokes(i).size();
    return count;
  }
};

TEST_F(DxfFiles, ModelsAreWhole) {
  struct Case {
    const char* name;
    int entities;
    std::size_t strokes; // at least
  };
  for (const Case& c : {Case{"PinkEggFromLW.dxf", 288, 288}, Case{"wuson.dxf", 1, 6767},
                        Case{"lineTest.dxf", 3, 3}, Case{"issue_2229.dxf", 4, 1001}}) {
    EXPECT_EQ(load(kModels + c.name).entities, c.entities) << c.name;
    EXPECT_GE(strokeCount(), c.strokes) << c.name;
  }
}

TEST_F(DxfFiles, ALibraryOfPartsLoads) {
  int count = 0;
  std::set<std::string> empty;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(kLibrary)) {
    if (entry.path().extension() != ".dxf")
      continue;
    ++count;
    load(entry.path().string());
    if (strokeCount() == 0)
      empty.insert(entry.path().filename().string());
  }
  EXPECT_GT(count, 1000);
  // A part whose shapes stand on a layout, and sheets with nothing on them.
  EXPECT_EQ(empty, (std::set<std::string>{"s1.dxf", "speak2.dxf", "empty.dxf"}));
}

} // namespace
