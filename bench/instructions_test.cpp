// Compares instruction counts with those that were written down. They repeat where times don't, so that a
// slower road shows on any machine.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "temp_folder.h"

namespace {

constexpr double kMargin = 0.05;
constexpr int kTimes = 200; // repetitions that a count is of

using Counts = std::map<std::string, double>;

/// Runs the counting program under callgrind and reads what it leaves.
Counts countNow() {
  const rig::TempFolder folder;
  const std::string command = std::string("\"" OV_VALGRIND "\" --tool=callgrind --collect-atstart=no "
                                          "--separate-threads=no \"--callgrind-out-file=") +
                              folder.native("out") + "\" \"" OV_INSTRUCTIONS "\" >\"" + folder.native("log") +
                              "\" 2>&1";
  Counts counts;
  EXPECT_EQ(0, std::system(command.c_str())) << folder.read("log");
  for (const auto& entry : std::filesystem::directory_iterator(folder.native())) {
    std::ifstream file(entry.path());
    std::string name;
    for (std::string line; std::getline(file, line);) {
      std::smatch match;
      if (std::regex_match(line, match, std::regex("desc: Trigger: Client Request: (.+)")))
        name = match[1];
      else if (!name.empty() && std::regex_match(line, match, std::regex("(?:totals|summary): (\\d+)")))
        counts[name] = std::stod(match[1]) / kTimes;
    }
  }
  return counts;
}

/// Lines of kind of build, count and name.
Counts baseline(std::string& others) {
  Counts counts;
  std::ifstream file(OV_BASELINE);
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string build, name;
    double count = 0;
    if (line.empty() || line[0] == '#' || !(words >> build >> count) || build != OV_BUILD) {
      others += line + "\n";
      continue;
    }
    std::getline(words >> std::ws, name);
    counts[name] = count;
  }
  return counts;
}

TEST(Instructions, StayWhereTheyAre) {
  std::string others;
  const Counts expected = baseline(others);
  const Counts counts = countNow();
  ASSERT_FALSE(counts.empty());
  if (std::getenv("OV_WRITE_BASELINE")) {
    std::ofstream file(OV_BASELINE, std::ios::trunc);
    file << others;
    for (const auto& count : counts)
      file << OV_BUILD << ' ' << static_cast<long>(count.second + 0.5) << ' ' << count.first << '\n';
    return;
  }
  ASSERT_FALSE(expected.empty()) << "no counts are written down for builds of type " OV_BUILD;
  for (const auto& count : counts)
    EXPECT_TRUE(expected.count(count.first)) << count.first << ": " << count.second << ", not written down";
  for (const auto& known : expected) {
    const auto it = counts.find(known.first);
    ASSERT_NE(counts.end(), it) << known.first << " isn't counted any more";
    EXPECT_NEAR(it->second, known.second, known.second * kMargin)
        << known.first << ": if that is meant, run the test with OV_WRITE_BASELINE=1";
  }
}

} // namespace
