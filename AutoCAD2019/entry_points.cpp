// What the library shows to the host and to Windows.

#include "autocad_app.h"

#include "auto_cad_proxy.h"

namespace {

constexpr int kApiVersion = 0x170000; // of the host's SDK that we are built for

CAutoCAD2011App gApplication;

} // namespace

extern "C" {

AcRx::AppRetCode acrxEntryPoint(int messageCode, void* applicationData) {
  return acrxDispatch(gApplication, messageCode, applicationData);
}

int acrxGetApiVersion() {
  return kApiVersion;
}

BOOL APIENTRY DllMain(HINSTANCE module, DWORD reason, LPVOID isProcessEnding) {
  if (reason == DLL_PROCESS_ATTACH)
    gModuleInstance = module;
  // Without an unload message, then. Our threads are gone already, wherever they were, and the engine would
  // wait for them for ever.
  if (reason == DLL_PROCESS_DETACH && isProcessEnding)
    static_cast<void>(gApplication.mOvAutoCadP.release());
  return TRUE;
}

} // extern "C"
