#include "number_text.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace {

constexpr int kDigits = 6;
constexpr std::uint32_t kLeast = 100000; // smallest number of six digits
constexpr std::uint32_t kMost = 999999;  // largest
constexpr int kSmallestExponent = -4;    // of numbers that are written without an exponent
constexpr double kHair = 1e-6;           // of the last digit; the scaling below is some 10000 times better
constexpr double kPowers[] = {1e-4, 1e-3, 1e-2, 1e-1, 1e0, 1e1, 1e2, 1e3, 1e4, 1e5};
constexpr double kScales[] = {1e9, 1e8, 1e7, 1e6, 1e5, 1e4, 1e3, 1e2, 1e1, 1e0}; // exact, each of them

/// Puts the digits into the text, with the point where it belongs. All six are copied, zeros at the end too:
/// a copy of known size is one instruction or two, and what is behind count doesn't matter.
/// exponent  place of the first digit: 0 for units
std::size_t place(char* to, const char* digits, int count, int exponent) {
  if (exponent < 0) {
    std::memcpy(to, "0.000", 5);
    std::memcpy(to + 1 - exponent, digits, kDigits);
    return static_cast<std::size_t>(1 - exponent + count);
  }
  std::memcpy(to, digits, kDigits);
  if (count <= exponent + 1)
    return static_cast<std::size_t>(exponent + 1);
  std::memmove(to + exponent + 2, digits + exponent + 1, kDigits - 1);
  to[exponent + 1] = '.';
  return static_cast<std::size_t>(count + 1);
}

} // namespace

std::size_t writeNumber(char* to, double value) {
  const double size = std::fabs(value);
  if (!(size >= kPowers[0] && size < kMost))
    return 0;
  std::size_t index = 0;
  while (index + 1 < sizeof kPowers / sizeof *kPowers && size >= kPowers[index + 1])
    ++index;
  const double scaled = size * kScales[index];
  const auto whole = static_cast<std::uint32_t>(scaled);
  const double rest = scaled - whole;
  // Halfway between two digits the scaling's own error would decide.
  if (std::fabs(rest - 0.5) < kHair)
    return 0;
  const std::uint32_t number = whole + (rest > 0.5 ? 1 : 0);
  if (number < kLeast || number > kMost)
    return 0;
  char digits[2 * kDigits]; // what is copied behind the last digit may be anything
  std::to_chars(digits, digits + kDigits, number);
  int count = kDigits;
  while (digits[count - 1] == '0')
    --count;
  std::size_t sign = 0;
  if (value < 0)
    to[sign++] = '-';
  return sign + place(to + sign, digits, count, static_cast<int>(index) + kSmallestExponent);
}

std::size_t writeNumber(char* to, int value) {
  return static_cast<std::size_t>(std::to_chars(to, to + kNumberRoom, value).ptr - to);
}

std::size_t writeNumber(char* to, unsigned value) {
  return static_cast<std::size_t>(std::to_chars(to, to + kNumberRoom, value).ptr - to);
}
