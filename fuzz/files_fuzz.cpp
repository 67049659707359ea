// The files that the plug-in reads and writes, against plain rules: section-and-parameter files, the settings
// and the menu.
//
// Input: which of the three, for the first one orders behind their length, and the file.

#include <sstream>

#include "check.h"
#include "cnfg.h"
#include "engine_home.h"
#include "input.h"
#include "parameter.h"
#include "settings.h"

using fuzz::require;
using fuzz::requireSame;

namespace {

// ---- The rules of such files a second time, without a file, a position or an error code

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

using Parameters = std::vector<std::pair<std::string, std::string>>;

std::string trimmed(std::string text) {
  text.erase(text.find_last_not_of(" \t") + 1);
  return text.substr(std::min(text.find_first_not_of(" \t"), text.size()));
}

/// Takes a line apart; false if it gives no name.
bool cut(const std::string& line, std::string& name, std::string& value) {
  const std::string rest = line.substr(std::min(line.find_first_not_of(" \t"), line.size()));
  const std::size_t separator = std::min(rest.find_first_of("=\t"), rest.size());
  name = rest.substr(0, separator);
  name.erase(name.find_last_not_of(' ') + 1);
  value = rest.substr(std::min(rest.find_first_not_of("=\t", separator), rest.size()));
  value = value.substr(0, value.find_first_of("#\r"));
  return !name.empty() && name[0] != '#' && name[0] != '[';
}

/// Name of the section that a line begins; false if it begins none.
bool isSection(const std::string& line, std::string& name) {
  const std::string text = trimmed(line);
  const std::size_t close = text.find(']');
  if (text.empty() || text[0] != '[' || close == std::string::npos)
    return false;
  name = text.substr(1, close - 1);
  return true;
}

struct PlainConfig {
  /// The carriage return of a line end is no part of the line.
  explicit PlainConfig(std::string text) {
    for (std::size_t end = 0; (end = text.find('\n')) != std::string::npos; text.erase(0, end + 1))
      lines.push_back(text.substr(0, end > 0 && text[end - 1] == '\r' ? end - 1 : end));
    if (!text.empty())
      lines.push_back(text);
  }
  /// Place of the line behind the first section line of that name; kNone if there is none.
  std::size_t behind(const std::string& section) const {
    std::string name;
    for (std::size_t i = 0; i < lines.size(); ++i)
      if (isSection(lines[i], name) && name == section)
        return i + 1;
    return kNone;
  }
  /// Parameters of the first section of that name, values trimmed, up to the first line that ends it.
  Parameters parametersOf(const std::string& section) const {
    Parameters found;
    std::string name, value;
    for (std::size_t i = behind(section); i < lines.size(); ++i) {
      if (!lines[i].empty() && (lines[i][0] == '#' || lines[i][0] == '\r'))
        continue;
      if (!cut(lines[i], name, value))
        break;
      found.emplace_back(name, trimmed(value));
    }
    return found;
  }
  /// The line that a writer's search by name finds in a section; kNone if there is none.
  std::size_t lineOf(const std::string& section, const std::string& wanted) const {
    std::string name, value;
    for (std::size_t i = behind(section); i < lines.size() && !isSection(lines[i], name); ++i)
      if (cut(lines[i], name, value) && name == wanted)
        return i;
    return kNone;
  }

  std::vector<std::string> lines;
};

/// A line with a new name and value; what stood around them stays.
std::string rewritten(const std::string& old, const std::string& name, const std::string& value) {
  const std::size_t start = std::min(old.find_first_not_of(" \t"), old.size());
  const std::size_t separator = std::min(old.find_first_of("=\t", start), old.size());
  const std::size_t behind = std::min(old.find_first_not_of("=\t", separator), old.size());
  return old.substr(0, start) + padded(name, 32) + old.substr(separator, behind - separator) + " " +
         padded(value, 34) + old.substr(std::min(old.find_first_of("#\r\n", behind), old.size()));
}

Parameters::const_iterator firstOf(const Parameters& parameters, const std::string& name) {
  return std::find_if(parameters.begin(), parameters.end(),
                      [&name](const auto& parameter) { return parameter.first == name; });
}

// ---- Section-and-parameter files: reading finds what the rules find, writing changes one line

constexpr char kFile[] = "fuzz.ini";
constexpr int kMaxOrders = 2;
constexpr std::size_t kMaxSections = 3; // that are read: each is a search through the file

/// Names of sections and parameters, those of the file among them, so that most orders find something.
struct Names {
  explicit Names(const PlainConfig& config) {
    std::string name, value;
    for (const std::string& line : config.lines) {
      if (isSection(line, name))
        sections.push_back(name);
      else if (cut(line, name, value))
        parameters.push_back(name);
    }
  }
  std::vector<std::string> sections{"S", ""};
  std::vector<std::string> parameters{"a", "b c"};
};

/// wanted  name of a parameter, index  a place, both there or not
void readSection(Cnfg& cnfg, const PlainConfig& config, const std::string& section, const std::string& wanted,
                 std::size_t index) {
  const Parameters expected = config.parametersOf(section);
  require((cnfg.selectSection(section) == Cnfg::kOk) == (config.behind(section) != kNone), "section or none");
  Parameters found;
  std::string name, value;
  while (cnfg.readNextParameter(name, value, true) == Cnfg::kOk)
    found.emplace_back(name, value);
  require(found == expected, "all parameters of a section");
  require(cnfg.mError == Cnfg::kNoMoreParameters && !cnfg.errorText().empty(), "the code stays in mError");
  if (section.empty()) // that would be no section, but the place where reading is
    return;
  bool isFound = cnfg.readParameterAt(name, value, section, static_cast<unsigned>(index), true) == Cnfg::kOk;
  require(isFound == (index < expected.size()), "a parameter at each place");
  require(!isFound || expected[index] == std::make_pair(name, value), "parameter at a place");
  const auto first = firstOf(expected, wanted);
  isFound = cnfg.readParameter(wanted, value, section, true) == Cnfg::kOk;
  require(isFound == (first != expected.end()), "parameter found by name or not");
  require(!isFound || value == first->second, "the first of two with one name wins");
}

/// Reads some of what the file holds; which, the file's size says.
void readSome(const std::string& text) {
  const PlainConfig config(text);
  const Names names(config);
  int status = -1;
  Cnfg cnfg(rig::home().native(kFile), status);
  require(status == Cnfg::kOk, "a file that is there opens");
  for (std::size_t i = text.size(); i < text.size() + std::min(kMaxSections, names.sections.size()); ++i)
    readSection(cnfg, config, names.sections[i % names.sections.size()],
                names.parameters[text.size() % names.parameters.size()], i % 4);
}

void writeSome(PlainConfig expected, fuzz::Input orders) {
  const Names names(expected);
  std::vector<std::string>& lines = expected.lines;
  while (!lines.empty() && lines.back().empty())
    lines.pop_back();
  int status = -1;
  Cnfg cnfg(rig::home().native(kFile), status);
  for (int i = 0; i < kMaxOrders && !orders.isAtEnd(); ++i) {
    const bool isByPlace = orders.flag();
    const std::string& section = names.sections[orders.byte() % names.sections.size()];
    const std::string& name = names.parameters[orders.byte() % names.parameters.size()];
    const unsigned offset = orders.byte();
    std::string value = orders.text(orders.byte() % 48);
    value = value.substr(0, value.find_first_of("\r\n"));
    if (!isByPlace && section.empty()) // goes on from somewhere
      continue;
    const std::size_t start = expected.behind(section);
    const std::size_t place =
        !isByPlace ? expected.lineOf(section, name) : (start == kNone ? kNone : start + offset);
    const int code = isByPlace ? cnfg.writeParameterAt(name, value, section, offset)
                               : cnfg.writeParameter(name, value, section);
    require((code == Cnfg::kOk) == (place < lines.size()), "written if the line is there");
    if (place < lines.size())
      lines[place] = rewritten(lines[place], name, value);
    std::string text;
    for (const std::string& line : lines)
      text += line + "\n";
    for (const char* const what : {"the one line is changed", "saving again changes nothing"}) {
      require(cnfg.save() == Cnfg::kOk, "saved");
      requireSame(rig::home().read(kFile), text, what);
    }
  }
}

void tryConfig(fuzz::Input input) {
  const std::string orders = input.text(input.byte());
  const std::string text = input.rest();
  rig::home().write(kFile, text);
  readSome(text);
  writeSome(PlainConfig(text), {reinterpret_cast<const std::uint8_t*>(orders.data()), orders.size()});
  readSome(rig::home().read(kFile));
}

// ---- Settings: the values are those of the file, or all are the defaults

/// The file that a run of the plug-in leaves.
std::string afterRun(const std::string& text) {
  rig::home().write(rig::kSettingsFile, text);
  { const Settings settings; }
  return rig::home().read(rig::kSettingsFile);
}

/// A value as the settings write it; what it is, the default says.
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
    const Parameters given = PlainConfig(text).parametersOf(section);
    for (const auto& [name, usual] : PlainConfig(sDefaults).parametersOf(section)) {
      const auto first = firstOf(given, name);
      isWhole = isWhole && first != given.end();
      if (isWhole)
        expected.emplace_back(name, canonical(first->second, usual));
    }
    for (const auto& parameter : PlainConfig(written).parametersOf(section))
      found.push_back(parameter);
  }
  require(isWhole ? found == expected : written == sDefaults, "values of the file, or the defaults");
  requireSame(afterRun(written), written, "the second writing is the first one");
}

// ---- The menu: modes and macros are those of the rules; a key types its macro, cut at ";"

constexpr std::size_t kMaxKeys = 4; // that are pressed

void tryMenu(const std::string& text, AutoCadProxy& engine) {
  rig::home().write(rig::kMenuFile, text);
  const PlainConfig config(text);
  engine.loadMenufile();
  const Parameters modes = config.parametersOf("Modes");
  require(engine.mMenuIsLoaded == !modes.empty(), "loaded if there is a mode");
  for (int mode = -1; mode <= static_cast<int>(modes.size()); ++mode) {
    engine.mViewMode = mode;
    const auto place = static_cast<std::size_t>(mode);
    requireSame(engine.getModeName(), place < modes.size() ? modes[place].first : "Unknown", "mode's name");
  }
  std::vector<std::string> macros;
  for (const auto& [name, value] : config.parametersOf("MenuBar")) {
    const std::size_t behind = value.find('}') + 1;
    if (behind > 0 && behind < value.size())
      macros.push_back(value.substr(behind, value.find('|', behind) - behind));
  }
  require(engine.mMenuEntries == macros, "macros");

  std::wstring expected, found;
  for (std::size_t key = 0; key < std::min(kMaxKeys, macros.size()); ++key) {
    engine.execApplFunction(static_cast<int>(key));
    if (!macros[key].empty())
      expected += L"\x1B\x1B|";
    std::istringstream in(macros[key]);
    for (std::string token; std::getline(in, token, ';');) {
      std::wstring typed;
      for (const char c : token)
        typed += static_cast<wchar_t>(static_cast<unsigned char>(c)); // the code page here
      typed = (token.substr(0, 2) == "M=" ? L"(command (menucmd \"" + typed + L"\"))" : typed) + L"\n";
      expected += typed.c_str() + std::wstring(L"|"); // the host takes it up to a NUL
    }
  }
  host::runQueue();
  for (const host::HistoryLine& line : host::history())
    if (line.isTyped)
      found += line.text + L"|";
  require(found == expected, "a key's macro, token by token");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  OvAutoCad& plugin = fuzz::freshEngine();
  fuzz::Input input(data, size);
  const int kind = input.byte() % 3;
  if (kind == 0)
    tryConfig(input);
  else if (kind == 1)
    trySettings(input.rest());
  else
    tryMenu(input.rest(), *plugin.mAutoCadProxyP);
  return 0;
}
