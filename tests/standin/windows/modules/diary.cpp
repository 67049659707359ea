#include "desktop.h"

#include <windows.h>

// Each message of the loader is noted as a beep, which outlives the module: frequency is the reason, and the
// duration tells whether the module could find its own path at that time.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
  wchar_t path[MAX_PATH];
  Beep(reason, GetModuleFileNameW(module, path, MAX_PATH) > 0 ? 1 : 0);
  return TRUE;
}

extern "C" int diaryAnswer() {
  return 42;
}
