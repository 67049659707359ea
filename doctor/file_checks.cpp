// The files of the user's folder, and what writes the menu file: settings, menu, log.

#include <algorithm>
#include <climits>
#include <map>
#include <regex>
#include <sstream>

#include "cnfg.h"
#include "findings.h"
#include "keys/menu_lines.h"
#include "log_parameters.h"
#include "settings_parameters.h"

namespace doctor {

namespace {

/// Values of a number, or of a switch as 0 and 1, with what they do.
struct Oddity {
  const char* mKey; // or its end
  std::int32_t mFrom, mTo;
  const char* mCode;
  const char* mEffect;
};

constexpr Oddity kOddities[] = {
    {"SensBase", 0, 0, "divisor odd", "is no divisor: the default acts in its place"},
    {"SensBase", INT_MIN, -1, "divisor odd", "turns every direction round"},
    {"minThreshold", 1000, INT_MAX, "threshold odd", "is more than most devices reach"},
    {"minThreshold", INT_MIN, -1, "threshold odd", "never lets a movement end"},
    {"maxContMoveTime", 0, 0, "time odd", "switches cap and keys off"},
    {"maxContMoveTime", INT_MIN, -1, "time odd", "lets nobody type while the cap is held"},
    {"useInt3dIntrfce", 1, 1, "other plug-in", "leaves the cap to another plug-in"},
};

/// Returns a section's lines with their numbers, up to the next section, without blank lines and comments.
/// The plug-in stops at the first blank line.
std::vector<std::pair<int, std::string>> linesOf(const std::string& text, const std::string& section) {
  std::vector<std::pair<int, std::string>> lines;
  std::istringstream in(text);
  bool isInside = false;
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    line.erase(0, line.find_first_not_of(" \t\r"));
    if (line[0] == '[') // 0 at the end of an empty line
      isInside = line.compare(1, section.size() + 1, section + "]") == 0;
    else if (isInside && line[0] != 0 && line[0] != '#')
      lines.emplace_back(number, line);
  }
  return lines;
}

/// Adds a section's keys, and names those that the plug-in doesn't find.
template <class Table>
void checkSection(Report& report, Cnfg& cnfg, const char* section, const Table& table, std::string& missing) {
  for (const auto& [key, field, name, defaultValue, comment] : table) {
    std::string value;
    const bool isThere = cnfg.readParameter(key, value, section, true) == Cnfg::kOk;
    report.mData["settings"]["keys"].push_back({{"key", key},
                                                {"value", isThere ? Json(value) : Json()},
                                                {"default", defaultValue},
                                                {"meaning", comment + 2}});
    if (!isThere)
      missing += (missing.empty() ? "" : ", ") + std::string(key);
    std::int32_t number = field.index() == 2 ? Util::isOn(value) : toNumber(value);
    if (key == std::string("minThreshold")) // the plug-in uses its lower 16 bits
      number = static_cast<std::int16_t>(static_cast<std::uint16_t>(number));
    for (const Oddity& odd : kOddities) {
      if (isThere && std::string(key).find(odd.mKey) != std::string::npos && number >= odd.mFrom &&
          number <= odd.mTo)
        report.find(odd.mCode, std::string(key) + " = " + value + " " + odd.mEffect + ".");
    }
  }
}

} // namespace

void checkSettings(Report& report) {
  int status = Cnfg::kOk;
  Cnfg cnfg(report.mSettingsFile, status);
  report.mData["settings"] = {{"file", report.mSettingsFile},
                              {"there", report.read(report.mSettingsFile).has_value()}};
  std::string missing, logFile = kLogParameters[0].defaultValue;
  report.mLogLimit = kLogParameters[1].defaultValue;
  if (status == Cnfg::kOk) {
    checkSection(report, cnfg, kProgramSection, kProgramParameters, missing);
    checkSection(report, cnfg, kLogSection, kLogParameters, missing);
    if (missing.empty()) {
      cnfg.readParameter("logFile", logFile, kLogSection, true);
      cnfg.readParameter("maxSize", report.mLogLimit, kLogSection, true);
    } else
      report.find("key missing", "The settings file lacks " + missing +
                                     ", or has a blank line before: the next start writes the defaults.");
  }
  if (logFile.empty())
    logFile = "forgot_to_name_this_file_log.txt"; // as the log does
  report.mLogFile = logFile.find('\\') != std::string::npos ? logFile : report.mFolder + "\\" + logFile;
}

void checkMenu(Report& report) {
  const std::string reader = report.mModuleFolder + "OvScribe2018.dll";
  report.mData["menu reader"] = {{"file", reader}, {"there", Util::fileExists(reader)}};
  if (!Util::fileExists(reader))
    report.find("reader missing", "The menu reader '" + reader + "' is missing.");
  std::vector<std::string> modes, names, values;
  const auto text = report.read(report.mMenuFile);
  const bool isThere = readMenuLines(
      report.mMenuFile, [&](const auto& name, const auto&) { modes.push_back(name); },
      [&](const auto& name, const auto& value) { names.push_back(name), values.push_back(value); });
  Json& data =
      report.mData["menu"] = {{"file", report.mMenuFile}, {"there", isThere}, {"modes", modes.size()}};
  if (!isThere)
    return report.find("menu missing", "There is no menu file yet: no key has a macro.");
  if (modes.size() < 3)
    report.find("modes missing", "The menu file names " + std::to_string(modes.size()) + " modes of three.");
  const auto lines = linesOf(text.value_or(""), "MenuBar");
  for (std::size_t i = 0; i < lines.size(); ++i) {
    std::string macro, gives = "no key: it comes after the section's end";
    if (i < values.size() && cutMacro(values[i], macro)) {
      gives = "key " + std::to_string(report.mKeyNames.size());
      report.mKeyNames.push_back(names[i] + " (" + macro + ")");
    } else if (i < values.size()) {
      gives = "no key: nothing comes after a }";
    }
    data["lines"].push_back({{"line", lines[i].first}, {"gives", gives}, {"types", macro}});
  }
  if (lines.size() > values.size())
    report.find("menu cut short", "The menu file isn't read from line " +
                                      std::to_string(lines[values.size()].first) +
                                      " on: a blank line, or one without a name, ends the section.");
}

namespace {

struct Advice {
  const char* mStart; // of the error's text
  const char* mNext;
  bool mIsSeenToday = false; // another check reports whether it is so now
};

constexpr Advice kAdvice[] = {
    {"Error in ov", "See the device.", true},
    {"Error: OvScribe does not exist", "See the menu reader.", true},
    {"keyEvent (N') too big (max. is -N)", "A key came before the menu file: wait until it is loaded."},
    {"keyEvent (", "The menu file has fewer entries than the device has keys."},
    {"Error creating reading thread!", "Nothing comes from the device: restart the host."},
    {"Error AutoCadProxy()", "The pump didn't start: unload the plug-in, load it again, and keep the log."},
    {"Error TimerProc()", "The pump has stopped: unload the plug-in, load it again, and keep the log."},
    {"ViewP could not be retrieved!", "Click into a viewport with a 3D view, or restart the host."},
    {"Error transformSelection()", "Unlock the layers of what is selected."},
    {"Writing default", "Give yourself the right to write it, and make room on the disk."},
    {"", "A call of the host failed, and that step is lost. If it goes on, run ov_doctor report."},
};

/// Records of errors that differ in numbers alone.
struct ErrorKind {
  int mCount = 0, mSinceHeader = 0; // a header begins each load and each new file
  std::string mLast;                // date and time
};

} // namespace

void checkLog(Report& report) {
  const auto text = report.read(report.mLogFile);
  Json& data = report.mData["log"] = {{"file", report.mLogFile}, {"there", text.has_value()}};
  if (!text)
    return report.find("never loaded",
                       "There is no log: the plug-in never ran, or logToFile is off, or logFile is no good.");
  const std::regex header("Orvane logfile '.*' opened at (.{15}).*"), number("[0-9]+(?=[')])");
  const std::regex record("([0-9:.]{12})\\|(...)(?:\\|[^|]*){4}\\| ([^\\r]*)\\r?");
  std::map<std::string, ErrorKind> byText;
  std::string date, load, unload;
  std::istringstream in(*text);
  std::smatch found;
  for (std::string line; std::getline(in, line);) {
    // The regular expressions take stack for each character.
    line.resize(std::min<std::size_t>(line.size(), 500));
    if (std::regex_match(line, found, header)) {
      date = found[1];
      load = "";
      for (auto& kind : byText)
        kind.second.mSinceHeader = 0;
    } else if (std::regex_match(line, found, record)) {
      const std::string time = date + " " + found[1].str() + " UTC";
      load = load.empty() ? time : load;
      unload = found[3] == "Logging::~Logging(): destructing ..." ? time : "not yet";
      if (found[2] == "ERR") {
        ErrorKind& kind = byText[std::regex_replace(found[3].str(), number, "N")];
        kind = {kind.mCount + 1, kind.mSinceHeader + 1, time};
      }
    }
  }
  data.update(
      {{"bytes", text->size()}, {"limit, kB", report.mLogLimit}, {"begun", load}, {"unloaded", unload}});
  std::vector<std::pair<std::string, ErrorKind>> kinds(byText.begin(), byText.end());
  const auto isBefore = [](auto& a, auto& b) { return a.second.mSinceHeader > b.second.mSinceHeader; };
  std::stable_sort(kinds.begin(), kinds.end(), isBefore);
  for (const auto& [kind, seen] : kinds) {
    const Advice* advice = kAdvice;
    while (kind.rfind(advice->mStart, 0) != 0)
      ++advice;
    data["errors"].push_back(
        {{"count", seen.mCount}, {"last", seen.mLast}, {"text", kind}, {"next", advice->mNext}});
    if (seen.mSinceHeader > 0 && !advice->mIsSeenToday)
      report.find("error in log",
                  "Since " + load + ", count " + std::to_string(seen.mSinceHeader) + ": " + kind,
                  advice->mNext);
  }
}

} // namespace doctor
