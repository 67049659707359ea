#include "text.h"

#include <cwctype>

namespace host {

std::string narrow(const std::wstring& text) {
  std::string result;
  for (const wchar_t c : text)
    result += static_cast<unsigned long>(c) <= 0xFF ? static_cast<char>(static_cast<unsigned char>(c)) : '?';
  return result;
}

std::wstring widen(const std::string& text) {
  std::wstring result;
  for (const char c : text)
    result += static_cast<wchar_t>(static_cast<unsigned char>(c));
  return result;
}

std::wstring lowered(const std::wstring& text) {
  std::wstring result = text;
  for (wchar_t& c : result)
    c = static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(c)));
  return result;
}

} // namespace host
