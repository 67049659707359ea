#include <windows.h>

// Each message of the loader is reported as a beep: frequency is the reason, and the duration tells whether
// the module could find its own path at that time. It refuses to come while that is ordered.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
  wchar_t path[MAX_PATH];
  return Beep(reason, GetModuleFileNameW(module, path, MAX_PATH) > 0 ? 1 : 0);
}

extern "C" int diaryAnswer() {
  return 42;
}
