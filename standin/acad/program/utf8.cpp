#include "utf8.h"

#include <cstdint>

namespace program {

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

bool isSurrogate(std::uint32_t c) {
  return c >= 0xD800 && c <= 0xDFFF;
}

void addWide(std::wstring& out, std::uint32_t c) {
  if (sizeof(wchar_t) == 2 && c > 0xFFFF) {
    out += static_cast<wchar_t>(0xD800 + ((c - 0x10000) >> 10));
    out += static_cast<wchar_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
  } else {
    out += static_cast<wchar_t>(c);
  }
}

void addNarrow(std::string& out, std::uint32_t c) {
  if (c > 0x10FFFF || isSurrogate(c))
    c = kReplacement;
  const auto tail = [&out, c](int shift) { out += static_cast<char>(0x80 | ((c >> shift) & 0x3F)); };
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    tail(0);
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    tail(6);
    tail(0);
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    tail(12);
    tail(6);
    tail(0);
  }
}

/// The character at a place of UTF-8 text; the place moves behind it.
std::uint32_t nextCharacter(const std::string& text, std::size_t& at) {
  const auto byte = [&text](std::size_t i) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i]));
  };
  const std::uint32_t first = byte(at++);
  if (first < 0x80)
    return first;
  const std::size_t count = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
  if (first < 0xC2 || first > 0xF4)
    return kReplacement;
  std::uint32_t c = first & (0x3Fu >> count);
  for (std::size_t i = 0; i < count; ++i, ++at) {
    if (at >= text.size() || (byte(at) & 0xC0) != 0x80)
      return kReplacement;
    c = (c << 6) | (byte(at) & 0x3F);
  }
  const std::uint32_t least = count == 1 ? 0x80 : count == 2 ? 0x800 : 0x10000;
  return c < least || c > 0x10FFFF || isSurrogate(c) ? kReplacement : c;
}

} // namespace

std::wstring widened(const std::string& text) {
  std::wstring out;
  for (std::size_t at = 0; at < text.size();)
    addWide(out, nextCharacter(text, at));
  return out;
}

std::string narrowed(const std::wstring& text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::uint32_t c = static_cast<std::uint32_t>(text[i]);
    if (sizeof(wchar_t) == 2) {
      c &= 0xFFFF;
      const bool isHigh = c >= 0xD800 && c <= 0xDBFF;
      const std::uint32_t next = i + 1 < text.size() ? static_cast<std::uint32_t>(text[i + 1]) & 0xFFFF : 0;
      if (isHigh && next >= 0xDC00 && next <= 0xDFFF) {
        c = 0x10000 + ((c - 0xD800) << 10) + (next - 0xDC00);
        ++i;
      }
    }
    addNarrow(out, c);
  }
  return out;
}

} // namespace program
