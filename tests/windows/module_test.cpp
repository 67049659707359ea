// The module under real Windows: its exports and imports, its dialog, and its log while others read it.

#include <atomic>
#include <cstdlib>
#include <iostream>
#include <set>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include <arxHeaders.h>

#include "environment.h"
#include "host.h"
#include "hosted_module.h"
#include "temp_folder.h"

namespace {

constexpr wchar_t kDialogTitle[] = L"Orvane Plug-in Error";

/// A place in a library that is mapped.
template <class T> const T* at(HMODULE module, ULONGLONG address) {
  return reinterpret_cast<const T*>(reinterpret_cast<const char*>(module) + address);
}

TEST(ModuleFile, ExportsAndImportsAreExact) {
  const HMODULE module = LoadLibraryExA(OV_MODULE, nullptr, DONT_RESOLVE_DLL_REFERENCES);
  ASSERT_TRUE(module);
  const auto& directory =
      at<IMAGE_NT_HEADERS64>(module, static_cast<ULONGLONG>(at<IMAGE_DOS_HEADER>(module, 0)->e_lfanew))
          ->OptionalHeader.DataDirectory;
  const auto& exports =
      *at<IMAGE_EXPORT_DIRECTORY>(module, directory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress);
  std::set<std::string> exported;
  for (DWORD i = 0; i < exports.NumberOfNames; ++i)
    exported.insert(at<char>(module, at<DWORD>(module, exports.AddressOfNames)[i]));
  EXPECT_EQ(exported, (std::set<std::string>{"acrxEntryPoint", "acrxGetApiVersion"}));
  EXPECT_EQ(exports.NumberOfFunctions, 2u);

  std::set<std::string> libraries, ordinals;
  for (auto entryP =
           at<IMAGE_IMPORT_DESCRIPTOR>(module, directory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
       entryP->Name; ++entryP) {
    const std::string library = at<char>(module, entryP->Name);
    for (const char* const runtime : {"libstdc++", "libgcc", "winpthread"})
      EXPECT_EQ(library.find(runtime), std::string::npos) << library;
    if (library != "ov_devlink_64.dll")
      continue;
    for (auto thunkP = at<ULONGLONG>(module, entryP->OriginalFirstThunk); *thunkP; ++thunkP)
      ordinals.insert(IMAGE_SNAP_BY_ORDINAL64(*thunkP) ? std::to_string(IMAGE_ORDINAL64(*thunkP)) : "a name");
  }
  EXPECT_EQ(ordinals, (std::set<std::string>{"104", "106", "108", "110", "116", "117", "180"}));
  FreeLibrary(module);
}

class ModuleLife : public testing::Test {
protected:
  ModuleLife() {
    host::reset();
    mHome.makeFolder("Orvaner/Applications");
    rig::setEnvironment("USERPROFILE", mHome.native());
    rig::setEnvironment("OV_DEVLINK_PORT", "1"); // nobody listens there
    mModule.load(OV_MODULE);
  }
  ~ModuleLife() override {
    EXPECT_EQ(mModule.send(2, nullptr), 0);
    mModule.free();
  }

  rig::TempFolder mHome;
  rig::HostedModule mModule;
};

BOOL CALLBACK collectText(HWND child, LPARAM collected) {
  wchar_t text[1024] = {};
  if (GetDlgCtrlID(child) != IDOK && GetWindowTextW(child, text, 1024) > 0)
    *reinterpret_cast<std::wstring*>(collected) += text;
  return TRUE;
}

TEST_F(ModuleLife, LoadWaitsForDialog) {
  const std::string folder = mHome.native("nobody\\Orvaner\\Applications");
  rig::setEnvironment("USERPROFILE", mHome.native("nobody"));
  std::atomic<bool> isLoaded{false};
  bool isLoadedEarly = true;
  std::wstring text;
  std::thread user([&] {
    HWND dialog = nullptr;
    for (int i = 0; i < 6000 && !dialog; ++i) {
      Sleep(10);
      dialog = FindWindowW(nullptr, kDialogTitle);
    }
    if (!dialog) {
      std::cerr << "no dialog within a minute" << std::endl;
      std::_Exit(1); // it would wait for ever
    }
    Sleep(300);
    isLoadedEarly = isLoaded;
    EnumChildWindows(dialog, collectText, reinterpret_cast<LPARAM>(&text));
    for (; !isLoaded; Sleep(1000)) // repeated, in case the first comes too early
      PostMessageW(dialog, WM_COMMAND, IDOK, 0);
  });
  EXPECT_EQ(mModule.send(1, nullptr), 0);
  isLoaded = true;
  user.join();
  EXPECT_FALSE(isLoadedEarly);
  EXPECT_EQ(text,
            L"Folder '" + std::wstring(folder.begin(), folder.end()) +
                L"' not found!\n\nStart the driver first and try again to read out AutoCAD's menu items.");
}

TEST_F(ModuleLife, OthersReadOpenLog) {
  EXPECT_EQ(mModule.send(1, nullptr), 0);
  const std::string log = mHome.read("Orvaner\\autocad_addin_log.txt"); // no exclusive access
  EXPECT_EQ(log.substr(0, 90), std::string(90, '-'));
  EXPECT_EQ(log.find('\r'), std::string::npos) << "line feeds alone, on every system";
}

} // namespace
