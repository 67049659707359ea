#include "desktop_test.h"

#include <algorithm>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>

using testing::ElementsAre;

namespace {

namespace fs = std::filesystem;

std::wstring widen(const std::string& text) {
  std::wstring wide;
  for (const char c : text)
    wide.push_back(static_cast<unsigned char>(c));
  return wide;
}

std::wstring withBackslashes(std::wstring path) {
  std::replace(path.begin(), path.end(), L'/', L'\\');
  return path;
}

/// What DllMain of the test's modules was told, in order.
std::vector<DWORD> reasons() {
  std::vector<DWORD> told;
  for (const desktop::BeepRecord& beep : desktop::beeps())
    told.push_back(beep.frequency);
  return told;
}

std::wstring moduleFileName(HMODULE module) {
  wchar_t path[4096] = {};
  const DWORD length = GetModuleFileNameW(module, path, 4096);
  EXPECT_EQ(length, std::wcslen(path));
  return path;
}

/// Whether the process still holds a library.
bool isMapped(const char* path) {
  void* const library = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
  if (library != nullptr)
    dlclose(library);
  return library != nullptr;
}

class Modules : public DesktopTest {};

} // namespace

TEST_F(Modules, LoadedTwiceIsEnteredAndLeftOnce) {
  const HMODULE module = LoadLibraryW(withBackslashes(widen(MODULE_DIARY)).c_str());
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(LoadLibraryA(MODULE_DIARY), module);
  EXPECT_EQ(desktop::beeps()[0].milliseconds, 1u) << "it could find its own path from there";
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_THAT(reasons(), ElementsAre(DLL_PROCESS_ATTACH));
  const auto answer =
      reinterpret_cast<int (*)()>(reinterpret_cast<void*>(GetProcAddress(module, "diaryAnswer")));
  ASSERT_NE(answer, nullptr);
  EXPECT_EQ(answer(), 42);
  // It leans on a library that has this one, which is none of its own exports.
  EXPECT_EQ(GetProcAddress(module, "Beep"), nullptr);
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_THAT(reasons(), ElementsAre(DLL_PROCESS_ATTACH, DLL_PROCESS_DETACH));
  EXPECT_FALSE(FreeLibrary(module));
  EXPECT_FALSE(isMapped(MODULE_DIARY));
}

TEST_F(Modules, ModuleThatRefusesIsNotLoaded) {
  EXPECT_EQ(LoadLibraryA(MODULE_REFUSING), nullptr);
  EXPECT_THAT(reasons(), ElementsAre(DLL_PROCESS_ATTACH, DLL_PROCESS_DETACH));
  // It was unloaded for good: the next attempt begins anew.
  EXPECT_EQ(LoadLibraryA(MODULE_REFUSING), nullptr);
  EXPECT_EQ(reasons().size(), 4u);
  for (const wchar_t* const path : {L"no/such/module.arx", L"", L"\x20AC.arx"})
    EXPECT_EQ(LoadLibraryW(path), nullptr);
}

TEST_F(Modules, FileNameIsTheFullPathWithBackslashes) {
  const fs::path folder = fs::temp_directory_path() / "ov_modules_test d.\xC3\xBC";
  fs::create_directories(folder);
  const fs::path copy = folder / "copy.arx";
  fs::copy_file(MODULE_PLAIN, copy, fs::copy_options::overwrite_existing);
  const HMODULE module = LoadLibraryW(withBackslashes(widen(fs::relative(copy).string())).c_str());
  ASSERT_NE(module, nullptr);
  const std::wstring expected = withBackslashes(widen(copy.string()));
  EXPECT_EQ(moduleFileName(module), expected);
  EXPECT_TRUE(reasons().empty()) << "this one has no entry point";
  EXPECT_NE(GetProcAddress(module, "plainAnswer"), nullptr);
  EXPECT_EQ(GetProcAddress(module, reinterpret_cast<LPCSTR>(1)), nullptr);

  // The narrow form is the native path again, apart from the slashes.
  char narrow[4096] = {};
  WideCharToMultiByte(CP_ACP, 0, moduleFileName(module).c_str(), -1, narrow, sizeof(narrow), " ", nullptr);
  std::string native = narrow;
  std::replace(native.begin(), native.end(), '\\', '/');
  EXPECT_TRUE(std::ifstream(native).is_open());

  wchar_t small[9] = {};
  EXPECT_EQ(GetModuleFileNameW(module, small, 9), 9u);
  EXPECT_EQ(std::wstring(small), expected.substr(0, 8));
  FreeLibrary(module);
  EXPECT_EQ(moduleFileName(module), L"");
  fs::remove_all(folder);
}
