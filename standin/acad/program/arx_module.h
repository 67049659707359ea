#ifndef ARX_MODULE_H
#define ARX_MODULE_H

#include <windows.h>

#include "rxapp.h"

#include <stdexcept>
#include <string>

namespace program {

/// A mistake that ends the program with one line.
class Error : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// A plug-in in this process, with the two functions that it must export.
class ArxModule {
public:
  /// Loads the library and reads the interface version that it was built for. Throws Error if the library,
  /// one of its functions or the version is not what the host can use.
  explicit ArxModule(const std::string& path);
  /// Unloads the library if unload() hasn't.
  ~ArxModule();
  ArxModule(const ArxModule&) = delete;
  ArxModule& operator=(const ArxModule&) = delete;

  /// Sends the plug-in a message. Returns true if it accepted it.
  bool send(int messageCode);
  /// Frees the library. Returns true if that succeeded.
  bool unload();
  HMODULE handle() const { return mModule; }

private:
  using EntryPoint = AcRx::AppRetCode (*)(int messageCode, void* applicationData);
  using GetApiVersion = int (*)();

  template <class Function> Function require(const char* name);

  std::string mPath;
  HMODULE mModule = nullptr;
  EntryPoint mEntryPointP = nullptr;
};

} // namespace program

#endif
