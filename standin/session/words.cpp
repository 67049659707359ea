#include "words.h"

#include <charconv>
#include <cmath>

namespace session {

namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::size_t kLongestQuote = 40; ///< bytes of a bad word that a message shows

std::string_view withoutLeadingBlanks(std::string_view text) {
  const auto start = text.find_first_not_of(kBlanks);
  return start == std::string_view::npos ? std::string_view{} : text.substr(start);
}

/// Bytes of the UTF-8 character at the start of text, or 0 if there is none that is well formed.
std::size_t characterLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(0);
  const std::size_t length = first < 0x80                    ? 1
                             : first >= 0xC2 && first < 0xE0 ? 2
                             : first >= 0xE0 && first < 0xF0 ? 3
                             : first >= 0xF0 && first < 0xF5 ? 4
                                                             : 0;
  if (length == 0 || length > text.size())
    return 0;
  for (std::size_t i = 1; i < length; ++i)
    if ((byte(i) & 0xC0) != 0x80)
      return 0;
  // Overlong forms, surrogates and values above the last character show in the second byte.
  const bool isBad = length > 1 && ((first == 0xE0 && byte(1) < 0xA0) || (first == 0xED && byte(1) > 0x9F) ||
                                    (first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F));
  return isBad ? 0 : length;
}

} // namespace

Words::Words(std::string_view line) : mRest(withoutLeadingBlanks(line)) {}

bool Words::isAtEnd() const {
  return mRest.empty() || mRest.front() == '#';
}

std::string_view Words::word(const std::string& what) {
  if (isAtEnd())
    throw LineError(what + " is missing");
  const std::string_view found = mRest.substr(0, mRest.find_first_of(kBlanks));
  mRest = withoutLeadingBlanks(mRest.substr(found.size()));
  return found;
}

double Words::number(const std::string& what, double smallest, double largest) {
  const std::string_view found = word(what);
  double value = 0;
  const auto [end, error] = std::from_chars(found.data(), found.data() + found.size(), value);
  if (error == std::errc::invalid_argument || end != found.data() + found.size())
    throw LineError(what + " is no number: " + quoted(found));
  if (error != std::errc{} || !std::isfinite(value) || value < smallest || value > largest)
    throw LineError(what + " is out of range: " + quoted(found));
  return value;
}

std::int64_t Words::integer(const std::string& what, std::int64_t smallest, std::int64_t largest) {
  const std::string_view found = word(what);
  const bool isHex =
      found.size() > 2 && found[0] == '0' && (found[1] == 'x' || found[1] == 'X') && found[2] != '-';
  const char* start = found.data() + (isHex ? 2 : 0);
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(start, found.data() + found.size(), value, isHex ? 16 : 10);
  if (error == std::errc::invalid_argument || end != found.data() + found.size())
    throw LineError(what + " is no whole number: " + quoted(found));
  if (error != std::errc{} || value < smallest || value > largest)
    throw LineError(what + " is out of range (" + std::to_string(smallest) + " to " +
                    std::to_string(largest) + "): " + quoted(found));
  return value;
}

std::string Words::text(const std::string& what) {
  if (mRest.empty())
    throw LineError(what + " is missing");
  // Blanks at the end can't be seen in an editor, so they mean nothing.
  std::string found(mRest.substr(0, mRest.find_last_not_of(kBlanks) + 1));
  mRest = {};
  return found;
}

void Words::expectEnd() const {
  if (!isAtEnd())
    throw LineError("more than expected, from " + quoted(mRest) + " on");
}

void checkIsText(std::string_view line) {
  while (!line.empty()) {
    const auto first = static_cast<unsigned char>(line.front());
    if ((first < 0x20 && first != '\t') || first == 0x7F)
      throw LineError("not text: control character " + std::to_string(first));
    const std::size_t length = characterLength(line);
    if (length == 0)
      throw LineError("not text: no UTF-8");
    line.remove_prefix(length);
  }
}

std::string quoted(std::string_view word) {
  if (word.size() <= kLongestQuote)
    return "\"" + std::string(word) + "\"";
  std::size_t end = kLongestQuote;
  while (end > 0 && (static_cast<unsigned char>(word[end]) & 0xC0) == 0x80)
    --end; // not in the middle of a character
  return "\"" + std::string(word.substr(0, end)) + "...\"";
}

} // namespace session
