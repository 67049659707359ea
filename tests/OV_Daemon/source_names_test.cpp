#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

std::string read(const fs::path& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

/// Names of the plug-in's sources that log.
Names loggingSources() {
  Names names;
  for (const char* const folder : {"AutoCAD2019", "common_sources", "OV_Daemon/src", "support"}) {
    for (const auto& entry : fs::recursive_directory_iterator(fs::path(OV_SOURCE_FOLDER) / folder)) {
      if (entry.path().extension() == ".cpp" && read(entry.path()).find("OV_LOG(") != std::string::npos)
        names.insert(entry.path().filename().string());
    }
  }
  return names;
}

/// Names that the user's page offers for `fileToLog`.
Names documentedSources() {
  const std::string page = read(fs::path(OV_SOURCE_FOLDER) / "docs/using_it.md");
  const std::size_t start = page.find("<!-- source files -->");
  const std::string table = page.substr(start, page.find("<!-- end -->", start) - start);
  const std::regex name("`([a-z0-9_]+\\.cpp)`");
  Names names;
  for (std::sregex_iterator it(table.begin(), table.end(), name), end; it != end; ++it)
    names.insert((*it)[1]);
  return names;
}

TEST(SourceNames, ManualListsEachSource) {
  EXPECT_EQ(loggingSources(), documentedSources());
}

} // namespace
