// The module as the host has it: loaded from its file, sent messages, unloaded. No daemon is there, so the
// device link is down all the time, as it is for a user whose device isn't plugged in.

#include <map>

#include <gtest/gtest.h>

#include <arxHeaders.h>

#include "call_log.h"
#include "environment.h"
#include "host.h"
#include "hosted_module.h"
#include "temp_folder.h"

namespace {

constexpr int kInit = 1;
constexpr int kUnload = 2;

class Module : public testing::Test, protected rig::HostedModule {
protected:
  void SetUp() override {
    host::reset();
#ifndef _WIN32
    desktop::reset();
    desktop::holdClock();
    desktop::setTickStep(1);
#endif
    rig::setEnvironment("USERPROFILE", mHome.backslashed());
    rig::setEnvironment("OV_DEVLINK_PORT", "1"); // nobody listens there
    mHome.makeFolder("Orvaner/Applications");
    load(OV_MODULE);
  }
  void TearDown() override {
    free();
  }

  /// Returns whether a text typed at the command line makes the plug-in or the host print the answer.
  static bool prints(const std::wstring& text, const std::wstring& answer) {
    const std::size_t before = host::printed().size();
    host::type(text);
    host::runQueue();
    return host::printed().find(answer, before) != std::wstring::npos;
  }
  bool hasSetting(const std::string& line) const {
    return mHome.read("Orvaner/Applications/autocad_addin.ini").find(line) != std::string::npos;
  }

  rig::TempFolder mHome;
};

TEST_F(Module, RegistersFirstAndRemovesFirst) {
  const auto version = function<int (*)()>("acrxGetApiVersion");
  ASSERT_TRUE(version);
  EXPECT_EQ(version(), 0x170000);
  for (const int code : {-1, 0, 3, 4, 6, 15, 16, 1000}) // no engine is needed for these
    EXPECT_EQ(send(code, nullptr), 0) << code;
  EXPECT_EQ(send(5, nullptr), AcRx::kRetError) << "there is no function to invoke";
  // The steps in their order, but for the menu reader's start, which depends on whether it is beside the module.
  const auto heard = [this](int code) {
    const std::map<std::string, std::string> steps = {
        {"unlockApplication", "unlock "}, {"registerAppMDIAware", "register "},
        {"addCommand", "add "},           {"acutPrintf", "print "},
        {"removeCmd", "remove "},         {"SetTimer", "timer "},
        {"KillTimer", "timer "}};
    call_log::startRecording();
    EXPECT_EQ(send(code, nullptr), 0);
    std::string found;
    for (const std::string& call : call_log::stopRecording())
      if (const auto step = steps.find(call.substr(0, call.find(' '))); step != steps.end())
        found += step->second;
    return found;
  };
#ifndef _WIN32
  const std::string timer = "timer ";
#else
  const std::string timer; // leaves no record
#endif
  EXPECT_EQ(heard(kInit), "unlock register add add add add " + timer + "print ");
  EXPECT_NE(host::printed().find(L"\nmOvAutoCadP constructed\n"), std::wstring::npos);
  EXPECT_EQ(heard(kUnload), "remove remove remove remove " + timer);
  EXPECT_TRUE(prints(L"OV_Toggle_Scroll_Mode\n", L"Unknown command"));
#ifndef _WIN32
  EXPECT_TRUE(desktop::activeTimers().empty());
#endif
}

TEST_F(Module, CommandsToggleAndAreKept) {
  ASSERT_EQ(send(kInit, nullptr), 0);
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
    EXPECT_TRUE(prints(command, answer));
  EXPECT_TRUE(hasSetting("toggleRotationCenter  = on ")) << "not before the end";
  ASSERT_EQ(send(kUnload, nullptr), 0);
  EXPECT_TRUE(hasSetting("toggleRotationCenter  = off "));
  EXPECT_TRUE(hasSetting("toggleRotationAxis    = on "));
  EXPECT_TRUE(hasSetting("scrollTreeAndList     = off "));
  // The object mode is in memory alone, and the others come back.
  ASSERT_EQ(send(kInit, nullptr), 0);
  EXPECT_TRUE(prints(L"OV_Toggle_Object_Move_Mode\n", L"\n=> Move Selected Object:  on"));
  EXPECT_TRUE(prints(L"OV_Toggle_Rotation_Axis\n", L"\n=> Selected Line as Rotation Axis:  off"));
  ASSERT_EQ(send(kUnload, nullptr), 0);
}

} // namespace
