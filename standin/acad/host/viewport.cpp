#include <windows.h>

#include <cmath>

#include "acedads.h"
#include "frames.h"
#include "trace_types.h"

double AcDbViewport::width() const {
  call_log::Call call("width", this);
  return call.returns(mLayout.width);
}

double AcDbViewport::height() const {
  call_log::Call call("height", this);
  return call.returns(mLayout.height);
}

double AcDbViewport::viewHeight() const {
  call_log::Call call("viewHeight", this);
  return call.returns(mLayout.viewHeight);
}

AcGePoint2d AcDbViewport::viewCenter() const {
  call_log::Call call("viewCenter", this);
  return call.returns(mLayout.centre);
}

Acad::ErrorStatus AcDbViewport::setViewCenter(const AcGePoint2d& centre) {
  if (call_log::Call("setViewCenter", this, call_log::shown(centre.x), call_log::shown(centre.y)).mustFail())
    return Acad::eInvalidInput;
  if (!isWriteEnabled())
    return Acad::eNotOpenForWrite;
  if (!std::isfinite(centre.x) || !std::isfinite(centre.y)) {
    ++host::document().nonFiniteCalls;
    return Acad::eInvalidInput;
  }
  mLayout.centre = centre;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbViewport::setViewHeight(double height) {
  if (call_log::Call("setViewHeight", this, call_log::shown(height)).mustFail())
    return Acad::eInvalidInput;
  if (!isWriteEnabled())
    return Acad::eNotOpenForWrite;
  if (!std::isfinite(height))
    ++host::document().nonFiniteCalls;
  if (!std::isfinite(height) || height <= 0)
    return Acad::eInvalidInput;
  mLayout.viewHeight = height;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbViewport::updateDisplay() const {
  const call_log::Call call("updateDisplay", this);
  if (call.mustFail())
    return Acad::eNotApplicable;
  host::showFrame(true);
  return Acad::eOk;
}

AcDbObjectId acedActiveViewportId() {
  call_log::Call call("acedActiveViewportId");
  return call.returns(call.mustFail() || host::variable("tilemode") != 0 ? AcDbObjectId::kNull
                                                                         : host::document().viewport);
}

namespace host {

LayoutState& layout() {
  return static_cast<AcDbViewport&>(*find(document().viewport)).mLayout;
}

} // namespace host
