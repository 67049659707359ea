#include "parameter_text.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <ostream>

namespace {

constexpr std::size_t kKeyWidth = 22;

} // namespace

std::string padded(std::string text, std::size_t width) {
  text.resize((std::max)(text.size(), width), ' ');
  return text;
}

void writeParameterLine(std::ostream& os, const char* key, const std::string& value, int width,
                        const char* comment) {
  os << '\t' << padded(key, kKeyWidth) << "= " << padded(value, static_cast<std::size_t>(width)) << comment
     << '\n';
}

std::int32_t toNumber(const std::string& text) {
  const long long number = std::strtoll(text.c_str(), nullptr, 10);
  constexpr long long kLowest = (std::numeric_limits<std::int32_t>::min)();
  constexpr long long kHighest = (std::numeric_limits<std::int32_t>::max)();
  return static_cast<std::int32_t>(std::clamp(number, kLowest, kHighest));
}
