// Cnfg: reading finds what plain rules find, writing changes the line that was meant and no other.
//
// Input: a length n, n bytes of orders, and the file.

#include "check.h"
#include "cnfg.h"
#include "input.h"
#include "plain_config.h"
#include "scratch.h"

using fuzz::PlainConfig;
using fuzz::require;
using fuzz::requireSame;

namespace {

constexpr char kFile[] = "fuzz.ini";
constexpr int kMaxOrders = 2;
constexpr std::size_t kMaxSections = 3; // that are read in one go: each is a search through the file

struct Names {
  std::vector<std::string> sections{"S", ""};
  std::vector<std::string> parameters{"a", "b c"};
};

/// Names that occur in the file, so that most orders find something.
Names namesIn(const PlainConfig& config) {
  Names names;
  std::string name;
  std::string value;
  for (const std::string& line : config.lines()) {
    if (PlainConfig::isSection(line, name))
      names.sections.push_back(name);
    else if (PlainConfig::cut(line, name, value))
      names.parameters.push_back(name);
  }
  return names;
}

const std::string& oneOf(const std::vector<std::string>& names, fuzz::Input& orders) {
  return names[orders.byte() % names.size()];
}

/// The lines as a writer keeps them: bytes between line feeds, without the empty ones at the end.
std::vector<std::string> rawLines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  while (!lines.empty() && (lines.back().empty() || lines.back() == "\r"))
    lines.pop_back();
  return lines;
}

void readSection(Cnfg& cnfg, const PlainConfig& config, const std::string& section) {
  const PlainConfig::Parameters expected = config.parametersOf(section);
  require((cnfg.selectSection(section) == Cnfg::kOk) == config.hasSection(section), "section found or not");
  std::string name;
  std::string value;
  std::size_t count = 0;
  while (cnfg.readNextParameter(name, value, true) == Cnfg::kOk) {
    require(count < expected.size(), "no parameter more than there are");
    requireSame(name, expected[count].first, "names one after the other");
    requireSame(value, expected[count].second, "values one after the other");
    ++count;
  }
  require(count == expected.size(), "all parameters of a section");
  require(cnfg.mError == Cnfg::kNoMoreParameters && !cnfg.errorText().empty(), "the code stays in mError");
}

/// wanted  name of a parameter, index  a place, both there or not
void lookUp(Cnfg& cnfg, const PlainConfig& config, const std::string& section, const std::string& wanted,
            std::size_t index) {
  const PlainConfig::Parameters expected = config.parametersOf(section);
  std::string name;
  std::string value;
  int code = cnfg.readParameterAt(name, value, section, static_cast<unsigned>(index), true);
  require((code == Cnfg::kOk) == (index < expected.size()), "a parameter at each place");
  if (code == Cnfg::kOk)
    requireSame(name + "=" + value, expected[index].first + "=" + expected[index].second,
                "parameter at a place");
  const auto first = std::find_if(expected.begin(), expected.end(),
                                  [&wanted](const auto& parameter) { return parameter.first == wanted; });
  code = cnfg.readParameter(wanted, value, section, true);
  require((code == Cnfg::kOk) == (first != expected.end()), "parameter found by name or not");
  if (code == Cnfg::kOk)
    requireSame(value, first->second, "the first of two with one name wins");
}

/// Reads some of what the file holds; which, the file's size says.
void readSome(const std::string& path, const std::string& text) {
  const PlainConfig config(text);
  const Names names = namesIn(config);
  int status = -1;
  Cnfg cnfg(path, status);
  require(status == Cnfg::kOk, "a file that is there opens");
  for (std::size_t i = 0; i < std::min(kMaxSections, names.sections.size()); ++i) {
    const std::string& section = names.sections[(text.size() + i) % names.sections.size()];
    readSection(cnfg, config, section);
    if (!section.empty()) // that would be no section, but the place where reading is
      lookUp(cnfg, config, section, names.parameters[text.size() % names.parameters.size()],
             (text.size() + i) % 4);
  }
}

std::string withoutReturn(std::string line) {
  if (!line.empty() && line.back() == '\r')
    line.pop_back();
  return line;
}

/// One writing operation on a file of those lines. Gives its code, and the place of the line that it should
/// have changed.
int writeOne(Cnfg& cnfg, const Names& names, fuzz::Input& orders, const std::vector<std::string>& before,
             std::size_t& place, std::string& name, std::string& value) {
  const bool isByPlace = orders.flag();
  const std::string section = oneOf(names.sections, orders);
  name = oneOf(names.parameters, orders);
  const unsigned offset = orders.byte();
  value = orders.text(orders.byte() % 48);
  value = value.substr(0, value.find_first_of("#\r\n")); // it couldn't be read back otherwise

  place = before.size();
  std::string found;
  std::string ignored;
  std::size_t start = 0;
  while (start < before.size() && !(PlainConfig::isSection(before[start], found) && found == section))
    ++start;
  if (isByPlace) {
    if (start < before.size() && start + 1 + offset < before.size())
      place = start + 1 + offset;
    return cnfg.writeParameterAt(name, value, section, offset);
  }
  if (section.empty()) // goes on from somewhere; only for a section the place is known here
    return -1;
  for (std::size_t i = start + 1; i < before.size(); ++i) {
    if (PlainConfig::trimmed(before[i])[0] == '[')
      break;
    if (PlainConfig::cut(withoutReturn(before[i]), found, ignored) && found == name) {
      place = i;
      break;
    }
  }
  return cnfg.writeParameter(name, value, section);
}

/// What stood around name and value stands there still.
void checkSurroundings(const std::string& before, const std::string& after) {
  std::string name;
  std::string value;
  std::string tail;
  if (!PlainConfig::cut(before, name, value, &tail))
    return;
  const std::size_t blanks = before.find_first_not_of(" \t");
  requireSame(after.substr(0, after.find_first_not_of(" \t")), before.substr(0, blanks),
              "blanks in front stay");
  require(after.size() >= tail.size(), "the comment stays");
  requireSame(after.substr(after.size() - tail.size()), tail, "the comment stays");
}

void writeSome(const std::string& path, const Names& names, fuzz::Input& orders) {
  int status = -1;
  Cnfg cnfg(path, status);
  for (int i = 0; i < kMaxOrders && !orders.isAtEnd(); ++i) {
    const std::vector<std::string> before = rawLines(fuzz::scratch().read(kFile));
    std::size_t place = 0;
    std::string name;
    std::string value;
    const int code = writeOne(cnfg, names, orders, before, place, name, value);
    if (code == -1)
      continue;
    require((code == Cnfg::kOk) == (place < before.size()), "written if the line is there");
    require(cnfg.save() == Cnfg::kOk, "saved");
    const std::string saved = fuzz::scratch().read(kFile);
    const std::vector<std::string> after = rawLines(saved);
    require(after.size() == before.size(), "as many lines as before");
    for (std::size_t k = 0; k < after.size(); ++k)
      if (k != place)
        requireSame(after[k], withoutReturn(before[k]), "other lines stay");
    require(cnfg.save() == Cnfg::kOk && fuzz::scratch().read(kFile) == saved, "saving again changes nothing");
    if (code != Cnfg::kOk)
      continue;
    const std::string old = withoutReturn(before[place]);
    const std::string line = after[place];
    checkSurroundings(old, line);
    if (old.find_first_of("=\t", std::min(old.find_first_not_of(" \t"), old.size())) == std::string::npos)
      continue; // no separator: the value reads as part of the name
    std::string readName;
    std::string readValue;
    require(PlainConfig::cut(line, readName, readValue), "what was written is a parameter");
    requireSame(readName, name, "the name reads back");
    requireSame(readValue, PlainConfig::trimmed(value), "the value reads back");
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::string orderBytes = input.text(input.byte());
  const std::string text = input.rest();
  fuzz::scratch().write(kFile, text);
  const std::string path = fuzz::scratch().native(kFile);
  readSome(path, text);
  fuzz::Input orders(reinterpret_cast<const std::uint8_t*>(orderBytes.data()), orderBytes.size());
  writeSome(path, namesIn(PlainConfig(text)), orders);
  const std::string last = fuzz::scratch().read(kFile);
  if (last != text)
    readSome(path, last);
  return 0;
}
