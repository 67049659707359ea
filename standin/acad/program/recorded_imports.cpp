#include "recorded_imports.h"

#include "call_log.h"

#include <string>

namespace program {

namespace {

using call_log::Traced;

TIMERPROC gTimerProc = nullptr; // the module's only one
std::function<DWORD()> gTickSource;

void CALLBACK bracketedTimerProc(HWND window, UINT message, UINT_PTR id, DWORD time) {
  const call_log::Bracket bracket("TimerProc");
  gTimerProc(window, message, id, time);
}

UINT_PTR WINAPI recordedSetTimer(HWND window, UINT_PTR id, UINT interval, TIMERPROC procedure) {
  Traced call("SetTimer", interval);
  gTimerProc = procedure;
  return call.returns(SetTimer(window, id, interval, bracketedTimerProc));
}

BOOL WINAPI recordedKillTimer(HWND window, UINT_PTR id) {
  Traced call("KillTimer", id);
  return call.returns(KillTimer(window, id));
}

DWORD WINAPI recordedGetTickCount() {
  Traced call("GetTickCount");
  return call.returns(gTickSource ? gTickSource() : GetTickCount());
}

void WINAPI recordedSleep(DWORD milliseconds) {
  const Traced call("Sleep", milliseconds);
  Sleep(milliseconds);
}

BOOL WINAPI recordedGetCursorPos(LPPOINT point) {
  Traced call("GetCursorPos");
  const BOOL isGood = GetCursorPos(point);
  return call.returns(isGood, point->x, point->y);
}

HWND WINAPI recordedWindowFromPoint(POINT point) {
  Traced call("WindowFromPoint", point.x, point.y);
  return call.returns(WindowFromPoint(point));
}

BOOL WINAPI recordedGetWindowRect(HWND window, LPRECT rect) {
  Traced call("GetWindowRect", window);
  const BOOL isGood = GetWindowRect(window, rect);
  return call.returns(isGood, rect->left, rect->top, rect->right, rect->bottom);
}

HWND WINAPI recordedGetParent(HWND window) {
  Traced call("GetParent", window);
  return call.returns(GetParent(window));
}

HWND WINAPI recordedGetWindow(HWND window, UINT command) {
  Traced call("GetWindow", window, command);
  return call.returns(GetWindow(window, command));
}

BOOL WINAPI recordedIsWindowVisible(HWND window) {
  Traced call("IsWindowVisible", window);
  return call.returns(IsWindowVisible(window));
}

int WINAPI recordedGetClassNameW(HWND window, LPWSTR buffer, int count) {
  Traced call("GetClassNameW", window);
  const int length = GetClassNameW(window, buffer, count);
  return call.returns(length, buffer);
}

BOOL WINAPI recordedGetScrollInfo(HWND window, int bar, LPSCROLLINFO info) {
  Traced call("GetScrollInfo", window, bar, info->cbSize, info->fMask);
  const BOOL isGood = GetScrollInfo(window, bar, info);
  return call.returns(isGood, info->nMin, info->nMax, info->nPage, info->nPos);
}

LRESULT WINAPI recordedSendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  Traced call("SendMessageW", window, message, wParam, static_cast<ULONG_PTR>(lParam));
  return call.returns(SendMessageW(window, message, wParam, lParam));
}

BOOL WINAPI recordedUpdateWindow(HWND window) {
  Traced call("UpdateWindow", window);
  return call.returns(UpdateWindow(window));
}

/// Returns a function's wrapper, null if it has none.
ULONG_PTR wrapperOf(const std::string& name) {
  static const struct {
    const char* name;
    void (*wrapper)();
  } kWrappers[] = {
#define WRAPPER(function) {#function, reinterpret_cast<void (*)()>(recorded##function)}
      WRAPPER(SetTimer),     WRAPPER(KillTimer),       WRAPPER(GetTickCount),  WRAPPER(Sleep),
      WRAPPER(GetCursorPos), WRAPPER(WindowFromPoint), WRAPPER(GetWindowRect), WRAPPER(GetParent),
      WRAPPER(GetWindow),    WRAPPER(IsWindowVisible), WRAPPER(GetClassNameW), WRAPPER(GetScrollInfo),
      WRAPPER(SendMessageW), WRAPPER(UpdateWindow)};
#undef WRAPPER
  for (const auto& entry : kWrappers)
    if (name == entry.name)
      return reinterpret_cast<ULONG_PTR>(entry.wrapper);
  return 0;
}

} // namespace

void recordImports(HMODULE module, std::function<DWORD()> tickSource) {
  gTickSource = std::move(tickSource);
  auto* const base = reinterpret_cast<BYTE*>(module);
  const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* const nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const IMAGE_DATA_DIRECTORY& table = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  const auto* import = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + table.VirtualAddress);
  for (; import->Name != 0; ++import) {
    const auto* names = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + import->OriginalFirstThunk);
    auto* place = reinterpret_cast<IMAGE_THUNK_DATA*>(base + import->FirstThunk);
    for (; names->u1.AddressOfData != 0; ++names, ++place) {
      if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal))
        continue;
      const auto* const entry = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
      const ULONG_PTR wrapper = wrapperOf(reinterpret_cast<const char*>(entry->Name));
      DWORD protection = 0;
      if (wrapper == 0 || !VirtualProtect(place, sizeof *place, PAGE_READWRITE, &protection))
        continue;
      place->u1.Function = wrapper;
      VirtualProtect(place, sizeof *place, protection, &protection);
    }
  }
}

} // namespace program
