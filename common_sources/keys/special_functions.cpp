// Keys with a meaning of their own: the six standard views and zoom to extents. Their commands are
// transparent in 3D, marked with an apostrophe, so that a running command goes on; there is no cancel in
// front of them.

#include "auto_cad_proxy.h"

#include "event_codes.h"
#include "logging.h"

namespace {

constexpr wchar_t kZoomAll[] = L"'_ZOOM _ALL ";
constexpr wchar_t kZoomAll2D[] = L"_ZOOM _ALL ";

/// Null for a code that is no view.
const wchar_t* viewCommand(int eventCode) {
  switch (eventCode) {
  case kViewFrontEvent:
    return L"'_-VIEW _FRONT ";
  case kViewRightEvent:
    return L"'_-VIEW _RIGHT ";
  case kViewTopEvent:
    return L"'_-VIEW _TOP ";
  case kViewBackEvent:
    return L"'_-VIEW _BACK ";
  case kViewLeftEvent:
    return L"'_-VIEW _LEFT ";
  case kViewBottomEvent:
    return L"'_-VIEW _BOTTOM ";
  default:
    return nullptr;
  }
}

} // namespace

void AutoCadProxy::execSpecialApplFunction(int eventCode) {
  AcApDocManager* const managerP = acDocManagerPtr();
  AcApDocument* const documentP = managerP ? managerP->curDocument() : nullptr;
  const auto send = [managerP, documentP](const wchar_t* text) {
    if (managerP)
      managerP->sendStringToExecute(documentP, text, false, false, true);
  };
  if (mViewMode == kMode2D) { // a layout has no views to choose from
    if (eventCode == kZoomAllEvent)
      send(kZoomAll2D);
    return;
  }
  if (eventCode == kZoomAllEvent) {
    send(kZoomAll);
    return;
  }
  if (const wchar_t* const command = viewCommand(eventCode))
    send(command);
  else
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::execSpecialApplFunction",
           "Unknown special command '" << eventCode << "' found!");
  if (mZoomAllAfterView)
    send(kZoomAll);
}
