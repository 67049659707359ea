#ifndef HOSTED_MODULE_H
#define HOSTED_MODULE_H

#include <filesystem>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include <arxHeaders.h>

#include "environment.h"
#include "host.h"
#include "temp_folder.h"

#ifdef _WIN32
#include <windows.h>

#include <tlhelp32.h>
#else
#include <dlfcn.h>

#include "desktop.h"
#endif

namespace rig {

/// Resets the host and its desktop, and makes a folder the user's profile.
inline void freshHost(const TempFolder& home) {
  host::reset();
#ifndef _WIN32
  desktop::reset();
#endif
  home.makeFolder("Orvaner/Applications");
  setEnvironment("USERPROFILE", home.native());
}

/// A plug-in as its host holds it: the library's handle, and the function that takes messages. The host may free the
/// library, and call the function for as long as the library is mapped.
struct HostedModule {
  void load(const std::string& path) {
    mHandle = LoadLibraryA(path.c_str());
    send = function<AcRx::AppRetCode (*)(int, void*)>("acrxEntryPoint");
    ASSERT_TRUE(send) << path;
  }
  void free() {
    EXPECT_TRUE(FreeLibrary(mHandle));
    mHandle = nullptr;
  }
  template <class Function> Function function(const char* name) const {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(mHandle, name)));
  }

  HMODULE mHandle = nullptr;
  AcRx::AppRetCode (*send)(int code, void* data) = nullptr;
};

#ifdef _WIN32

inline bool isMapped(const char* path) {
  return GetModuleHandleA(path) != nullptr;
}

/// Returns how much the process holds: threads. Handles can't be counted: the compiler's thread library leaves a few of
/// its own whenever a module is unmapped, and GetProcessHandleCount says 0 under Wine.
inline long holdings() {
  const HANDLE all = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry{};
  entry.dwSize = sizeof entry;
  long count = 0;
  for (BOOL isFound = Thread32First(all, &entry); isFound; isFound = Thread32Next(all, &entry))
    count += entry.th32OwnerProcessID == GetCurrentProcessId();
  CloseHandle(all);
  return count;
}

#else

inline bool isMapped(const char* path) {
  void* const library = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
  if (library)
    dlclose(library);
  return library;
}

/// Returns how much the process holds: threads, open files, armed timers.
inline long holdings() {
  long count = static_cast<long>(desktop::activeTimers().size());
  for (const char* const folder : {"/proc/self/task", "/proc/self/fd"})
    count += std::distance(std::filesystem::directory_iterator(folder), {});
  return count;
}

#endif

} // namespace rig

#endif
