#include "words.h"

#include <charconv>
#include <cmath>

namespace session {

namespace {

constexpr std::string_view kBlanks = " \t";

std::string_view withoutLeadingBlanks(std::string_view text) {
  const auto start = text.find_first_not_of(kBlanks);
  return start == std::string_view::npos ? std::string_view{} : text.substr(start);
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
    throw LineError(what + " is not a number: " + quoted(found));
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

std::string quoted(std::string_view word) {
  return "\"" + std::string(word) + "\"";
}

} // namespace session
