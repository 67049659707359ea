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
  AcRx::AppRetCode result = AcRx::kRetOK;
  try {
    result = AcRxArxApp::On_kInitAppMsg(pkt);
  } catch (...) { // the user can't unload us by hand then; that is no reason to stay away
  }
  addCommands(mModuleInstance);
  try {
    mOvAutoCadP = std::make_unique<OvAutoCad>();
  } catch (...) { // no memory, or no thread lock: without an engine the commands would do nothing
    removeCommands();
    return AcRx::kRetError;
  }
  try {
    acutPrintf(L"\nmOvAutoCadP constructed\n");
  } catch (...) {
  }
  return result;
}

AcRx::AppRetCode CAutoCAD2011App::On_kUnloadAppMsg(void* pkt) {
  removeCommands();
  mOvAutoCadP.reset();
  return AcRxArxApp::On_kUnloadAppMsg(pkt);
}
