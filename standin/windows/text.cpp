#include "report.h"

#include <string>

namespace {

/// Converts a text, character by character. Returns the length, 0 if the buffer is too small or an argument is
/// invalid.
template <class From, class To, class Convert>
int converted(UINT codePage, const From* text, int textCount, To* buffer, int bufferCount, Convert convert) {
  if (codePage != CP_ACP || !text || textCount == 0 || textCount < -1 || bufferCount < 0)
    return 0;
  const int count = textCount == -1 ? static_cast<int>(std::char_traits<From>::length(text)) + 1 : textCount;
  if (bufferCount == 0)
    return count;
  if (!buffer || bufferCount < count)
    return 0;
  for (int i = 0; i < count; ++i)
    buffer[i] = convert(text[i]);
  return count;
}

} // namespace

int WINAPI WideCharToMultiByte(UINT codePage, DWORD, const wchar_t* text, int textCount, char* buffer,
                               int bufferCount, const char* defaultChar, BOOL* usedDefaultChar) {
  if (call_log::Call::report("WideCharToMultiByte", call_log::Hex{codePage}, call_log::shown(textCount),
                             call_log::shown(bufferCount)))
    return 0;
  BOOL isDefaultUsed = FALSE;
  const int count = converted(codePage, text, textCount, buffer, bufferCount, [&](wchar_t c) {
    if (c >= 0 && c <= 0xFF)
      return static_cast<char>(c);
    isDefaultUsed = TRUE;
    return defaultChar ? *defaultChar : '?';
  });
  if (usedDefaultChar)
    *usedDefaultChar = isDefaultUsed;
  return count;
}

int WINAPI MultiByteToWideChar(UINT codePage, DWORD, const char* text, int textCount, LPWSTR buffer,
                               int bufferCount) {
  return converted(codePage, text, textCount, buffer, bufferCount,
                   [](char c) { return static_cast<wchar_t>(static_cast<unsigned char>(c)); });
}
