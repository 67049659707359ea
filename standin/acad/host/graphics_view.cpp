#include <cmath>

#include "acgs.h"
#include "frames.h"
#include "trace_types.h"

namespace {

const AcUniqueString kThreeDDrawing;

/// The one graphics view, shared by all viewports. Its state is in the document.
class GraphicsView : public AcGsView {
public:
  AcGePoint3d position() const override {
    call_log::Call call("position", this);
    return call.returns(host::document().view.position);
  }
  AcGePoint3d target() const override {
    call_log::Call call("target", this);
    return call.returns(host::document().view.target);
  }
  AcGeVector3d upVector() const override {
    call_log::Call call("upVector", this);
    return call.returns(host::document().view.up);
  }
  double fieldWidth() const override {
    call_log::Call call("fieldWidth", this);
    return call.returns(host::document().view.fieldWidth);
  }
  double fieldHeight() const override {
    call_log::Call call("fieldHeight", this);
    return call.returns(host::document().view.fieldHeight);
  }
  bool isPerspective() const override {
    call_log::Call call("isPerspective", this);
    return call.returns(!call.mustFail() && host::document().view.perspective);
  }
  void setView(const AcGePoint3d& position, const AcGePoint3d& target, const AcGeVector3d& upVector,
               double fieldWidth, double fieldHeight, Projection projection) override;
  void zoom(double factor) override;
  void update() override {
    const call_log::Call call("update", this);
    if (!call.mustFail())
      host::showFrame(false);
  }
  bool isValid() const override {
    call_log::Call call("isValid", this);
    return call.returns(!call.mustFail() && host::document().isViewValid);
  }
};

// Accepts NaN and infinity, so that a caller's fault stays visible.
void GraphicsView::setView(const AcGePoint3d& position, const AcGePoint3d& target,
                           const AcGeVector3d& upVector, double fieldWidth, double fieldHeight,
                           Projection projection) {
  const call_log::Call call("setView", this, position, target, upVector, fieldWidth, fieldHeight, projection);
  if (call.mustFail())
    return;
  host::Document& d = host::document();
  if (!host::isFinite(position) || !host::isFinite(target) ||
      !host::isFinite(AcGePoint3d::kOrigin + upVector) || !std::isfinite(fieldWidth) ||
      !std::isfinite(fieldHeight))
    ++d.nonFiniteCalls;
  d.view = {position, target, upVector, fieldWidth, fieldHeight, projection == kPerspective};
}

void GraphicsView::zoom(double factor) {
  const call_log::Call call("zoom", this, call_log::shown(factor));
  if (call.mustFail())
    return;
  host::Document& d = host::document();
  if (!std::isfinite(factor) || factor <= 0) {
    ++d.nonFiniteCalls;
    return;
  }
  // Stop before the field overflows or vanishes: someone who holds the cap for a minute gets there, and has
  // to be able to zoom back.
  const double width = d.view.fieldWidth / factor;
  const double height = d.view.fieldHeight / factor;
  const double area = width * height;
  if (std::isfinite(area) && (area > 0 || d.view.fieldWidth * d.view.fieldHeight <= 0)) {
    d.view.fieldWidth = width;
    d.view.fieldHeight = height;
  }
}

AcGsView& graphicsView() {
  static GraphicsView sView;
  return sView;
}

bool isCurrent(int viewport) {
  return viewport > 0 && viewport == host::variable("cvport");
}

} // namespace

const AcUniqueString* AcGsKernelDescriptor::k3DDrawing = &kThreeDDrawing;

AcGsView* acgsObtainAcGsView(int viewport, const AcGsKernelDescriptor& descriptor) {
  call_log::Call call("acgsObtainAcGsView", call_log::shown(viewport), descriptor.is3d());
  const bool isRefused = call.mustFail() || !isCurrent(viewport) || !descriptor.is3d();
  return call.returns(isRefused ? nullptr : &graphicsView());
}

bool acgsSetViewParameters(int viewport, const AcGsView* view, bool regenRequired, bool rescaleRequired,
                           bool syncRequired) {
  call_log::Call call("acgsSetViewParameters", call_log::shown(viewport), view,
                      call_log::shown(regenRequired), call_log::shown(rescaleRequired),
                      call_log::shown(syncRequired));
  host::Document& d = host::document();
  if (call.mustFail() || !isCurrent(viewport) || view != &graphicsView() || !d.isViewValid)
    return call.returns(false);
  host::storeView(d.view);
  return call.returns(true);
}

namespace host {

ViewState& view() {
  return document().view;
}

ViewState& storedView() {
  return document().storedView;
}

void storeView(const ViewState& view) {
  constexpr std::size_t kMaxPrevious = 100;
  Document& d = document();
  d.previousViews.push_back(d.storedView);
  if (d.previousViews.size() > kMaxPrevious)
    d.previousViews.erase(d.previousViews.begin());
  d.storedView = view;
}

void setViewValid(bool isValid) {
  document().isViewValid = isValid;
}

std::int64_t nonFiniteCalls() {
  return document().nonFiniteCalls;
}

} // namespace host
