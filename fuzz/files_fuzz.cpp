// The files that the plug-in reads, against plain rules: section-and-parameter files, the settings and the menu.
//
// Input: which of the three, and the file.

#include <algorithm>
#include <sstream>

#include "cnfg.h"
#include "engine_rig.h"
#include "engine_state.h"
#include "input.h"
#include "require.h"
#include "settings.h"

using fuzz::require;
using fuzz::requireSame;

namespace {

// ---- A second implementation of the rules, without a file, a position or an error code

using Parameters = std::vector<std::pair<std::string, std::string>>;

std::string trimmed(std::string text) {
  text.erase(text.find_last_not_of(" \t") + 1);
  return text.substr(std::min(text.find_first_not_of(" \t"), text.size()));
}

/// Splits a line. Returns false if it has no name.
bool cut(const std::string& line, std::string& name, std::string& value) {
  const std::string rest = line.substr(std::min(line.find_first_not_of(" \t"), line.size()));
  const std::size_t separator = std::min(rest.find_first_of("=\t"), rest.size());
  name = rest.substr(0, separator);
  name.erase(name.find_last_not_of(' ') + 1);
  value = rest.substr(std::min(rest.find_first_not_of("=\t", separator), rest.size()));
  value = trimmed(value.substr(0, value.find_first_of("#\r")));
  return !name.empty() && name[0] != '#' && name[0] != '[';
}

/// Sets the name of the section that a line begins. Returns false if it begins none.
bool isSection(const std::string& line, std::string& name) {
  const std::string text = trimmed(line);
  const std::size_t close = text.find(']');
  if (text.empty() || text[0] != '[' || close == std::string::npos)
    return false;
  name = text.substr(1, close - 1);
  return true;
}

/// Returns the lines of a text. The carriage return of a line end is no part of the line.
std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    if (!in.eof() && !line.empty() && line.back() == '\r')
      line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

/// Returns the names of all sections, in order.
std::vector<std::string> sectionsOf(const std::string& text) {
  std::vector<std::string> names;
  std::string name;
  for (const std::string& line : linesOf(text))
    if (isSection(line, name))
      names.push_back(name);
  return names;
}

/// Returns the parameters of the first section of that name, up to the first line that ends it.
Parameters parametersOf(const std::string& text, const std::string& section) {
  const std::vector<std::string> lines = linesOf(text);
  Parameters found;
  std::string name, value;
  const auto isWanted = [&](const std::string& line) { return isSection(line, name) && name == section; };
  auto line = std::find_if(lines.begin(), lines.end(), isWanted);
  while (line != lines.end() && ++line != lines.end()) {
    if (!line->empty() && (line->front() == '#' || line->front() == '\r'))
      continue;
    if (!cut(*line, name, value))
      break;
    found.emplace_back(name, value);
  }
  return found;
}

Parameters::const_iterator firstOf(const Parameters& parameters, const std::string& name) {
  return std::find_if(parameters.begin(), parameters.end(),
                      [&name](const auto& parameter) { return parameter.first == name; });
}

// ---- Section-and-parameter files: reading finds what the rules find

constexpr char kFile[] = "fuzz.ini";
constexpr std::size_t kMaxReads = 3; // sections of a file, parameters of a section: each is a search

void readSection(Cnfg& cnfg, const std::string& text, const std::string& section, bool isThere) {
  const Parameters expected = parametersOf(text, section);
  require((cnfg.selectSection(section) == Cnfg::kOk) == isThere, "section or none");
  Parameters found;
  std::string name, value;
  while (cnfg.readNextParameter(name, value, true) == Cnfg::kOk)
    found.emplace_back(name, value);
  require(found == expected, "all parameters of a section");
  require(cnfg.mError == Cnfg::kNoMoreParameters && !cnfg.errorText().empty(), "the code stays in mError");
  if (section.empty()) // means the place where reading is
    return;
  for (std::size_t i = 0; i < std::min(kMaxReads, expected.size()); ++i) {
    const auto& [wanted, theirs] = expected[i];
    require(cnfg.readParameterAt(name, value, section, static_cast<unsigned>(i), true) == Cnfg::kOk &&
                name == wanted && value == theirs,
            "parameter at a place");
    require(cnfg.readParameter(wanted, value, section, true) == Cnfg::kOk, "parameter found by name");
    require(value == firstOf(expected, wanted)->second, "the first of two with one name wins");
  }
  const auto end = static_cast<unsigned>(expected.size());
  require(cnfg.readParameterAt(name, value, section, end, true) != Cnfg::kOk, "no parameter after the last");
  require(cnfg.readParameter("=", value, section, true) == Cnfg::kNoParameter || !isThere, "no such name");
}

void tryConfig(const std::string& text) {
  rig::home().write(kFile, text);
  int status = -1;
  Cnfg cnfg(rig::home().native(kFile), status);
  require(status == Cnfg::kOk, "a file that is there opens");
  std::vector<std::string> sections = sectionsOf(text);
  sections.resize(std::min(sections.size(), kMaxReads));
  for (const std::string& section : sections)
    readSection(cnfg, text, section, true);
  readSection(cnfg, text, "]", false); // no name has a bracket
}

// ---- Settings: the values are those of the file, or all are the defaults

/// Returns the file that a run of the plug-in leaves.
std::string afterRun(const std::string& text) {
  rig::home().write(rig::kSettingsFile, text);
  { const Settings settings; }
  return rig::home().read(rig::kSettingsFile);
}

/// Returns a value as the settings write it. The default determines its type.
std::string canonical(const std::string& value, const std::string& usual) {
  if (usual == "on" || usual == "off")
    return value.find("on") != std::string::npos ? "on" : "off";
  if (usual.empty() || usual.find_first_not_of("0123456789") != std::string::npos)
    return value;
  const long long number = std::strtoll(value.c_str(), nullptr, 10);
  return std::to_string(std::clamp(number, -2147483648LL, 2147483647LL));
}

void trySettings(const std::string& text) {
  static const std::string sDefaults = afterRun("");
  const std::string written = afterRun(text);
  bool isWhole = true;
  Parameters expected, found;
  for (const char* const section : {"PROGRAM", "LOGGING"}) {
    const Parameters given = parametersOf(text, section);
    for (const auto& [name, usual] : parametersOf(sDefaults, section)) {
      const auto first = firstOf(given, name);
      isWhole = isWhole && first != given.end();
      if (isWhole)
        expected.emplace_back(name, canonical(first->second, usual));
    }
    for (const auto& parameter : parametersOf(written, section))
      found.push_back(parameter);
  }
  require(isWhole ? found == expected : written == sDefaults, "values of the file, or the defaults");
  requireSame(afterRun(written), written, "the second writing is the first one");
}

// ---- The menu: modes and macros are those of the rules

void tryMenu(const std::string& text, AutoCadProxy& engine) {
  rig::home().write(rig::kMenuFile, text);
  engine.loadMenufile();
  std::vector<std::string> modes, macros;
  for (const auto& [name, value] : parametersOf(text, "Modes"))
    modes.push_back(name);
  for (const auto& [name, value] : parametersOf(text, "MenuBar")) {
    const std::size_t start = value.find('}') + 1;
    if (start > 0 && start < value.size())
      macros.push_back(value.substr(start, value.find('|', start) - start));
  }
  require(engine.mModes == modes && engine.mMenuIsLoaded == !modes.empty(), "modes");
  require(engine.mMenuEntries == macros, "macros");
  for (std::size_t key = 0; key < macros.size(); ++key)
    engine.execApplFunction(static_cast<int>(key));
  host::runQueue();
}

/// Returns the plug-in, made once, without a log file that would grow. Each call resets it and its host.
OvAutoCad& freshEngine() {
  static const std::unique_ptr<OvAutoCad> sPluginP = [] {
    rig::useOwnHome();
    rig::home().write(rig::kSettingsFile, rig::settingsText({{"logToFile", "off"}}));
    fake_devlink::reset();
    rig::freshSurroundings();
    auto pluginP = std::make_unique<OvAutoCad>();
    pluginP->mIsToWatchConnection = false;
    return pluginP;
  }();
  rig::freshSurroundings();
  rig::resetEngine(*sPluginP);
  return *sPluginP;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  OvAutoCad& plugin = freshEngine();
  fuzz::Input input(data, size);
  const int kind = input.byte() % 3;
  if (kind == 0)
    tryConfig(input.rest());
  else if (kind == 1)
    trySettings(input.rest());
  else
    tryMenu(input.rest(), *plugin.mAutoCadProxyP);
  return 0;
}
