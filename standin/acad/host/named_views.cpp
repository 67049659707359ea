// The standard views, the views of the whole drawing, the previous one and those saved by name.

#include "named_views.h"

#include <algorithm>
#include <cmath>

#include "state.h"

namespace host {

namespace {

constexpr double kMargin = 1.05; // room around the drawing when all of it is shown

/// Directions of the picture, unit vectors in world coordinates.
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
    axes.right = AcGeMatrix3d::planeToWorld(axes.towards) * AcGeVector3d::kXAxis;
  axes.up = axes.towards.crossProduct(axes.right);
  return axes;
}

AcGePoint3d middle(const AcDbExtents& box) {
  return box.minPoint() + (box.maxPoint() - box.minPoint()) * 0.5;
}

/// Returns the extent of the box along a direction.
double reach(const AcDbExtents& box, const AcGeVector3d& direction) {
  const AcGeVector3d size = box.maxPoint() - box.minPoint();
  return std::fabs(size.x * direction.x) + std::fabs(size.y * direction.y) + std::fabs(size.z * direction.z);
}

void setBothViews(const ViewState& v) {
  document().view = v;
  storeView(v);
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
  // A single point, or a line seen from its end, has no size.
  const bool isSized = growth > 0 && std::isfinite(growth);
  if (isSized) {
    v.fieldWidth *= growth;
    v.fieldHeight *= growth;
  }
  // In perspective the distance grows with the field, so that the lens stays the same.
  const double newDistance = isSized && v.perspective ? distance * growth : distance;
  v.target = middle(box);
  v.position = v.target + axes.towards * newDistance;
  setBothViews(v);
}

void fitLayout() {
  const AcDbExtents box = extents();
  if (box.isEmpty())
    return;
  const AcGeVector3d size = box.maxPoint() - box.minPoint();
  LayoutState& shown = layout();
  const double height = kMargin * std::max(size.y, size.x * shown.height / shown.width);
  if (height > 0 && std::isfinite(height))
    shown.viewHeight = height;
  shown.centre = {middle(box).x, middle(box).y};
}

bool showPreviousView() {
  Document& d = document();
  if (d.previousViews.empty())
    return false;
  d.view = d.storedView = d.previousViews.back();
  d.previousViews.pop_back();
  return true;
}

void saveView(const std::wstring& name) {
  document().savedViews[name] = view();
}

bool restoreView(const std::wstring& name) {
  const auto saved = document().savedViews.find(name);
  if (saved == document().savedViews.end())
    return false;
  setBothViews(saved->second);
  return true;
}

bool showNamedView(const std::wstring& name) {
  struct Named {
    const wchar_t* name;
    AcGeVector3d towards; // from the drawing to the viewer
    AcGeVector3d up;
  };
  const double s = 1 / std::sqrt(3.0), h = s / std::sqrt(2.0),
               u = 2 * h; // of views from a cube's upper corners
  const Named kViews[] = {{L"front", {0, -1, 0}, {0, 0, 1}},  {L"back", {0, 1, 0}, {0, 0, 1}},
                          {L"right", {1, 0, 0}, {0, 0, 1}},   {L"left", {-1, 0, 0}, {0, 0, 1}},
                          {L"top", {0, 0, 1}, {0, 1, 0}},     {L"bottom", {0, 0, -1}, {0, 1, 0}},
                          {L"swiso", {-s, -s, s}, {h, h, u}}, {L"seiso", {s, -s, s}, {-h, h, u}},
                          {L"neiso", {s, s, s}, {-h, -h, u}}, {L"nwiso", {-s, s, s}, {h, -h, u}}};
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

} // namespace host
