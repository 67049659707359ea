#include "wide_text.h"

#include <cstdint>
#include <iterator>

#include <utf8.h>

namespace program {

// A wide character is a unit of UTF-16 on Windows, and a whole character elsewhere.

std::wstring widened(const std::string& text) {
  std::string valid;
  utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(valid), 0xFFFD);
  std::wstring out;
  if constexpr (sizeof(wchar_t) == 2)
    utf8::utf8to16(valid.begin(), valid.end(), std::back_inserter(out));
  else
    utf8::utf8to32(valid.begin(), valid.end(), std::back_inserter(out));
  return out;
}

std::string narrowed(const std::wstring& text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto unit = [&text](std::size_t at) {
      return at < text.size() ? static_cast<std::uint32_t>(text[at]) : 0;
    };
    std::uint32_t character = unit(i);
    if (sizeof(wchar_t) == 2 && (unit(i) & 0xFC00) == 0xD800 && (unit(i + 1) & 0xFC00) == 0xDC00)
      character = 0x10000 + ((character & 0x3FF) << 10) + (unit(++i) & 0x3FF);
    const bool isValid = character < 0xD800 || (character > 0xDFFF && character <= 0x10FFFF);
    utf8::append(isValid ? character : 0xFFFD, std::back_inserter(out));
  }
  return out;
}

} // namespace program
