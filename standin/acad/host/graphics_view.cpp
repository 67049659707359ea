#include <algorithm>
#include <cmath>

#include "acgs.h"
#include "state.h"

namespace {

const AcUniqueString kThreeDDrawing(L"3D drawing");

bool isFinite(const AcGePoint3d& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

/// The one view there is: viewports take turns with it. Its state stands in the document.
class GraphicsView : public AcGsView {
public:
  AcGePoint3d position() const override {
    calls::enter("position");
    return host::document().view.position;
  }
  AcGePoint3d target() const override {
    calls::enter("target");
    return host::document().view.target;
  }
  AcGeVector3d upVector() const override {
    calls::enter("upVector");
    return host::document().view.up;
  }
  double fieldWidth() const override {
    calls::enter("fieldWidth");
    return host::document().view.fieldWidth;
  }
  double fieldHeight() const override {
    calls::enter("fieldHeight");
    return host::document().view.fieldHeight;
  }
  bool isPerspective() const override {
    if (calls::enter("isPerspective"))
      return false;
    return host::document().view.perspective;
  }
  void setView(const AcGePoint3d& position, const AcGePoint3d& target, const AcGeVector3d& upVector,
               double fieldWidth, double fieldHeight, Projection projection) override;
  void zoom(double factor) override;
  void update() override {
    if (calls::enter("update"))
      return;
    ++host::document().viewCounts.updates;
    host::showFrame(false);
  }
  bool isValid() const override { return !calls::enter("isValid") && host::document().isViewValid; }
};

// The view takes what it is told, nonsense too: what the caller did wrong must stay to be seen.
void GraphicsView::setView(const AcGePoint3d& position, const AcGePoint3d& target,
                           const AcGeVector3d& upVector, double fieldWidth, double fieldHeight,
                           Projection projection) {
  if (calls::enter("setView"))
    return;
  host::Document& d = host::document();
  ++d.viewCounts.setViews;
  if (!isFinite(position) || !isFinite(target) || !isFinite(AcGePoint3d::kOrigin + upVector) ||
      !std::isfinite(fieldWidth) || !std::isfinite(fieldHeight))
    ++d.viewCounts.nonFiniteCalls;
  d.view = {position, target, upVector, fieldWidth, fieldHeight, projection == kPerspective};
}

void GraphicsView::zoom(double factor) {
  if (calls::enter("zoom", calls::isRecording() ? host::number(factor) : std::string()))
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
  return viewport > 0 && viewport == host::variableValue(L"cvport");
}

} // namespace

const AcUniqueString* AcGsKernelDescriptor::k3DDrawing = &kThreeDDrawing;

AcGsView* acgsObtainAcGsView(int viewport, const AcGsKernelDescriptor& descriptor) {
  if (calls::enter("acgsObtainAcGsView", calls::isRecording() ? std::to_string(viewport) : std::string()))
    return nullptr;
  if (!isCurrent(viewport) || !descriptor.supports(AcGsKernelDescriptor::k3DDrawing))
    return nullptr;
  return &graphicsView();
}

bool acgsSetViewParameters(int viewport, const AcGsView* view, bool regenRequired, bool rescaleRequired,
                           bool syncRequired) {
  const auto flag = [](bool isOn) { return isOn ? " 1" : " 0"; };
  if (calls::enter("acgsSetViewParameters", calls::isRecording()
                                                ? std::to_string(viewport) + flag(regenRequired) +
                                                      flag(rescaleRequired) + flag(syncRequired)
                                                : std::string()))
    return false;
  host::Document& d = host::document();
  if (!isCurrent(viewport) || view != &graphicsView() || !d.isViewValid)
    return false;
  d.storedView = d.view;
  ++d.viewCounts.storedViews;
  return true;
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
