#include "autocad_app.h"

#include "auto_cad_proxy.h"
#include "command_table.h"
#include "daemon_proxy.h"
#include "ov_auto_cad.h"

namespace {

constexpr DWORD kFreePollInterval = 1; // milliseconds between two looks at the thread that frees the library
constexpr DWORD kTimeToReturn = 100;   // milliseconds, far more than a message takes to return to the host

/// Sets a flag while it lives.
struct FlagWhileAlive {
  explicit FlagWhileAlive(bool& flag) : mFlag(flag) { mFlag = true; }
  ~FlagWhileAlive() { mFlag = false; }
  FlagWhileAlive(const FlagWhileAlive&) = delete;
  FlagWhileAlive& operator=(const FlagWhileAlive&) = delete;

  bool& mFlag;
};

DWORD WINAPI freeThreadEntry(LPVOID library) {
  FreeLibraryAndExitThread(static_cast<HMODULE>(library), 0);
}

} // namespace

CAutoCAD2011App::CAutoCAD2011App()
    : mModuleInstance(nullptr), mIsInMessage(false), mIsFreeing(false), mIsLastReference(false) {}

CAutoCAD2011App::~CAutoCAD2011App() = default;

void CAutoCAD2011App::RegisterServerComponents() {}

AcRx::AppRetCode CAutoCAD2011App::On_kInitAppMsg(void* pkt) {
  if (isEngineInUse())
    return AcRx::kRetError;
  const FlagWhileAlive flagged(mIsInMessage);
  if (mOvAutoCadP) // of a load message before this one
    endEngine();
  holdLibrary();
  AcRx::AppRetCode result = AcRx::kRetOK;
  try {
    result = AcRxArxApp::On_kInitAppMsg(pkt);
  } catch (...) { // then the user can't unload us by hand, but all else works
  }
  addCommands(mModuleInstance);
  try {
    mOvAutoCadP = std::make_unique<OvAutoCad>();
  } catch (...) { // out of memory; the host drops a library that fails to load, so no command of it may stay
    removeCommands();
    freeLibrary();
    return AcRx::kRetError;
  }
  try {
    acutPrintf(L"\nmOvAutoCadP constructed\n");
  } catch (...) {
  }
  return result;
}

AcRx::AppRetCode CAutoCAD2011App::On_kUnloadAppMsg(void* pkt) {
  if (isEngineInUse())
    return AcRx::kRetError;
  const FlagWhileAlive flagged(mIsInMessage);
  endEngine();
  AcRx::AppRetCode result = AcRx::kRetOK;
  try {
    result = AcRxArxApp::On_kUnloadAppMsg(pkt);
  } catch (...) {
  }
  freeLibrary();
  return result;
}

bool CAutoCAD2011App::isEngineInUse() const {
  return mIsInMessage || AutoCadProxy::isInTick();
}

void CAutoCAD2011App::endEngine() {
  removeCommands();
  mOvAutoCadP.reset();
}

void CAutoCAD2011App::holdLibrary() {
  // Found by an address inside it. In a program that has the plug-in linked in, this is the program or null.
  if (!mModuleInstance)
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(&AutoCadProxy::mPlugInLibrary), &mModuleInstance);
}

void CAutoCAD2011App::freeLibrary() {
  if (!mModuleInstance)
    return;
  // Normally the host has a reference of its own and frees it after this message. If it already has, ours is
  // the last, and FreeLibrary called here would return into unmapped code. So a thread frees it that doesn't
  // return.
  mIsFreeing = true;
  const HANDLE thread = CreateThread(nullptr, 0, freeThreadEntry, mModuleInstance, 0, nullptr);
  mModuleInstance = nullptr;
  if (thread) { // without one the library stays for good, which is safe
    while (WaitForSingleObject(thread, kFreePollInterval) == WAIT_TIMEOUT && !mIsLastReference) {
    }
    CloseHandle(thread);
  }
  mIsFreeing = false;
}

void CAutoCAD2011App::letMessageLeave() {
  mIsLastReference = true;
  Sleep(kTimeToReturn);
}
