#include "util.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iomanip>
#include <locale>
#include <sstream>

#include <windows.h>

namespace Util {

namespace {

constexpr DWORD kBeepFrequency = 440; // hertz
constexpr DWORD kBeepDuration = 200;  // milliseconds
constexpr int kNarrowSize = 260;      // bytes, the system's own limit of a path
constexpr int kFileWidth = 16;
constexpr int kLineWidth = 4;
constexpr int kMethodWidth = 32;

/// A text that is too long for its column keeps its end, after a star: the end says more than the start.
std::string fitted(const std::string& text, int width) {
  const auto size = static_cast<std::size_t>(width);
  return text.size() <= size ? text : "*" + text.substr(text.size() - (size - 1));
}

} // namespace

std::string getHomeDir() {
  const char* const valueP = std::getenv("USERPROFILE");
  return valueP ? valueP : "";
}

std::uint32_t getProcessId() {
  return GetCurrentProcessId();
}

std::uint32_t getThreadId() {
  return GetCurrentThreadId();
}

std::uint32_t getTickCount() {
  return GetTickCount();
}

void sleep(std::uint32_t ms) {
  Sleep(ms);
}

std::string getTime() {
  SYSTEMTIME now;
  GetSystemTime(&now);
  char text[32]; // room for any 16-bit numbers, as compilers demand
  std::snprintf(text, sizeof text, "%02u:%02u:%02u.%03u", now.wHour + 0u, now.wMinute + 0u, now.wSecond + 0u,
                now.wMilliseconds + 0u);
  return text;
}

std::string getDate() {
  const std::time_t now = std::time(nullptr);
  char text[26] = {}; // "Sun Nov 22 21:47:58 2026\n"
#ifdef _WIN32
  ctime_s(text, sizeof text, &now);
#else
  ctime_r(&now, text);
#endif
  return std::string(text, 11) + std::string(text + 20, 4);
}

std::string nativePath(const std::string& path) {
#ifdef _WIN32
  return path;
#else
  std::string native = path;
  for (char& c : native) {
    if (c == '\\')
      c = '/';
  }
  return native;
#endif
}

bool fileExists(const std::string& path) {
  // Some systems open folders for reading as well. To the callers a folder isn't a file.
  if (folderExists(path))
    return false;
  std::FILE* const fileP = std::fopen(nativePath(path).c_str(), "r");
  if (!fileP)
    return false;
  std::fclose(fileP);
  return true;
}

bool folderExists(const std::string& path) {
  const DWORD attributes = GetFileAttributesA(nativePath(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool isOn(const std::string& text) {
  return text.find("on") != std::string::npos;
}

std::string onOffText(bool flag) {
  return flag ? "on" : "off";
}

std::wstring toWide(const std::string& text) {
  std::wstring wide;
  wide.reserve(text.size());
  for (const char c : text)
    wide.push_back(static_cast<wchar_t>(static_cast<std::uint16_t>(static_cast<signed char>(c))));
  return wide;
}

std::wstring toWideByCodePage(const std::string& text) {
  const int size = static_cast<int>(text.size());
  std::wstring wide(text.size(), L'\0'); // no code page makes more characters than there are bytes
  const int length = MultiByteToWideChar(CP_ACP, 0, text.data(), size, &wide[0], size);
  wide.resize(static_cast<std::size_t>(length));
  return wide;
}

std::string toNarrow(const wchar_t* text) {
  char narrow[kNarrowSize] = {};
  const int size = WideCharToMultiByte(CP_ACP, 0, text, -1, narrow, kNarrowSize, " ", nullptr);
  if (size <= 0)
    return std::string();
  narrow[kNarrowSize - 1] = 0;
  return narrow;
}

int showMessage(void* window, const std::string& text, const std::string& caption, unsigned type) {
  Beep(kBeepFrequency, kBeepDuration);
  return MessageBoxW(static_cast<HWND>(window), toWide(text).c_str(), toWide(caption).c_str(), type);
}

std::string logPrefix(const char* file, int line, const char* className, const char* method) {
  const char* const backslashP = std::strrchr(file, '\\');
  std::ostringstream os;
  os.exceptions(std::ios::badbit); // without memory no columns, rather than a part of them
  os.imbue(std::locale::classic());
  os << std::setw(kFileWidth) << fitted(backslashP ? backslashP + 1 : file, kFileWidth) << "| "
     << std::setw(kLineWidth) << line << "| " << std::left << std::setw(kMethodWidth)
     << fitted(std::string(className) + "::" + method, kMethodWidth);
  return os.str();
}

} // namespace Util
