#include "autocad_app.h"

#include "auto_cad_proxy.h"
#include "command_table.h"
#include "daemon_proxy.h"
#include "ov_auto_cad.h"

namespace {

constexpr DWORD kFreeInterval = 1; // milliseconds between two looks at the thread that frees the library
constexpr DWORD kWayOut = 100;     // milliseconds, far more than a message takes to return to the host

/// Sets a flag while it lives.
struct Flagged {
  explicit Flagged(bool& flag) : mFlag(flag) { mFlag = true; }
  ~Flagged() { mFlag = false; }
  Flagged(const Flagged&) = delete;
  Flagged& operator=(const Flagged&) = delete;

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
  const Flagged flagged(mIsInMessage);
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
  } catch (...) { // no memory, or no thread lock: without an engine the commands would do nothing
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
  const Flagged flagged(mIsInMessage);
  endEngine();
  const AcRx::AppRetCode result = AcRxArxApp::On_kUnloadAppMsg(pkt);
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
  // Known by an address inside it. In a program that has the plug-in linked in there is nothing to hold.
  if (!mModuleInstance)
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(&AutoCadProxy::mModuleInstance), &mModuleInstance);
}

void CAutoCAD2011App::freeLibrary() {
  if (!mModuleInstance)
    return;
  // The host still has its own reference and frees that one last, on this thread. If it has freed it before,
  // ours is the last one, and it must not go by a call that returns here: so a thread frees it that never
  // comes back.
  mIsFreeing = true;
  const HANDLE thread = CreateThread(nullptr, 0, freeThreadEntry, mModuleInstance, 0, nullptr);
  mModuleInstance = nullptr;
  if (!thread) // the library stays for good, which is safe
    return;
  while (WaitForSingleObject(thread, kFreeInterval) == WAIT_TIMEOUT && !mIsLastReference) {
  }
  CloseHandle(thread);
  mIsFreeing = false;
}

void CAutoCAD2011App::letMessageLeave() {
  mIsLastReference = true;
  Sleep(kWayOut);
}
