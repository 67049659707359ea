// Instructions of a pass. They repeat where times don't, so that a longer road shows on any machine; how many
// they are depends on the compiler.

#include "bench.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <stdexcept>
#include <string>

#include "temp_folder.h"

namespace bench {

namespace {

constexpr int kTimes = 200; // repetitions that a count is of

/// Runs the counting program under callgrind and reads what it leaves.
std::map<std::string, double> countNow() {
  const rig::TempFolder folder;
  const std::string command = std::string("\"" OV_VALGRIND "\" --tool=callgrind --collect-atstart=no "
                                          "--separate-threads=no \"--callgrind-out-file=") +
                              folder.native("out") + "\" \"" OV_INSTRUCTIONS "\" >\"" + folder.native("log") +
                              "\" 2>&1";
  if (std::system(command.c_str()) != 0)
    throw std::runtime_error("counting failed: " + folder.read("log"));
  std::map<std::string, double> counts;
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

} // namespace

void addInstructionRow() {
  add("a 3D pass, six axes, log filtered, instructions", [] {
    const std::map<std::string, double> counts = countNow();
    const double ours = counts.at("ours"), bare = counts.at("bare");
    return Result{"a 3D pass, six axes, log filtered, instructions",
                  "the bare host calls and arithmetic",
                  "",
                  ours,
                  bare,
                  ours / bare,
                  1.3,
                  false};
  });
}

} // namespace bench
