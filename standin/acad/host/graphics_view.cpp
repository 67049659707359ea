#include <algorithm>
#include <cmath>

#include "acgs.h"
#include "state.h"
#include "trace_types.h"

namespace {

const AcUniqueString kThreeDDrawing;

bool isFinite(const AcGePoint3d& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

/// The one view there is: viewports take turns with it. Its state stands in the document.
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
    if (call.mustFail())
      return;
    ++host::document().viewCounts.updates;
    host::showFrame(false);
  }
  bool isValid() const override {
    call_log::Call call("isValid", this);
    return call.returns(!call.mustFail() && host::document().isViewValid);
  }
};

// The view takes what it is told, nonsense too: what the caller did wrong must stay to be seen.
void GraphicsView::setView(const AcGePoint3d& position, const AcGePoint3d& target,
                           const AcGeVector3d& upVector, double fieldWidth, double fieldHeight,
                           Projection projection) {
  const call_log::Call call("setView", this, position, target, upVector, fieldWidth, fieldHeight, projection);
  if (call.mustFail())
    return;
  host::Document& d = host::document();
  ++d.viewCounts.setViews;
  if (!isFinite(position) || !isFinite(target) || !isFinite(AcGePoint3d::kOrigin + upVector) ||
      !std::isfinite(fieldWidth) || !std::isfinite(fieldHeight))
    ++d.viewCounts.nonFiniteCalls;
  d.view = {position, target, upVector, fieldWidth, fieldHeight, projection == kPerspective};
}

void GraphicsView::zoom(double factor) {
  const call_log::Call call("zoom", this, call_log::shown(factor));
  if (call.mustFail())
    return;
  host::Document& d = host::document();
  ++d.viewCounts.zooms;
  if (!std::isfinite(factor) || factor <= 0) {
    ++d.viewCounts.nonFiniteCalls;
    return;
  }
  // A zoom ends where numbers end: someone who holds the cap for a minute gets there, and has to come back.
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
  const bool isFor3d = descriptor.supports(AcGsKernelDescriptor::k3DDrawing);
  call_log::Call call("acgsObtainAcGsView", call_log::shown(viewport), isFor3d);
  return call.returns(call.mustFail() || !isCurrent(viewport) || !isFor3d ? nullptr : &graphicsView());
}

bool acgsSetViewParameters(int viewport, const AcGsView* view, bool regenRequired, bool rescaleRequired,
                           bool syncRequired) {
  call_log::Call call("acgsSetViewParameters", call_log::shown(viewport), view,
                      call_log::shown(regenRequired), call_log::shown(rescaleRequired),
                      call_log::shown(syncRequired));
  host::Document& d = host::document();
  if (call.mustFail() || !isCurrent(viewport) || view != &graphicsView() || !d.isViewValid)
    return call.returns(false);
  d.storedView = d.view;
  ++d.viewCounts.storedViews;
  return call.returns(true);
}

namespace host {

namespace {

constexpr double kMargin = 1.05; // room around the drawing when all of it is shown

/// Directions of the picture: where its right, its top and the viewer are.
struct PictureAxes {
  AcGeVector3d right, up, towards;
};

PictureAxes axesOf(const ViewState& v) {
  PictureAxes axes;
  axes.towards = (v.position - v.target).normalize();
  if (axes.towards.isZeroLength())
    axes.towards = AcGeVector3d::kZAxis;
  axes.right = v.up.crossProduct(axes.towards).normalize();
  if (axes.right.isZeroLength())
    axes.right = axes.towards.perpVector();
  axes.up = axes.towards.crossProduct(axes.right);
  return axes;
}

AcGePoint3d middle(const AcDbExtents& box) {
  return box.minPoint() + (box.maxPoint() - box.minPoint()) * 0.5;
}

/// How far the box reaches along a direction.
double reach(const AcDbExtents& box, const AcGeVector3d& direction) {
  const AcGeVector3d size = box.maxPoint() - box.minPoint();
  return std::fabs(size.x * direction.x) + std::fabs(size.y * direction.y) + std::fabs(size.z * direction.z);
}

void setBothViews(const ViewState& v) {
  document().view = v;
  document().storedView = v;
}

} // namespace

void zoomExtents() {
  const AcDbExtents box = extents();
  if (box.isEmpty())
    return;
  ViewState v = view();
  const PictureAxes axes = axesOf(v);
  const double distance = (v.position - v.target).length();
  const double growth =
      kMargin * std::max(reach(box, axes.right) / v.fieldWidth, reach(box, axes.up) / v.fieldHeight);
  const bool isSized =
      growth > 0 && std::isfinite(growth); // a single point, or a line seen from its end, is not
  if (isSized) {
    v.fieldWidth *= growth;
    v.fieldHeight *= growth;
  }
  // In perspective the eye goes with the field, so that the lens stays the same.
  const double newDistance = isSized && v.perspective ? distance * growth : distance;
  v.target = middle(box);
  v.position = v.target + axes.towards * newDistance;
  setBothViews(v);
}

bool showNamedView(const std::wstring& name) {
  struct Named {
    const wchar_t* name;
    AcGeVector3d towards; // from the drawing to the viewer
    AcGeVector3d up;
  };
  static const Named kViews[] = {{L"front", {0, -1, 0}, {0, 0, 1}}, {L"back", {0, 1, 0}, {0, 0, 1}},
                                 {L"right", {1, 0, 0}, {0, 0, 1}},  {L"left", {-1, 0, 0}, {0, 0, 1}},
                                 {L"top", {0, 0, 1}, {0, 1, 0}},    {L"bottom", {0, 0, -1}, {0, 1, 0}}};
  for (const Named& named : kViews) {
    if (name != named.name)
      continue;
    ViewState v = view();
    const double distance = (v.position - v.target).length();
    const AcDbExtents box = extents();
    if (!box.isEmpty())
      v.target = middle(box);
    v.position = v.target + named.towards * (distance > 0 ? distance : 1);
    v.up = named.up;
    setBothViews(v);
    return true;
  }
  return false;
}

ViewState view() {
  return document().view;
}

void setView(const ViewState& newState) {
  document().view = newState;
}

ViewState storedView() {
  return document().storedView;
}

void setStoredView(const ViewState& newState) {
  document().storedView = newState;
}

void setViewValid(bool isValid) {
  document().isViewValid = isValid;
}

ViewCounts viewCounts() {
  return document().viewCounts;
}

} // namespace host
