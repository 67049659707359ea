// The module as the host has it: loaded from its file, told by messages, unloaded. No daemon is there, so the
// device link is down all the time, as it is for a user whose device isn't plugged in.

#include <algorithm>
#include <cstdlib>
#include <set>

#include <gtest/gtest.h>

#include <arxHeaders.h>

#include "calls.h"
#include "environment.h"
#include "host.h"
#include "message_loop.h"
#include "temp_folder.h"

#ifndef _WIN32
#include <dirent.h>

#include "desktop.h"
#endif

namespace {

using EntryPoint = AcRx::AppRetCode (*)(int, void*);
using rig::setEnvironment;

constexpr int kInit = 1;
constexpr int kUnload = 2;

std::wstring wide(const std::string& text) {
  return std::wstring(text.begin(), text.end());
}

/// Lets the message loop run for a while: on a clock in hand where there is one.
void runLoop(DWORD milliseconds) {
#ifdef _WIN32
  rig::runLoop(milliseconds);
#else
  desktop::runTimers(milliseconds);
#endif
}

class Module : public testing::Test {
protected:
  void SetUp() override {
    calls::clear();
    host::reset();
#ifndef _WIN32
    desktop::reset();
    desktop::holdClock();
    desktop::setTickStep(1);
#endif
    setEnvironment("USERPROFILE", mHome.backslashed());
    setEnvironment("OV_DEVLINK_PORT", "1"); // nobody listens there
    mHome.makeFolder("Orvaner/Applications");
  }
  void TearDown() override {
    calls::clear();
    unload();
  }

  void load() {
    mModule = LoadLibraryW(wide(OV_MODULE_PATH).c_str());
    ASSERT_TRUE(mModule);
    mEntryPoint =
        reinterpret_cast<EntryPoint>(reinterpret_cast<void*>(GetProcAddress(mModule, "acrxEntryPoint")));
    ASSERT_TRUE(mEntryPoint);
  }
  void unload() {
    if (mModule)
      FreeLibrary(mModule);
    mModule = nullptr;
  }
  int tell(int code, void* data = nullptr) {
    return mEntryPoint(code, data);
  }

  /// What was printed since the last call.
  std::wstring takePrinted() {
    const std::wstring all = host::printed();
    const std::wstring fresh = all.substr(std::min(mPrintedSize, all.size()));
    mPrintedSize = all.size();
    return fresh;
  }
  /// What a text typed at the command line makes the plug-in print.
  std::wstring type(const std::wstring& text) {
    host::type(text);
    takePrinted();
    host::runQueue();
    return takePrinted();
  }
  std::string settings() const {
    return mHome.read("Orvaner/Applications/autocad_addin.ini");
  }

  rig::TempFolder mHome;
  HMODULE mModule = nullptr;
  EntryPoint mEntryPoint = nullptr;
  std::size_t mPrintedSize = 0;
};

bool contains(const std::wstring& text, const std::wstring& part) {
  return text.find(part) != std::wstring::npos;
}

TEST_F(Module, LoadRegistersBeforeItStartsAndUnloadRemovesBeforeItEnds) {
  load();
  const auto version =
      reinterpret_cast<int (*)()>(reinterpret_cast<void*>(GetProcAddress(mModule, "acrxGetApiVersion")));
  ASSERT_TRUE(version);
  EXPECT_EQ(version(), 0x170000);
  for (const int code : {-1, 0, 3, 4, 6, 15, 16, 1000}) // no engine is needed for these
    EXPECT_EQ(tell(code), 0) << code;
  // The steps in their order; what the menu reader's start does depends on whether it lies beside the module.
  std::set<std::string> steps = {"unlockApplication", "registerAppMDIAware", "addCommand", "acutPrintf",
                                 "removeCmd"};
#ifndef _WIN32
  steps.insert({"SetTimer", "KillTimer"});
#endif
  const auto heard = [this, &steps](int code) {
    calls::startRecording();
    EXPECT_EQ(tell(code), 0);
    std::string found;
    for (const std::string& call : calls::stopRecording()) {
      const std::string name = call.substr(0, call.find(' '));
      if (steps.count(name) != 0)
        found += (name == "SetTimer" || name == "KillTimer" ? "timer" : name) + ' ';
    }
    return found;
  };
  const std::string timer = steps.count("SetTimer") != 0 ? "timer " : "";
  EXPECT_EQ(heard(kInit),
            "unlockApplication registerAppMDIAware addCommand addCommand addCommand addCommand " + timer +
                "acutPrintf ");
  EXPECT_TRUE(contains(takePrinted(), L"\nmOvAutoCadP constructed\n"));
  EXPECT_EQ(heard(kUnload), "removeCmd removeCmd removeCmd removeCmd " + timer);
  EXPECT_TRUE(contains(type(L"OV_Toggle_Scroll_Mode\n"), L"Unknown command"));
#ifndef _WIN32
  EXPECT_TRUE(desktop::activeTimers().empty());
#endif
}

TEST_F(Module, CommandsFlipTellAndAreKept) {
  load();
  ASSERT_EQ(tell(kInit), 0);
  const std::pair<const wchar_t*, const wchar_t*> kCommands[] = {
      {L"OV_Toggle_Rotation_Center\n", L"\n=> Selection as Rotation Center:  off"},
      {L"OV_Toggle_Rotation_Center\n", L"\n=> Selection as Rotation Center:  on"},
      {L"OV_Toggle_Rotation_Center\n", L"\n=> Selection as Rotation Center:  off"},
      {L"ov_toggle_rotation_axis\n", L"\n=> Selected Line as Rotation Axis:  on"},
      {L"OV_Toggle_Scroll_Mode\n", L"\n=> Scroll Trees and Lists:  off"},
      {L"OV_Toggle_Object_Move_Mode\n", L"\n=> Move Selected Object:  on"},
      {L"OV_Toggle_Object_Move_Mode\n", L"\n=> Move Selected Object:  off"},
      {L"OV_Toggle_Object_Move_Mode\n", L"\n=> Move Selected Object:  on"}};
  for (const auto& [command, answer] : kCommands)
    EXPECT_TRUE(contains(type(command), answer));
  EXPECT_NE(settings().find("toggleRotationCenter  = on "), std::string::npos) << "not before the end";
  ASSERT_EQ(tell(kUnload), 0);
  EXPECT_NE(settings().find("toggleRotationCenter  = off "), std::string::npos);
  EXPECT_NE(settings().find("toggleRotationAxis    = on "), std::string::npos);
  EXPECT_NE(settings().find("scrollTreeAndList     = off "), std::string::npos);
  // The object mode lives in memory alone, and the others come back.
  ASSERT_EQ(tell(kInit), 0);
  EXPECT_TRUE(contains(type(L"OV_Toggle_Object_Move_Mode\n"), L"\n=> Move Selected Object:  on"));
  EXPECT_TRUE(contains(type(L"OV_Toggle_Rotation_Axis\n"), L"\n=> Selected Line as Rotation Axis:  off"));
  ASSERT_EQ(tell(kUnload), 0);
}

TEST_F(Module, ForgetsADocumentThatGoesAndLeavesNoReactorBehind) {
  load();
  ASSERT_EQ(tell(kInit), 0);
  host::closeDocument();
  runLoop(300);
  ASSERT_EQ(tell(kUnload), 0);
  unload();
  calls::startRecording();
  host::closeDocument(); // a reactor left behind would be called in a library that is gone
  EXPECT_EQ(calls::stopRecording(), std::vector<std::string>{});
}

#ifndef _WIN32

/// Entries of a folder of the kernel's that lists what the process has.
int entries(const char* folder) {
  DIR* const folderP = opendir(folder);
  int count = 0;
  while (readdir(folderP))
    ++count;
  closedir(folderP);
  return count;
}

TEST_F(Module, LoadedAndUnloadedTwoHundredTimesLeavesNothing) {
  const auto round = [this] {
    load();
    ASSERT_EQ(tell(kInit), 0);
    runLoop(150);
    ASSERT_EQ(tell(kUnload), 0);
    unload();
  };
  round(); // what the process keeps for good, it has from here on
  const int threads = entries("/proc/self/task");
  const int descriptors = entries("/proc/self/fd");
  for (int i = 0; i < 200; ++i)
    round();
  EXPECT_EQ(entries("/proc/self/task"), threads);
  EXPECT_EQ(entries("/proc/self/fd"), descriptors);
  EXPECT_TRUE(desktop::activeTimers().empty());
  const host::Held held = host::held();
  EXPECT_EQ(held.locks + held.openForRead + held.openForWrite + held.selectionSets, 0);
}

#endif

} // namespace
