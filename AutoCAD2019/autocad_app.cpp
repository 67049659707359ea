#include "autocad_app.h"

#include "auto_cad_proxy.h"
#include "command_table.h"
#include "daemon_proxy.h"
#include "ov_auto_cad.h"

CAutoCAD2011App::CAutoCAD2011App() = default;

CAutoCAD2011App::~CAutoCAD2011App() = default;

HINSTANCE CAutoCAD2011App::moduleInstance() const {
  return gModuleInstance;
}

void CAutoCAD2011App::RegisterServerComponents() {}

AcRx::AppRetCode CAutoCAD2011App::On_kInitAppMsg(void* pkt) {
  try {
    const AcRx::AppRetCode result = AcRxArxApp::On_kInitAppMsg(pkt);
    addCommands(mModuleInstance);
    mOvAutoCadP = std::make_unique<OvAutoCad>();
    acutPrintf(L"\nmOvAutoCadP constructed\n");
    return result;
  } catch (...) {
    // An engine that came up stays; without one the commands would do nothing.
    if (!mOvAutoCadP)
      removeCommands();
    return mOvAutoCadP ? AcRx::kRetOK : AcRx::kRetError;
  }
}

AcRx::AppRetCode CAutoCAD2011App::On_kUnloadAppMsg(void* pkt) {
  try {
    removeCommands();
  } catch (...) { // the engine has to go all the same
  }
  mOvAutoCadP.reset();
  return AcRxArxApp::On_kUnloadAppMsg(pkt);
}
