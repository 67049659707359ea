#include "report.h"
#include "state.h"

#include <algorithm>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <link.h>
#include <map>
#include <optional>
#include <utility>

using desktop::detail::Locked;

namespace {

/// Serializes loading and unloading. Recursive, since DllMain may load more.
std::recursive_mutex& loaderMutex() {
  static auto* const mutexP = new std::recursive_mutex;
  return *mutexP;
}

/// The number of loads of each module that was loaded through LoadLibrary. Call with the loader's lock held.
std::map<HMODULE, int>& loads() {
  static auto* const loadsP = new std::map<HMODULE, int>;
  return *loadsP;
}

/// Calls the module's DllMain, if it has one.
BOOL callEntryPoint(HMODULE module, DWORD reason, LPVOID reserved) {
  using EntryPoint = BOOL(WINAPI*)(HINSTANCE, DWORD, LPVOID);
  const auto entryPoint = reinterpret_cast<EntryPoint>(dlsym(module, "DllMain"));
  return entryPoint ? entryPoint(module, reason, reserved) : TRUE;
}

/// Returns the path of the module, or of the program for null, with this system's slashes; empty for an
/// unknown module.
std::string nativePath(HMODULE module) {
  std::error_code error;
  if (!module)
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
  const std::lock_guard<std::recursive_mutex> lock(loaderMutex());
  link_map* map = nullptr;
  if (loads().count(module) == 0 || dlinfo(module, RTLD_DI_LINKMAP, &map) != 0)
    return {};
  return std::filesystem::absolute(map->l_name, error).lexically_normal().string();
}

/// Runs at exit(). Registered with each load, so that it runs before the exit handlers of the module's own
/// objects.
void endProcess() {
  const std::lock_guard<std::recursive_mutex> lock(loaderMutex());
  for (const auto& [module, count] : std::exchange(loads(), {}))
    callEntryPoint(module, DLL_PROCESS_DETACH, module);
}

} // namespace

namespace desktop {

void setModulePath(const std::optional<std::wstring>& path) {
  const Locked s;
  s->modulePath = path;
}

} // namespace desktop

HMODULE WINAPI LoadLibraryA(LPCSTR path) {
  std::string native = path ? path : "";
  std::replace(native.begin(), native.end(), '\\', '/');
  if (native.empty())
    return nullptr;
  const std::lock_guard<std::recursive_mutex> lock(loaderMutex());
  const auto module = static_cast<HMODULE>(dlopen(native.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (!module || ++loads()[module] > 1)
    return module;
  std::atexit(endProcess);
  if (callEntryPoint(module, DLL_PROCESS_ATTACH, nullptr))
    return module;
  FreeLibrary(module); // as on Windows, a module that has refused to load is still detached
  return nullptr;
}

HMODULE WINAPI LoadLibraryW(LPCWSTR path) {
  std::string narrow;
  for (; path && *path; ++path) {
    if (*path < 0 || *path > 0xFF)
      return nullptr;
    narrow += static_cast<char>(*path);
  }
  return LoadLibraryA(narrow.c_str());
}

BOOL WINAPI FreeLibrary(HMODULE module) {
  const std::lock_guard<std::recursive_mutex> lock(loaderMutex());
  const auto known = loads().find(module);
  if (known == loads().end())
    return FALSE;
  if (known->second == 1)
    callEntryPoint(module, DLL_PROCESS_DETACH, nullptr);
  if (--loads()[module] == 0)
    loads().erase(module);
  dlclose(module);
  return TRUE;
}

BOOL WINAPI GetModuleHandleExW(DWORD flags, LPCWSTR address, HMODULE* module) {
  const call_log::Entered standIn(call_log::Code::StandIn);
  Dl_info info{};
  *module = nullptr;
  if (flags == GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS && dladdr(address, &info) != 0)
    *module = LoadLibraryA(info.dli_fname); // a program can't be loaded
  return *module ? TRUE : FALSE;
}

FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name) {
  const std::lock_guard<std::recursive_mutex> lock(loaderMutex());
  return reinterpret_cast<FARPROC>(loads().count(module) == 0 ? nullptr : dlsym(module, name));
}

DWORD WINAPI GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD count) {
  const desktop::detail::Call call("GetModuleFileNameW", count);
  if (call.mustFail() || count == 0)
    return 0;
  std::optional<std::wstring> path = Locked()->modulePath;
  if (!path) {
    path = std::wstring();
    for (const char c : nativePath(module))
      path->push_back(c == '/' ? L'\\' : static_cast<wchar_t>(static_cast<unsigned char>(c)));
  }
  const auto length = static_cast<DWORD>(path->size());
  const DWORD copied = std::min(length, count - 1);
  path->copy(buffer, copied);
  buffer[copied] = 0;
  return copied < length ? count : length;
}

int WINAPI LoadStringW(HINSTANCE, UINT, LPWSTR buffer, int count) {
  if (buffer && count > 0)
    buffer[0] = 0;
  return 0;
}
