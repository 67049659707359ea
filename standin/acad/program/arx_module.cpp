#include "arx_module.h"

#include <filesystem>

namespace program {

namespace {

/// The interface of this host's generation; plug-ins of another one can't be loaded.
constexpr int kApiVersion = 0x170000;

} // namespace

template <class Function> Function ArxModule::require(const char* name) {
  const FARPROC function = GetProcAddress(mModule, name);
  if (!function)
    throw Error("plug-in " + mPath + " doesn't export " + name);
  // By way of a function without arguments, which compilers take for a cast that is meant.
  return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(function));
}

ArxModule::ArxModule(const std::string& path) : mPath(path) {
  std::error_code failure;
  const std::filesystem::path file = std::filesystem::absolute(std::filesystem::u8path(path), failure);
  if (!std::filesystem::is_regular_file(file, failure))
    throw Error("no plug-in at " + path);
  mModule = LoadLibraryW(file.wstring().c_str());
  if (!mModule)
    throw Error("plug-in " + path + " can't be loaded");
  try {
    const int version = require<GetApiVersion>("acrxGetApiVersion")();
    if (version != kApiVersion)
      throw Error("plug-in " + path + " was built for another host: interface " + std::to_string(version));
    mEntryPointP = require<EntryPoint>("acrxEntryPoint");
  } catch (...) {
    unload();
    throw;
  }
}

ArxModule::~ArxModule() {
  unload();
}

bool ArxModule::send(int messageCode) {
  // The application is known to the host by its library.
  return mEntryPointP(messageCode, mModule) == AcRx::kRetOK;
}

bool ArxModule::unload() {
  if (!mModule)
    return false;
  const bool isUnloaded = FreeLibrary(mModule) != 0;
  mModule = nullptr;
  return isUnloaded;
}

} // namespace program
