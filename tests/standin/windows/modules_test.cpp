#include "call_log.h"
#include "desktop.h"

#include <gmock/gmock.h>

#include <dlfcn.h>

using testing::ElementsAre;

namespace {

/// What DllMain of the test's module was told since the recording began.
std::vector<std::string> told() {
  std::vector<std::string> beeps;
  for (const std::string& line : call_log::stopRecording())
    if (line.rfind("Beep", 0) == 0)
      beeps.push_back(line);
  call_log::startRecording();
  return beeps;
}

class ModulesTest : public testing::Test {
protected:
  ModulesTest() { call_log::startRecording(); }
  ~ModulesTest() override { call_log::clear(); }
};

TEST_F(ModulesTest, LoadedTwiceIsEnteredAndLeftOnce) {
  std::wstring path;
  for (const char c : std::string(MODULE_DIARY))
    path += c == '/' ? L'\\' : static_cast<wchar_t>(c);
  const HMODULE module = LoadLibraryW(path.c_str());
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(LoadLibraryA(MODULE_DIARY), module);
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_THAT(told(), ElementsAre("Beep 1 1")) << "it finds its own path while it is loaded";
  const auto answer =
      reinterpret_cast<int (*)()>(reinterpret_cast<void*>(GetProcAddress(module, "diaryAnswer")));
  ASSERT_NE(answer, nullptr);
  EXPECT_EQ(answer(), 42);
  wchar_t name[1024], small[9];
  EXPECT_EQ(GetModuleFileNameW(module, name, 1024), path.size());
  EXPECT_EQ(name, path);
  EXPECT_EQ(GetModuleFileNameW(module, small, 9), 9u);
  EXPECT_EQ(small, path.substr(0, 8));
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_THAT(told(), ElementsAre("Beep 0 1"));
  EXPECT_FALSE(FreeLibrary(module));
  EXPECT_EQ(dlopen(MODULE_DIARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
}

TEST_F(ModulesTest, RefusingModuleIsNotLoaded) {
  call_log::failAt("Beep", 1);
  EXPECT_EQ(LoadLibraryA(MODULE_DIARY), nullptr);
  EXPECT_THAT(told(), ElementsAre("Beep 1 1", "Beep 0 1"));
  EXPECT_EQ(dlopen(MODULE_DIARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
}

} // namespace
