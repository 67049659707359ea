#include "parameter.h"

#include <cstdlib>
#include <limits>

std::string padded(std::string text, std::size_t width) {
  text.resize((std::max)(text.size(), width), ' ');
  return text;
}

std::int32_t toNumber(const std::string& text) {
  const long long number = std::strtoll(text.c_str(), nullptr, 10);
  constexpr long long kLowest = (std::numeric_limits<std::int32_t>::min)();
  constexpr long long kHighest = (std::numeric_limits<std::int32_t>::max)();
  return static_cast<std::int32_t>(std::clamp(number, kLowest, kHighest));
}
