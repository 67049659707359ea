// Keys with a meaning of their own: the six standard views and zoom to extents. There is no cancel in front
// of their commands.

#include "keys/special_functions.h"

#include "auto_cad_proxy.h"
#include "logging.h"

void AutoCadProxy::execSpecialApplFunction(int eventCode) {
  AcApDocManager* const managerP = acDocManagerPtr();
  AcApDocument* const documentP = managerP ? managerP->curDocument() : nullptr;
  const auto send = [managerP, documentP](const wchar_t* text) {
    if (managerP && text)
      managerP->sendStringToExecute(documentP, text, false, false, true);
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
