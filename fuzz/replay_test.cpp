#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include "require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Runs a fuzz target over files that are kept: what the fuzzer starts from, and what once broke the code.
namespace {

std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> files;
  if (std::filesystem::is_directory(folder))
    for (const auto& entry : std::filesystem::directory_iterator(folder))
      files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

TEST(FuzzReplay, OV_FUZZ_TARGET) {
  const std::filesystem::path home = OV_FUZZ_FOLDER;
  const std::string target = test_info_->name();
  std::vector<std::filesystem::path> files = filesIn(home / "corpus" / target);
  ASSERT_FALSE(files.empty()) << "no corpus for " << target;
  const std::vector<std::filesystem::path> regressions = filesIn(home / "regressions" / target);
  files.insert(files.end(), regressions.begin(), regressions.end());
  for (const auto& path : files) {
    std::cerr << path.filename().string() << '\n'; // at a crash, the last name printed is the culprit's
    std::ifstream file(path, std::ios::binary);
    ASSERT_TRUE(file);
    // A block of the exact size, so that a sanitizer sees a step beyond it.
    const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
    const std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
    try {
      LLVMFuzzerTestOneInput(data.data(), data.size());
    } catch (const fuzz::Broken& broken) {
      ADD_FAILURE() << path << ": " << broken.what();
    }
  }
}

} // namespace
