#ifndef FINDINGS_H
#define FINDINGS_H

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace doctor {

using Json = nlohmann::ordered_json;

/// Where the plug-in looks, and everything that was seen. The checks fill it in, one after the other. Texts
/// are in the system's code page, paths have backslashes, both as in the plug-in.
struct Report {
  /// module  the plug-in's file; empty: beside this program
  explicit Report(const std::string& module);

  /// Returns the bytes of a file, nothing if it can't be read. Adds a finding if it exists and can't be read.
  std::optional<std::string> read(const std::string& path);
  /// Adds a finding.
  /// code  one of the table in findings.cpp, which also says what to do
  /// next  what to do, if the table doesn't say it
  void find(const std::string& code, const std::string& cause, const char* next = nullptr);
  /// Runs all checks and adds the verdict. Opens files for reading only. Returns 0 if all is well, 1 if
  /// something was found, 2 if something couldn't be looked at.
  int examine();
  /// Returns the report for a person.
  std::string text() const;

  std::string mHome, mFolder, mSettingsFile, mMenuFile, mLogFile;
  std::string mModule, mModuleFolder; // the folder has a backslash at its end
  std::string mLogLimit;              // kB
  Json mData;
  Json mFindings = Json::array();
  std::vector<std::string> mKeyNames; // by the keys' numbers
};

// The checks, in the order in which they run.
void checkHome(Report& report);
void checkDevice(Report& report);
void checkSettings(Report& report);
void checkMenu(Report& report);
void checkLog(Report& report);

// The commands throw std::runtime_error with the reason if they can't do their work.

/// Shows what the device sends, until the program is ended: the axes as bars, keys by name. Every client of
/// the daemon gets all events, so the plug-in misses none.
[[noreturn]] void watch(Report& report);
/// Writes a settings file with the defaults. Keeps the old one beside it, under the first of ".bak",
/// ".bak2", ... that is free.
void writeDefaults(const Report& report);
/// Packs log, settings, menu file and what was found into a ZIP, without the user's name and home folder.
void writeReport(Report& report, const std::string& path);

} // namespace doctor

#endif
