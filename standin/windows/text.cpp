#include "report.h"

#include <cstring>
#include <cwchar>

int WINAPI WideCharToMultiByte(UINT codePage, DWORD, LPCWCH text, int textCount, LPSTR buffer,
                               int bufferCount, LPCCH defaultChar, LPBOOL usedDefaultChar) {
  constexpr wchar_t kLastNarrow = 0xFF;
  if (call_log::Call::report("WideCharToMultiByte", call_log::Hex{codePage}, call_log::shown(textCount),
                             call_log::shown(bufferCount)))
    return 0;
  if (codePage != CP_ACP || !text || textCount == 0 || textCount < -1 || bufferCount < 0)
    return 0;
  const int count = textCount == -1 ? static_cast<int>(std::wcslen(text)) + 1 : textCount;
  if (bufferCount == 0)
    return count;
  if (!buffer || bufferCount < count)
    return 0;
  BOOL isDefaultUsed = FALSE;
  for (int i = 0; i < count; ++i) {
    const bool isNarrow = text[i] >= 0 && text[i] <= kLastNarrow;
    if (!isNarrow)
      isDefaultUsed = TRUE;
    buffer[i] = isNarrow ? static_cast<char>(text[i]) : (defaultChar ? *defaultChar : '?');
  }
  if (usedDefaultChar)
    *usedDefaultChar = isDefaultUsed;
  return count;
}

int WINAPI MultiByteToWideChar(UINT codePage, DWORD, LPCCH text, int textCount, LPWSTR buffer,
                               int bufferCount) {
  if (codePage != CP_ACP || !text || textCount == 0 || textCount < -1 || bufferCount < 0)
    return 0;
  const int count = textCount == -1 ? static_cast<int>(std::strlen(text)) + 1 : textCount;
  if (bufferCount == 0)
    return count;
  if (!buffer || bufferCount < count)
    return 0;
  for (int i = 0; i < count; ++i)
    buffer[i] = static_cast<wchar_t>(static_cast<unsigned char>(text[i]));
  return count;
}
