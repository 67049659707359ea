#include <windows.h>

#include <cmath>

#include "acedads.h"
#include "host_access.h"
#include "state.h"
#include "trace_types.h"

AcDbViewport::AcDbViewport(double width, double height, double viewHeight, const AcGePoint2d& viewCentre)
    : mWidth(width), mHeight(height), mViewHeight(viewHeight), mViewCentre(viewCentre) {}

double AcDbViewport::width() const {
  call_log::Call call("width", this);
  return call.returns(mWidth);
}

double AcDbViewport::height() const {
  call_log::Call call("height", this);
  return call.returns(mHeight);
}

double AcDbViewport::viewHeight() const {
  call_log::Call call("viewHeight", this);
  return call.returns(mViewHeight);
}

AcGePoint2d AcDbViewport::viewCenter() const {
  call_log::Call call("viewCenter", this);
  return call.returns(mViewCentre);
}

Acad::ErrorStatus AcDbViewport::setViewCenter(const AcGePoint2d& centre) {
  if (call_log::Call("setViewCenter", this, call_log::shown(centre.x), call_log::shown(centre.y)).mustFail())
    return Acad::eInvalidInput;
  if (!isWriteEnabled())
    return Acad::eNotOpenForWrite;
  if (!std::isfinite(centre.x) || !std::isfinite(centre.y)) {
    ++host::document().viewCounts.nonFiniteCalls;
    return Acad::eInvalidInput;
  }
  mViewCentre = centre;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbViewport::setViewHeight(double height) {
  if (call_log::Call("setViewHeight", this, call_log::shown(height)).mustFail())
    return Acad::eInvalidInput;
  if (!isWriteEnabled())
    return Acad::eNotOpenForWrite;
  if (!std::isfinite(height))
    ++host::document().viewCounts.nonFiniteCalls;
  if (!std::isfinite(height) || height <= 0)
    return Acad::eInvalidInput;
  mViewHeight = height;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbViewport::updateDisplay() const {
  const call_log::Call call("updateDisplay", this);
  if (call.mustFail())
    return Acad::eNotApplicable;
  host::showFrame(true);
  return Acad::eOk;
}

void AcDbViewport::subAddExtents(const AcGeMatrix3d* transform, AcDbExtents& extents) const {
  for (const double sx : {-0.5, 0.5})
    for (const double sy : {-0.5, 0.5})
      extents.addPoint(host::apply(transform, AcGePoint3d(sx * mWidth, sy * mHeight, 0)));
}

Acad::ErrorStatus AcDbViewport::subTransformBy(const AcGeMatrix3d&) {
  return Acad::eNotApplicable; // the paper's rectangle stays where it is
}

void AcDbViewport::subAddStrokes(const AcGeMatrix3d*, std::vector<AcDbStroke>&) const {}

AcDbObjectId acedActiveViewportId() {
  call_log::Call call("acedActiveViewportId");
  return call.returns(call.mustFail() || host::variable("tilemode") != 0 ? AcDbObjectId::kNull
                                                                         : host::document().viewport);
}

namespace host {

AcDbViewport& layoutViewport() {
  return static_cast<AcDbViewport&>(*find(document().viewport));
}

AcDbObjectId viewportId() {
  return document().viewport;
}

LayoutState layout() {
  return HostAccess::layout(layoutViewport());
}

void setLayoutState(const LayoutState& newState) {
  HostAccess::setLayout(layoutViewport(), newState);
}

} // namespace host
