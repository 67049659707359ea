#ifndef UTIL_H
#define UTIL_H

#include <cstdint>
#include <string>

/// Small wrappers of the platform. They hold no state, report nothing and may be called on any thread.
namespace Util {

/// Value of the environment variable USERPROFILE; empty if it isn't set. The folders below it then don't
/// exist, and the plug-in says so where the user sees it, instead of writing to a place that nobody chose.
std::string getHomeDir();

std::uint32_t getProcessId();
std::uint32_t getThreadId();
/// Milliseconds since the system started; wraps after about 49.7 days.
std::uint32_t getTickCount();
/// Suspends the calling thread, milliseconds.
void sleep(std::uint32_t ms);

/// Time of day in UTC for log records, "HH:MM:SS.mmm", 12 characters.
std::string getTime();
/// Today's date in local time for the log's header, as in "Sun Nov 22 2026", 15 characters.
std::string getDate();

/// The path as this system opens it. The plug-in joins paths with a backslash everywhere; where the system
/// has another separator, this function, at the moment of opening, is the one place that changes it.
std::string nativePath(const std::string& path);
/// True if the path opens for reading and is no folder.
bool fileExists(const std::string& path);
/// True if the path is a folder, with or without a separator at its end.
bool folderExists(const std::string& path);

/// The reading of an on/off value: true if the text contains "on", so "on", "none" and "only" are on, "ON" is
/// off.
bool isOn(const std::string& text);
/// "on" or "off".
std::string onOffText(bool flag);

/// Widens byte by byte, with no code page: each byte, taken as a signed character, becomes one 16-bit
/// character. ASCII passes unchanged.
std::wstring toWide(const std::string& text);
/// Wide form of a text in the system's own code page.
std::wstring toWideByCodePage(const std::string& text);
/// Narrow form of a text of the system, in its own code page, with a blank for what that can't show;
/// at most 259 bytes. Empty if the text has no such form.
std::string toNarrow(const wchar_t* text);

/// Beeps and shows a message box, and waits until the user has closed it. Gives the box's result.
/// window  the owner's HWND, may be null
/// type    style of MessageBoxW
int showMessage(void* window, const std::string& text, const std::string& caption, unsigned type);

/// The columns File, Line and Class And Method of a log record.
/// file       source path; what follows its last backslash counts
/// method     with its class in front, as in "Settings::readParameter"
std::string logPrefix(const char* file, int line, const char* className, const char* method);

} // namespace Util

#endif
