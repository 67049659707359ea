// Exported functions, DllMain, and the library's globals.

#include "autocad_app.h"

#include <new>

#include "auto_cad_proxy.h"
#include "logging.h"

namespace {

constexpr int kApiVersion = 0x170000; // of the host's SDK that we are built for

bool gIsProcessEnding = false;

/// An object that is made when the library is loaded and destroyed when it is unloaded. A process that ends
/// with the library in it leaves the object alone: Windows has ended our threads by then, wherever they were,
/// and waiting for one of them, or for a lock that it held, never ends.
template <class T> struct WithLibrary {
  WithLibrary() { new (&mObject) T; }
  ~WithLibrary() {
    if (!gIsProcessEnding)
      destroy();
  }
  void destroy() {
    if (mIsThere)
      mObject.~T();
    mIsThere = false;
  }
  WithLibrary(const WithLibrary&) = delete;
  WithLibrary& operator=(const WithLibrary&) = delete;

  union {
    T mObject;
  };
  bool mIsThere = true;
};

/// What the application keeps for each document: nothing so far.
class CDocData {};

// Constructed in this order, destroyed in the reverse order.
WithLibrary<AcApDataManager<CDocData>> gDocVars;
WithLibrary<Logging> gLoggingHolder;
WithLibrary<CAutoCAD2011App> gApplication;

using Operation = AcRx::AppRetCode (AcRxDbxApp::*)(void*);

/// By message code.
constexpr Operation kOperations[] = {
    &AcRxDbxApp::On_kNullMsg,    &AcRxDbxApp::On_kInitAppMsg,    &AcRxDbxApp::On_kUnloadAppMsg,
    &AcRxDbxApp::On_kLoadDwgMsg, &AcRxDbxApp::On_kUnloadDwgMsg,  &AcRxDbxApp::On_kInvkSubrMsg,
    &AcRxDbxApp::On_kEndMsg,     &AcRxDbxApp::On_kQuitMsg,       &AcRxDbxApp::On_kSaveMsg,
    &AcRxDbxApp::On_kCfgMsg,     &AcRxDbxApp::On_kDependencyMsg, &AcRxDbxApp::On_kSuspendMsg,
    &AcRxDbxApp::On_kResumeMsg,  &AcRxDbxApp::On_kPreEndMsg,     &AcRxDbxApp::On_kPreQuitMsg,
    &AcRxDbxApp::On_kPreSaveMsg};
constexpr int kOperationCount = static_cast<int>(sizeof kOperations / sizeof kOperations[0]);

} // namespace

Logging& gLogging = gLoggingHolder.mObject;

extern "C" {

AcRx::AppRetCode acrxEntryPoint(int messageCode, void* applicationData) {
  if (messageCode < 0 || messageCode >= kOperationCount)
    return AcRx::kRetOK;
  AcRxDbxApp& application = gApplication.mObject;
  return (application.*kOperations[messageCode])(applicationData);
}

int acrxGetApiVersion() {
  return kApiVersion;
}

BOOL APIENTRY DllMain(HINSTANCE module, DWORD reason, LPVOID isProcessEnding) {
  if (reason == DLL_PROCESS_ATTACH)
    AutoCadProxy::mPlugInLibrary = module;
  // On other systems our threads still run at the process's end. It is the same end there, since an orderly
  // one waits for them, and takes longer than a user likes.
  else if (reason == DLL_PROCESS_DETACH && isProcessEnding)
    gIsProcessEnding = true;
  else if (reason == DLL_PROCESS_DETACH && gApplication.mObject.isFreeing()) {
    gDocVars.destroy(); // it calls the host, so it goes while the main thread still waits for this one
    gApplication.mObject.letMessageLeave();
  }
  return TRUE;
}

} // extern "C"
