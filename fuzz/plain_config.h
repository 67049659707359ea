#ifndef FUZZ_PLAIN_CONFIG_H
#define FUZZ_PLAIN_CONFIG_H

#include <string>
#include <utility>
#include <vector>

namespace fuzz {

/// The rules of section-and-parameter files once more, without a file, a position or an error code, and with
/// nothing in common with Cnfg: what Cnfg and its users find is held against what this finds.
class PlainConfig {
public:
  using Parameters = std::vector<std::pair<std::string, std::string>>;

  explicit PlainConfig(const std::string& text) : mLines(linesOf(text)) {}

  bool hasSection(const std::string& section) const { return behind(section) != kNone; }
  /// Parameters of the first section of that name, values trimmed, up to the first line that ends it.
  Parameters parametersOf(const std::string& section) const {
    Parameters found;
    const std::size_t start = behind(section);
    for (std::size_t i = start; start != kNone && i < mLines.size(); ++i) {
      const std::string& line = mLines[i];
      if (!line.empty() && (line[0] == '#' || line[0] == '\r'))
        continue;
      std::string name;
      std::string value;
      if (!cut(line, name, value))
        break;
      found.emplace_back(name, value);
    }
    return found;
  }
  const std::vector<std::string>& lines() const { return mLines; }

  /// Takes a line apart; false if it gives no name.
  static bool cut(const std::string& line, std::string& name, std::string& value) {
    std::size_t i = 0;
    while (i < line.size() && (line[i] == ' ' || line[i] == '\t'))
      ++i;
    if (i == line.size() || line[i] == '#' || line[i] == '[')
      return false;
    name.clear();
    for (; i < line.size() && line[i] != '=' && line[i] != '\t'; ++i)
      name += line[i];
    while (!name.empty() && name.back() == ' ')
      name.pop_back();
    while (i < line.size() && (line[i] == '=' || line[i] == '\t'))
      ++i;
    value.clear();
    for (; i < line.size() && line[i] != '#' && line[i] != '\r' && line[i] != '\n'; ++i)
      value += line[i];
    value = trimmed(value);
    return !name.empty();
  }
  static std::string trimmed(std::string text) {
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
      text.pop_back();
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
      text.erase(0, 1);
    return text;
  }

  /// Name of the section that a line begins; false if it begins none.
  static bool isSection(const std::string& line, std::string& name) {
    const std::string text = trimmed(line);
    if (text.empty() || text[0] != '[' || text.find(']') == std::string::npos)
      return false;
    name = text.substr(1, text.find(']') - 1);
    return true;
  }

private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  /// Lines as a reader sees them: the carriage return of a line end is no part of the line.
  static std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::string line;
    for (const char c : text) {
      if (c != '\n') {
        line += c;
        continue;
      }
      if (!line.empty() && line.back() == '\r')
        line.pop_back();
      lines.push_back(line);
      line.clear();
    }
    if (!line.empty())
      lines.push_back(line);
    return lines;
  }

  /// Place of the line behind the first section line of that name.
  std::size_t behind(const std::string& section) const {
    std::string name;
    for (std::size_t i = 0; i < mLines.size(); ++i)
      if (isSection(mLines[i], name) && name == section)
        return i + 1;
    return kNone;
  }

  std::vector<std::string> mLines;
};

} // namespace fuzz

#endif
