#ifndef UTIL_H
#define UTIL_H

#include <cstdint>
#include <string>

/// Small wrappers of the platform. They hold no state, report nothing and may be called on any thread.
namespace Util {

/// Returns the environment variable USERPROFILE, empty if it isn't set. Paths then start at the current
/// drive's root, where the folders normally don't exist.
std::string getHomeDir();

std::uint32_t getProcessId();
std::uint32_t getThreadId();
/// Returns milliseconds since the system started; wraps after about 49.7 days.
std::uint32_t getTickCount();
/// Suspends the calling thread for that number of milliseconds.
void sleep(std::uint32_t ms);

/// Returns the time of day in UTC for log records, "HH:MM:SS.mmm", 12 characters.
std::string getTime();
/// Returns today's date in local time for the log's header, as in "Sun Nov 22 2026", 15 characters.
std::string getDate();

/// Returns the path as this system opens it. The plug-in joins paths with a backslash everywhere. This
/// function, called when a file is opened, is the one place that changes it.
std::string nativePath(const std::string& path);
/// Returns true if the path opens for reading and isn't a folder.
bool fileExists(const std::string& path);
/// Returns true if the path is a folder, with or without a separator at its end.
bool folderExists(const std::string& path);

/// Reads an on/off value: true if the text contains "on", so "on", "none" and "only" are on, "ON" is
/// off.
bool isOn(const std::string& text);
/// Returns "on" or "off".
std::string onOffText(bool flag);

/// Widens byte by byte, with no code page: each byte, taken as a signed character, becomes one 16-bit
/// character. ASCII passes unchanged.
std::wstring toWide(const std::string& text);
/// Widens a text in the system's own code page.
std::wstring toWideByCodePage(const std::string& text);
/// Narrows a text by the system's own code page, with a blank for characters that it lacks. Returns an empty
/// text if that takes more than 259 bytes.
std::string toNarrow(const wchar_t* text);

/// Beeps and shows a message box, and waits until the user has closed it. Returns the box's result.
/// window  the owner's HWND, may be null
/// type    style of MessageBoxW
int showMessage(void* window, const std::string& text, const std::string& caption, unsigned type);

/// Returns the columns File, Line and Class And Method of a log record.
/// file       source path; what follows its last backslash counts
/// method     with its class in front, as in "Settings::readParameter"
std::string logPrefix(const char* file, int line, const char* className, const char* method);

} // namespace Util

#endif
