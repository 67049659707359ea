#ifndef OV_STANDIN_WINDOWS_H
#define OV_STANDIN_WINDOWS_H

#include <cstddef>
#include <cstdint>

/// The calls of Windows that the plug-in and the host program make, for systems that aren't Windows.
///
/// Names, argument order, numbers and record layouts are those of Windows, so that sources compile unchanged
/// against the real header. What differs:
/// - wchar_t has this system's size.
/// - Narrow text (code page 0) is ISO 8859-1: a character up to 0xFF is the byte of that value. Native paths
///   are widened byte by byte, so a path survives the conversion to wide text and back whatever its encoding.
/// - Windows are records; desktop.h makes and inspects them.
///
/// Operations that act on the desktop report to call_log.h and can be made to fail there: they then do
/// nothing and return their failure value. All operations may be called from any thread; timers and
/// messages belong to the thread that asks for them.

#define CALLBACK
#define WINAPI
#define APIENTRY

using BOOL = int;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;
using LPVOID = void*;
using LPCSTR = const char*;
using LPWSTR = wchar_t*;
using LPCWSTR = const wchar_t*;
using HANDLE = void*;
using HWND = struct HWND__*;
using HINSTANCE = struct HINSTANCE__*;
using HMODULE = HINSTANCE;
using FARPROC = INT_PTR(WINAPI*)();
using LPTHREAD_START_ROUTINE = DWORD(WINAPI*)(LPVOID argument);
using TIMERPROC = void(CALLBACK*)(HWND window, UINT message, UINT_PTR timerId, DWORD tickCount);

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

struct POINT {
  LONG x;
  LONG y;
};

struct RECT {
  LONG left;
  LONG top;
  LONG right;
  LONG bottom;
};

struct MSG {
  HWND hwnd;
  UINT message;
  WPARAM wParam;
  LPARAM lParam;
  DWORD time;
  POINT pt;
};

struct SCROLLINFO {
  UINT cbSize;
  UINT fMask;
  int nMin;
  int nMax;
  UINT nPage;
  int nPos;
  int nTrackPos;
};

struct SYSTEMTIME {
  WORD wYear;
  WORD wMonth;
  WORD wDayOfWeek;
  WORD wDay;
  WORD wHour;
  WORD wMinute;
  WORD wSecond;
  WORD wMilliseconds;
};

struct SECURITY_ATTRIBUTES;

using LPPOINT = POINT*;
using LPRECT = RECT*;
using LPSCROLLINFO = SCROLLINFO*;

static_assert(sizeof(SCROLLINFO) == 28, "the record's size travels in cbSize");
static_assert(sizeof(SYSTEMTIME) == 16, "eight words");

constexpr int DLL_PROCESS_DETACH = 0;
constexpr int DLL_PROCESS_ATTACH = 1;

constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS = 0x00000004;

constexpr DWORD WAIT_OBJECT_0 = 0;
constexpr DWORD WAIT_TIMEOUT = 258;

constexpr int WM_TIMER = 0x0113;
constexpr int WM_HSCROLL = 0x0114;
constexpr int WM_VSCROLL = 0x0115;
constexpr int WM_MOUSEWHEEL = 0x020A;

constexpr int WHEEL_DELTA = 120;

constexpr int GW_HWNDNEXT = 2;
constexpr int GW_CHILD = 5;

constexpr int SB_HORZ = 0;
constexpr int SB_VERT = 1;
constexpr int SB_LINEUP = 0;
constexpr int SB_LINEDOWN = 1;

constexpr int SIF_RANGE = 0x01;
constexpr int SIF_PAGE = 0x02;
constexpr int SIF_POS = 0x04;
constexpr int SIF_ALL = SIF_RANGE | SIF_PAGE | SIF_POS | 0x10;

constexpr UINT USER_TIMER_MINIMUM = 0x0000000A;
constexpr UINT USER_TIMER_MAXIMUM = 0x7FFFFFFF;

constexpr int CP_ACP = 0;

constexpr UINT MB_OK = 0x00000000;
constexpr int IDOK = 1;

constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x00000010;

constexpr WORD LOWORD(ULONG_PTR value) {
  return static_cast<WORD>(value & 0xFFFF);
}
constexpr WORD HIWORD(ULONG_PTR value) {
  return static_cast<WORD>((value >> 16) & 0xFFFF);
}

extern "C" {

// ---- Time -------------------------------------------------------------------------------------------------

/// Returns the milliseconds since the system started; wraps at 32 bits. Not reported.
DWORD WINAPI GetTickCount(void);
/// Writes the current time in UTC. Not reported.
void WINAPI GetSystemTime(SYSTEMTIME* time);
/// Suspends the calling thread. Reported only on the thread that called desktop::holdClock(), so that
/// background threads don't disturb a transcript.
void WINAPI Sleep(DWORD milliseconds);

// ---- Messages and timers of a thread ----------------------------------------------------------------------

/// Arms a repeating timer on the calling thread, which delivers it through its message loop.
/// window        must be null; a timer of a window isn't supported and returns 0
/// timerId       ignored without a window; the result is a new number, not used before in this process
/// milliseconds  clamped to USER_TIMER_MINIMUM and USER_TIMER_MAXIMUM
/// procedure     called by DispatchMessageW; may be null
UINT_PTR WINAPI SetTimer(HWND window, UINT_PTR timerId, UINT milliseconds, TIMERPROC procedure);
/// Ends a timer of the calling thread, together with a message of it that hasn't been dispatched yet.
BOOL WINAPI KillTimer(HWND window, UINT_PTR timerId);

/// Waits for the calling thread's next due timer and returns 1. Ignores window and filter, as there are no other
/// messages. Not reported.
BOOL WINAPI GetMessageW(MSG* message, HWND window, UINT first, UINT last);
/// Does nothing, as there are no key messages. Not reported.
BOOL WINAPI TranslateMessage(const MSG* message);
/// Calls the procedure of a timer that is still armed. Ignores other messages. Not reported.
LRESULT WINAPI DispatchMessageW(const MSG* message);

// ---- Pointer and windows ----------------------------------------------------------------------------------

BOOL WINAPI GetCursorPos(LPPOINT point);
BOOL WINAPI SetCursorPos(int x, int y);
/// Returns the topmost visible window at that point or, within it, the topmost visible child, and so on; null
/// if there is none.
HWND WINAPI WindowFromPoint(POINT point);
/// Returns false, and leaves the rectangle, if there is no such window.
BOOL WINAPI GetWindowRect(HWND window, LPRECT rect);
HWND WINAPI GetParent(HWND window);
/// command  GW_HWNDNEXT or GW_CHILD; others return null
HWND WINAPI GetWindow(HWND window, UINT command);
/// Left and top edges count as inside, right and bottom ones don't.
BOOL WINAPI PtInRect(const RECT* rect, POINT point);
/// Returns true only if the window and all its ancestors are visible.
BOOL WINAPI IsWindowVisible(HWND window);
/// Copies at most count - 1 characters and a terminator. Returns the number of characters copied, 0 if there
/// is no such window.
int WINAPI GetClassNameW(HWND window, LPWSTR buffer, int count);
/// Fills what fMask asks for. Returns false, and leaves the record, if there is no such window or bar, or
/// cbSize is not the record's size.
BOOL WINAPI GetScrollInfo(HWND window, int bar, LPSCROLLINFO info);
/// Delivers the message at once and returns 0. See desktop.h for its effect.
LRESULT WINAPI SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
BOOL WINAPI UpdateWindow(HWND window);

// ---- Text, user, process ----------------------------------------------------------------------------------

/// Converts wide to narrow text. A character without a narrow form becomes the default character, "?" if that
/// is null. Returns the number of bytes, 0 if the buffer is too small or an argument is invalid.
/// codePage     must be CP_ACP
/// textCount    characters, or -1 for all up to and including the terminator
/// bufferCount  0 asks for the bytes needed
int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* text, int textCount, char* buffer,
                               int bufferCount, const char* defaultChar, BOOL* usedDefaultChar);
/// Converts narrow to wide text, with the arguments of WideCharToMultiByte the other way round. Not reported.
int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, int textCount, LPWSTR buffer,
                               int bufferCount);
/// Records the box and returns the answer of desktop::setMessageBoxAnswer(), IDOK if none is set.
int WINAPI MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type);
/// Makes no sound and takes no time.
BOOL WINAPI Beep(DWORD frequency, DWORD milliseconds);
/// Not reported.
DWORD WINAPI GetCurrentProcessId(void);
/// Not reported.
DWORD WINAPI GetCurrentThreadId(void);
/// Returns FILE_ATTRIBUTE_DIRECTORY for a folder, 0 for another file, by its native path; INVALID_FILE_ATTRIBUTES
/// if there is none. Not reported.
DWORD WINAPI GetFileAttributesA(LPCSTR path);

// ---- Threads ----------------------------------------------------------------------------------------------

/// Starts a thread and returns its handle. Attributes, stack size, flags and threadId have to be null or 0.
/// Not reported, and neither are the next two.
HANDLE WINAPI CreateThread(SECURITY_ATTRIBUTES* attributes, std::size_t stackSize,
                           LPTHREAD_START_ROUTINE start, LPVOID argument, DWORD flags, DWORD* threadId);
/// Waits for the end of a thread. Returns WAIT_OBJECT_0, or WAIT_TIMEOUT if it still runs after that time.
DWORD WINAPI WaitForSingleObject(HANDLE thread, DWORD milliseconds);
/// Closes a thread's handle. The thread goes on.
BOOL WINAPI CloseHandle(HANDLE thread);

// ---- Modules ----------------------------------------------------------------------------------------------

/// Loads a module and calls its DllMain(handle, DLL_PROCESS_ATTACH, nullptr), if it exports one. Either slash
/// separates folders. Returns null if the module can't be loaded, or if DllMain returned FALSE. Another call
/// for a loaded module only counts. Not reported, and neither are FreeLibrary and GetProcAddress.
HMODULE WINAPI LoadLibraryW(LPCWSTR path);
HMODULE WINAPI LoadLibraryA(LPCSTR path);
/// Drops one load. The last one calls DllMain(handle, DLL_PROCESS_DETACH, nullptr) and unloads the module.
/// For a module that is still loaded at exit(), DllMain is called with a third argument that isn't null,
/// before the module's static objects are destroyed; unlike on Windows, the other threads still run then.
BOOL WINAPI FreeLibrary(HMODULE module);
/// Frees the module and ends the calling thread of CreateThread, without a return to its function.
[[noreturn]] void WINAPI FreeLibraryAndExitThread(HMODULE module, DWORD exitCode);
/// Adds a load of the module that contains an address.
/// flags  GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS; others return FALSE
BOOL WINAPI GetModuleHandleExW(DWORD flags, LPCWSTR address, HMODULE* module);
/// Returns an export of the module or of its libraries, null if there is none. Names only, no ordinals.
FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name);
/// Writes the full path of a loaded module, or of the program for null, with backslashes between its folders.
/// Returns its length, 0 for an unknown module. A path that doesn't fit is cut and terminated, and count is
/// returned.
DWORD WINAPI GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD count);
/// Writes an empty text and returns 0: modules carry no resources here.
int WINAPI LoadStringW(HINSTANCE module, UINT id, LPWSTR buffer, int count);

} // extern "C"

#endif
