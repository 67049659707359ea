#ifndef OUTPUT_H
#define OUTPUT_H

#include "recorder.h"
#include "session_data.h"

#include <filesystem>
#include <iosfwd>
#include <string>

namespace program {

/// Where the program leaves what it makes, and where the plug-in finds its user's folder.
struct Folders {
  std::filesystem::path mOut;
  std::filesystem::path mHome;

  /// Makes the folders, and in a new home the settings tree that comes with a device's driver; names the home
  /// folder in USERPROFILE. Throws Error.
  static Folders make(const std::string& out, const std::string& home);
  std::filesystem::path log() const;
};

/// Writes a whole file. Throws Error.
void writeFile(const std::filesystem::path& path, const std::string& text);

/// Writes session.json, command_line.txt, report.html and, if passes were checked, saved.session. Throws Error.
void writeOutputs(const Folders& folders, const Recorder& recorder, const SessionInput& input);

/// Prints what happened, for a person.
void printSummary(std::ostream& out, const Folders& folders, const Recorder& recorder,
                  const SessionInput& input);

} // namespace program

#endif
