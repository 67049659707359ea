#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

std::string read(const fs::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(SourceNames, ManualListsEachLoggingSource) {
  const fs::path root = OV_SOURCE_FOLDER;
  std::set<std::string> logging, listed;
  for (const char* const folder : {"AutoCAD2019", "common_sources", "OV_Daemon/src", "support"}) {
    for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
      if (entry.path().extension() == ".cpp" && read(entry.path()).find("OV_LOG(") != std::string::npos)
        logging.insert(entry.path().filename().string());
    }
  }
  const std::string page = read(root / "docs/using_it.md");
  const std::size_t start = page.find("<!-- source files -->");
  const std::string table = page.substr(start, page.find("<!-- end -->", start) - start);
  const std::regex name("`([a-z0-9_]+\\.cpp)`");
  for (std::sregex_iterator it(table.begin(), table.end(), name), end; it != end; ++it)
    listed.insert((*it)[1]);
  EXPECT_EQ(logging, listed);
}

} // namespace
