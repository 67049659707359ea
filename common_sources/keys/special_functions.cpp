// The view keys and the zoom key. No cancel precedes their commands.

#include "keys/special_functions.h"

#include "auto_cad_proxy.h"
#include "logging.h"

void AutoCadProxy::execSpecialApplFunction(int eventCode) {
  AcApDocManager& manager = documentManager();
  AcApDocument* const documentP = manager.curDocument();
  const auto send = [&manager, documentP](const wchar_t* text) {
    if (text)
      manager.sendStringToExecute(documentP, text, false, false, true);
  };
  const SpecialFunction* const functionP = findSpecialFunction(eventCode);
  if (mViewMode == kMode2D) {
    send(functionP ? functionP->text2D : nullptr);
    return;
  }
  if (functionP)
    send(functionP->text);
  else
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::execSpecialApplFunction",
           "Unknown special command '" << eventCode << "' found!");
  if (mZoomAllAfterView && (!functionP || functionP->isView))
    send(kZoomAll);
}
