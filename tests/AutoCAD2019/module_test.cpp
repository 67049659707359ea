// The module as the host has it: loaded from its file, told by messages, unloaded. No daemon is there, so the
// device link is down all the time, as it is for a user whose device isn't plugged in.

#include <algorithm>
#include <cstdlib>
#include <set>

#include <gtest/gtest.h>

#include <arxHeaders.h>

#include "call_log.h"
#include "environment.h"
#include "host.h"
#include "hosted_module.h"
#include "temp_folder.h"

namespace {

using rig::setEnvironment;

constexpr int kInit = 1;
constexpr int kUnload = 2;

class Module : public testing::Test, protected rig::HostedModule {
protected:
  void SetUp() override {
    call_log::clear();
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
    call_log::clear();
    unload();
  }

  void load() {
    HostedModule::load(OV_MODULE);
  }
  void unload() {
    if (mHandle)
      free();
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
  std::size_t mPrintedSize = 0;
};

bool contains(const std::wstring& text, const std::wstring& part) {
  return text.find(part) != std::wstring::npos;
}

TEST_F(Module, LoadRegistersBeforeItStartsAndUnloadRemovesBeforeItEnds) {
  load();
  const auto version = function<int (*)()>("acrxGetApiVersion");
  ASSERT_TRUE(version);
  EXPECT_EQ(version(), 0x170000);
  for (const int code : {-1, 0, 3, 4, 6, 15, 16, 1000}) // no engine is needed for these
    EXPECT_EQ(tell(code, nullptr), 0) << code;
  EXPECT_EQ(tell(5, nullptr), AcRx::kRetError) << "there is no function to invoke";
  // The steps in their order; what the menu reader's start does depends on whether it lies beside the module.
  std::set<std::string> steps = {"unlockApplication", "registerAppMDIAware", "addCommand", "acutPrintf",
                                 "removeCmd"};
#ifndef _WIN32
  steps.insert({"SetTimer", "KillTimer"});
#endif
  const auto heard = [this, &steps](int code) {
    call_log::startRecording();
    EXPECT_EQ(tell(code, nullptr), 0);
    std::string found;
    for (const std::string& call : call_log::stopRecording()) {
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
  ASSERT_EQ(tell(kInit, nullptr), 0);
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
  ASSERT_EQ(tell(kUnload, nullptr), 0);
  EXPECT_NE(settings().find("toggleRotationCenter  = off "), std::string::npos);
  EXPECT_NE(settings().find("toggleRotationAxis    = on "), std::string::npos);
  EXPECT_NE(settings().find("scrollTreeAndList     = off "), std::string::npos);
  // The object mode lives in memory alone, and the others come back.
  ASSERT_EQ(tell(kInit, nullptr), 0);
  EXPECT_TRUE(contains(type(L"OV_Toggle_Object_Move_Mode\n"), L"\n=> Move Selected Object:  on"));
  EXPECT_TRUE(contains(type(L"OV_Toggle_Rotation_Axis\n"), L"\n=> Selected Line as Rotation Axis:  off"));
  ASSERT_EQ(tell(kUnload, nullptr), 0);
}

} // namespace
