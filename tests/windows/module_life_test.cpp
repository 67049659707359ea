// The module under real Windows: its dialog, its log under other readers' eyes, and what fifty lives of it
// leave.

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include <arxHeaders.h>

#include <tlhelp32.h>

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
  Plugin() : mModule(LoadLibraryW(wide(OV_MODULE).c_str())) {
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

// The host may end without an unload message. By then Windows has ended our threads, wherever they were.
TEST_F(ModuleLife, ProcessThatEndsWithThePlugInLoadedEnds) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        Plugin plugin;
        rig::runLoop(300);
        std::exit(0);
      },
      testing::ExitedWithCode(0), "");
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

struct Holdings {
  DWORD handles = 0;
  DWORD userObjects = 0;
  int threads = 0;
};

Holdings holdings() {
  Holdings now;
  GetProcessHandleCount(GetCurrentProcess(), &now.handles);
  now.userObjects = GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS);
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry = {};
  entry.dwSize = sizeof entry;
  for (BOOL isThere = Thread32First(snapshot, &entry); isThere; isThere = Thread32Next(snapshot, &entry))
    now.threads += entry.th32OwnerProcessID == GetCurrentProcessId();
  CloseHandle(snapshot);
  return now;
}

TEST_F(ModuleLife, FiftyLivesLeaveWhatOneLeaves) {
  constexpr int kLives = 50;
  const auto live = [] {
    Plugin plugin;
    rig::runLoop(120); // a tick at least
  };
  live();
  const Holdings one = holdings();
  for (int i = 1; i < kLives; ++i)
    live();
  const Holdings fifty = holdings();
  EXPECT_EQ(fifty.handles, one.handles);
  EXPECT_EQ(fifty.userObjects, one.userObjects);
  EXPECT_EQ(fifty.threads, one.threads);
}

} // namespace
