#include "menu_expression.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "state.h"
#include "text.h"

namespace host {

namespace {

constexpr int kMaxDepth = 32;

/// Reads a menu's text from left to right. Operations return false for invalid text.
class MenuText {
public:
  explicit MenuText(const std::string& text) : mText(text) {}

  /// Copies up to one of the characters in ends, or to the end of the text, and evaluates the calls on the
  /// way.
  bool readPart(const char* ends, int depth, std::string& result) {
    while (mPlace < mText.size() && !std::strchr(ends, mText[mPlace])) {
      if (mText.compare(mPlace, 2, "$(") != 0)
        result += mText[mPlace++];
      else if (!readCall(depth + 1, result))
        return false;
    }
    return true;
  }

private:
  bool readCall(int depth, std::string& result) {
    if (depth > kMaxDepth)
      return false;
    mPlace += 2;
    std::vector<std::string> parts;
    do {
      parts.emplace_back();
      if (!readPart(",)", depth, parts.back()) || mPlace >= mText.size())
        return false;
    } while (mText[mPlace++] == ',');
    return call(parts, result);
  }

  /// parts  the name, then the arguments
  static bool call(const std::vector<std::string>& parts, std::string& result) {
    const std::string& name = parts[0];
    const auto number = [&parts](std::size_t i) { return std::atof(parts[i].c_str()); };
    if (name == "getvar" && parts.size() == 2)
      result += std::to_string(variable(parts[1]));
    else if (name == "if" && (parts.size() == 3 || parts.size() == 4))
      result += number(1) != 0 ? parts[2] : parts.size() == 4 ? parts[3] : "";
    else if (name == "=" && parts.size() == 3)
      result += number(1) == number(2) ? "1" : "0";
    else if (name == "!=" && parts.size() == 3)
      result += number(1) != number(2) ? "1" : "0";
    else if (name == "<" && parts.size() == 3)
      result += number(1) < number(2) ? "1" : "0";
    else if (name == ">" && parts.size() == 3)
      result += number(1) > number(2) ? "1" : "0";
    else
      return false;
    return true;
  }

  const std::string mText;
  std::size_t mPlace = 0;
};

/// Removes a word and the blanks after it from the front of a text. Returns false if the text begins
/// otherwise.
bool take(std::string& text, const std::string& word) {
  if (text.compare(0, word.size(), word) != 0)
    return false;
  text.erase(0, std::min(text.find_first_not_of(' ', word.size()), text.size()));
  return true;
}

/// Removes a text in quotes from the front. In it, a backslash escapes the next character. Returns false if
/// there is none.
bool takeQuoted(std::string& text, std::string& value) {
  std::size_t end = 1;
  for (; end < text.size() && text[end] != '"'; ++end) {
    if (text[end] == '\\')
      ++end;
    value += text.substr(end, 1);
  }
  return text[0] == '"' && end < text.size() && take(text, text.substr(0, end + 1));
}

bool evaluateMenu(const std::string& text, std::string& result) {
  // Other letters name places in menus, which this host doesn't have.
  return text.compare(0, 2, "M=") == 0 && MenuText(text.substr(2)).readPart("", 0, result);
}

} // namespace

bool evaluateExpression(const std::wstring& text, std::vector<std::wstring>& inputs) {
  std::string rest = narrow(text);
  if (!take(rest, "(command "))
    return false;
  while (rest != ")") {
    const bool isMenu = take(rest, "(menucmd ");
    std::string value, result;
    if (!takeQuoted(rest, value) || (isMenu && !(take(rest, ")") && evaluateMenu(value, result))))
      return false;
    inputs.push_back(widen(isMenu ? result : value));
  }
  return true;
}

} // namespace host
