// The module under real Windows: its dialog, its log under other readers' eyes, its folder.

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <arxHeaders.h>

#include "call_log.h"
#include "host.h"
#include "message_loop.h"
#include "process.h"
#include "temp_folder.h"

namespace {

constexpr wchar_t kDialogTitle[] = L"Orvane Plug-in Error";

std::wstring wide(const std::string& text) {
  return std::wstring(text.begin(), text.end());
}

/// The plug-in loaded from its file, and told so.
class Plugin {
public:
  explicit Plugin(const std::wstring& path = wide(OV_MODULE)) : mModule(LoadLibraryW(path.c_str())) {
    mEntryPoint = reinterpret_cast<AcRx::AppRetCode (*)(int, void*)>(
        reinterpret_cast<void*>(GetProcAddress(mModule, "acrxEntryPoint")));
    EXPECT_EQ(mEntryPoint(1, nullptr), 0);
  }
  ~Plugin() {
    EXPECT_EQ(mEntryPoint(2, nullptr), 0);
    EXPECT_TRUE(FreeLibrary(mModule));
  }
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;

private:
  HMODULE mModule;
  AcRx::AppRetCode (*mEntryPoint)(int, void*);
};

class ModuleLife : public testing::Test {
protected:
  void SetUp() override {
    host::reset();
    mHome.makeFolder("Orvaner/Applications");
    _putenv_s("USERPROFILE", mHome.native().c_str());
    _putenv_s("OV_DEVLINK_PORT", "1"); // nobody listens there
  }

  rig::TempFolder mHome;
};

/// What a dialog shows: the text of its static children.
BOOL CALLBACK collectText(HWND child, LPARAM collected) {
  wchar_t className[32] = {};
  GetClassNameW(child, className, 32);
  if (std::wstring(className) == L"Static") {
    wchar_t text[1024] = {};
    GetWindowTextW(child, text, 1024);
    *reinterpret_cast<std::wstring*>(collected) += text;
  }
  return TRUE;
}

TEST_F(ModuleLife, MissingFolderIsToldInADialogThatTheLoadWaitsFor) {
  _putenv_s("USERPROFILE", mHome.native("nobody").c_str());
  std::atomic<bool> isLoaded{false};
  std::atomic<bool> wasLoadedBefore{true};
  std::wstring text;
  std::thread user([&] {
    HWND dialog = nullptr;
    for (int i = 0; i < 1000 && !dialog; ++i) {
      Sleep(10);
      dialog = FindWindowW(nullptr, kDialogTitle);
    }
    if (!dialog)
      return;
    Sleep(300);
    wasLoadedBefore = isLoaded.load();
    EnumChildWindows(dialog, collectText, reinterpret_cast<LPARAM>(&text));
    PostMessageW(dialog, WM_COMMAND, IDOK, 0);
  });
  {
    Plugin plugin;
    isLoaded = true;
    user.join();
    EXPECT_FALSE(wasLoadedBefore) << "the load didn't wait for OK";
    EXPECT_EQ(text,
              L"Folder '" + wide(mHome.native("nobody\\Orvaner\\Applications")) +
                  L"' not found!\n\nStart the driver first and try again to read out AutoCAD's menu items.");
    EXPECT_NE(host::printed().find(L"mOvAutoCadP constructed"), std::wstring::npos) << "the load goes on";
  }
}

TEST_F(ModuleLife, FoldersBeyondTheCodePageAreTakenForMissing) {
  // The variable reaches the plug-in in the system's code page, where this name can't be said.
  const std::wstring folder = wide(mHome.native()) + L"\\\x65E5\x672C";
  CreateDirectoryW(folder.c_str(), nullptr);
  CreateDirectoryW((folder + L"\\Orvaner").c_str(), nullptr);
  CreateDirectoryW((folder + L"\\Orvaner\\Applications").c_str(), nullptr);
  _wputenv_s(L"USERPROFILE", folder.c_str());
  std::atomic<bool> wasTold{false};
  std::atomic<bool> isLoaded{false};
  std::thread user([&] {
    while (!wasTold && !isLoaded) {
      Sleep(10);
      if (const HWND dialog = FindWindowW(nullptr, kDialogTitle)) {
        PostMessageW(dialog, WM_COMMAND, IDOK, 0);
        wasTold = true;
      }
    }
  });
  {
    Plugin plugin;
    isLoaded = true;
  }
  user.join();
  EXPECT_TRUE(wasTold);
}

TEST_F(ModuleLife, MenuReaderIsFoundBesideItInAnyFolderOfTheCodePage) {
  const std::wstring folder = wide(mHome.native()) + L"\\J\xF6rg";
  CreateDirectoryW(folder.c_str(), nullptr);
  const std::wstring module = folder + L"\\OVAutoCAD2019.arx";
  ASSERT_TRUE(CopyFileW(wide(OV_MODULE).c_str(), module.c_str(), TRUE));
  std::ofstream(std::filesystem::path(folder + L"\\OvScribe2018.dll")) << "stands for the menu reader";
  call_log::startRecording();
  { Plugin plugin(module); }
  std::wstring command = L"(command \"netload\" \"" + folder + L"/OvScribe2018.dll\")";
  std::replace(command.begin(), command.end(), L'\\', L'/');
  std::string typed; // as the journal has it: a byte for each character
  for (const wchar_t c : command)
    typed += static_cast<char>(c);
  EXPECT_THAT(call_log::stopRecording(), testing::Contains("sendStringToExecute \"" + typed + "\\n\" 1 0 1"));
}

TEST_F(ModuleLife, OtherProcessesReadTheLogWhileItIsWritten) {
  Plugin plugin;
  rig::runLoop(300);
  const std::string log = mHome.native("Orvaner\\autocad_addin_log.txt");
  // The daemon reads any file as a session, and tells what is wrong with its first line.
  Process reader(OV_DAEMON, {log}, mHome.native("reader.txt"));
  EXPECT_GT(reader.wait(20), 0);
  EXPECT_NE(mHome.read("reader.txt").find("autocad_addin_log.txt:1: "), std::string::npos)
      << mHome.read("reader.txt");
  const std::string copy = mHome.read("Orvaner\\autocad_addin_log.txt");
  EXPECT_EQ(copy.compare(0, 90, std::string(90, '-')), 0);
  EXPECT_NE(copy.find("AutoCadProxy constructed."), std::string::npos);
  EXPECT_EQ(copy.find('\r'), std::string::npos) << "line feeds alone, on every system";
}

} // namespace
