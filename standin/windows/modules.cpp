#include "report.h"
#include "state.h"

#include <algorithm>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <link.h>
#include <optional>

using desktop::detail::Locked;

namespace {

using EntryPoint = BOOL(WINAPI*)(HINSTANCE, DWORD, LPVOID);

struct Module {
  void* loaded = nullptr; // from dlopen; the handle of Windows has the same value
  int loads = 0;
  EntryPoint entryPoint = nullptr; // DllMain, or null
};

/// Serializes loading and unloading. Recursive, since DllMain may load more.
std::recursive_mutex& loaderMutex() {
  static auto* const mutexP = new std::recursive_mutex;
  return *mutexP;
}

/// The modules that were loaded through LoadLibrary. Call with the loader's lock held.
std::vector<Module>& modules() {
  static auto* const modulesP = new std::vector<Module>;
  return *modulesP;
}

HMODULE handle(void* library) {
  return static_cast<HMODULE>(library);
}

std::vector<Module>::iterator find(const void* library) {
  return std::find_if(modules().begin(), modules().end(),
                      [library](const Module& module) { return module.loaded == library; });
}

/// Returns the path of the module, or of the program for null, with this system's slashes; empty for an
/// unknown module.
std::string nativePath(HMODULE module) {
  std::error_code error;
  if (!module)
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
  const std::lock_guard<std::recursive_mutex> lock(loaderMutex());
  link_map* map = nullptr;
  if (find(module) == modules().end() || dlinfo(module, RTLD_DI_LINKMAP, &map) != 0)
    return {};
  return std::filesystem::absolute(map->l_name, error).lexically_normal().string();
}

/// Runs at exit(). Registered with each load, so that it runs before the exit handlers of the module's own
/// objects.
void endProcess() {
  const std::lock_guard<std::recursive_mutex> lock(loaderMutex());
  const std::vector<Module> loaded = std::move(modules());
  modules().clear();
  for (const Module& module : loaded) {
    if (module.entryPoint)
      module.entryPoint(handle(module.loaded), DLL_PROCESS_DETACH, module.loaded);
  }
}

void unload(std::vector<Module>::iterator module) {
  void* const library = module->loaded;
  const EntryPoint entryPoint = module->entryPoint;
  if (entryPoint)
    entryPoint(handle(library), DLL_PROCESS_DETACH, nullptr);
  modules().erase(find(library));
  dlclose(library);
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
  void* const library = dlopen(native.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library)
    return nullptr;
  const auto known = find(library);
  if (known != modules().end()) {
    ++known->loads;
    return handle(library);
  }
  Module module;
  module.loaded = library;
  module.loads = 1;
  module.entryPoint = reinterpret_cast<EntryPoint>(dlsym(library, "DllMain"));
  modules().push_back(module);
  std::atexit(endProcess);
  if (!module.entryPoint || module.entryPoint(handle(library), DLL_PROCESS_ATTACH, nullptr) != FALSE)
    return handle(library);
  // As on Windows, a module that has refused to load is still detached.
  unload(find(library));
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
  const auto known = find(module);
  if (known == modules().end())
    return FALSE;
  if (--known->loads > 0)
    dlclose(known->loaded);
  else
    unload(known);
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
  return reinterpret_cast<FARPROC>(find(module) == modules().end() ? nullptr : dlsym(module, name));
}

DWORD WINAPI GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD count) {
  const desktop::detail::Call call("GetModuleFileNameW", count);
  if (call.mustFail() || count == 0)
    return 0;
  std::optional<std::wstring> path;
  {
    const Locked s;
    path = s->modulePath;
  }
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
