#include "util.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>

namespace Util {

namespace {

constexpr DWORD kBeepFrequency = 440; // hertz
constexpr DWORD kBeepDuration = 200;  // milliseconds
constexpr int kNarrowSize = 260;      // bytes, the system's own limit of a path
constexpr std::size_t kFileWidth = 16;
constexpr std::size_t kLineWidth = 4;
constexpr std::size_t kMethodWidth = 32;

/// Two digits, filled with a zero.
char* writeTwo(char* to, unsigned value) {
  to[0] = static_cast<char>('0' + value / 10);
  to[1] = static_cast<char>('0' + value % 10);
  return to + 2;
}

/// A text that is too long for its column keeps its end, which tells more than its start, behind a star.
std::string fitted(const std::string& text, std::size_t width) {
  return text.size() <= width ? text : "*" + text.substr(text.size() - (width - 1));
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

void writeTime(char* to) {
  SYSTEMTIME now;
  GetSystemTime(&now);
  to = writeTwo(to, now.wHour);
  *to++ = ':';
  to = writeTwo(to, now.wMinute);
  *to++ = ':';
  to = writeTwo(to, now.wSecond);
  *to++ = '.';
  *to++ = static_cast<char>('0' + now.wMilliseconds / 100);
  writeTwo(to, now.wMilliseconds % 100u);
}

std::string getTime() {
  std::string text(12, ' ');
  writeTime(&text[0]);
  return text;
}

std::string getDate() {
  static std::mutex mutex; // some systems have one text of ctime for all threads
  const std::lock_guard<std::mutex> guard(mutex);
  const std::time_t now = std::time(nullptr);
  const char* const textP = std::ctime(&now); // "Sun Nov 22 21:47:58 2026\n"
  if (!textP || std::strlen(textP) < 24)
    return std::string(15, ' ');
  const std::string text = textP;
  return text.substr(0, 11) + text.substr(20, 4);
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
  // Some systems open folders for reading as well. They are no files to the callers.
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

std::string toNarrow(const wchar_t* text) {
  char narrow[kNarrowSize] = {};
  const int size = WideCharToMultiByte(CP_ACP, 0, text, -1, narrow, kNarrowSize, " ", nullptr);
  if (size <= 0)
    return std::string();
  narrow[kNarrowSize - 1] = 0;
  return narrow;
}

int showMessage(HWND window, const std::string& text, const std::string& caption, unsigned type) {
  Beep(kBeepFrequency, kBeepDuration);
  return MessageBoxW(window, toWide(text).c_str(), toWide(caption).c_str(), type);
}

std::string logPrefix(const char* file, int line, const char* className, const char* method) {
  const char* const slashP = std::strrchr(file, '\\');
  const std::string name = fitted(slashP ? slashP + 1 : file, kFileWidth);
  const std::string number = std::to_string(line);
  const std::string place = fitted(std::string(className) + "::" + method, kMethodWidth);

  std::string prefix(kFileWidth - name.size(), ' ');
  prefix += name;
  prefix += "| ";
  if (number.size() < kLineWidth)
    prefix.append(kLineWidth - number.size(), ' ');
  prefix += number;
  prefix += "| ";
  prefix += place;
  prefix.append(kMethodWidth - place.size(), ' ');
  return prefix;
}

} // namespace Util
