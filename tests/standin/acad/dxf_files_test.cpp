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
    EXPECT_EQ(result.isLoaded(), !box.isEmpty()) << path;
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
  // These are sheets with nothing on them, or a part whose shapes stand on a layout.
  const std::set<std::string> kEmpty = {"audio/s1.dxf", "audio/speak2.dxf", "templates/empty.dxf"};
  int count = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(kLibrary)) {
    if (entry.path().extension() != ".dxf")
      continue;
    ++count;
    const dxf::Result result = load(entry.path().string());
    const std::string name =
        (entry.path().parent_path().filename() / entry.path().filename()).generic_string();
    if (kEmpty.count(name) != 0) {
      EXPECT_EQ(result.error, entry.path().string() + ": nothing to show: 0 entities");
      continue;
    }
    EXPECT_EQ(result.error, "");
    EXPECT_GT(strokeCount(), 0u) << entry.path();
  }
  EXPECT_GT(count, 1000);
}

} // namespace
