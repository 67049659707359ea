#include "bare_pass.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include <arxHeaders.h>

#include "auto_cad_proxy.h"
#include "ov_auto_cad.h"

namespace bench {

namespace {

/// Searches the windows with the engine's own function.
bool isControlUnderPointer(AutoCadProxy& engine) {
  POINT pointer = {};
  GetCursorPos(&pointer);
  const HWND window = engine.windowUnderPoint(pointer);
  if (!window)
    return false;
  wchar_t wide[256] = {};
  GetClassNameW(window, wide, 256);
  char name[260] = {};
  WideCharToMultiByte(CP_ACP, 0, wide, -1, name, sizeof name, " ", nullptr);
  return std::strstr(name, "SysTreeView32") || std::strstr(name, "TreeView") ||
         std::strstr(name, "SysListView32") || std::strstr(name, "ListBox") || std::strstr(name, "Edit") ||
         std::strcmp(name, "QWidget") == 0;
}

void shift(AcGsView& view, double value, const AcGeVector3d& axis) {
  const AcGePoint3d position = view.position();
  const AcGePoint3d target = view.target();
  const double width = view.fieldWidth();
  const double height = view.fieldHeight();
  const AcGeVector3d by = axis * (value * std::sqrt(height * width));
  view.setView(position + by, target + by, view.upVector(), width, height, AcGsView::kParallel);
}

void turn(AcGsView& view, double angle, const AcGeVector3d& axis, const AcGePoint3d& centre) {
  AcGePoint3d position = view.position();
  AcGePoint3d target = view.target();
  AcGeVector3d up = view.upVector();
  position.rotateBy(angle, axis, centre);
  target.rotateBy(angle, axis, centre);
  up.rotateBy(angle, axis);
  const double height = view.fieldHeight();
  view.setView(position, target, up, view.fieldWidth(), height, AcGsView::kParallel);
}

} // namespace

void barePass(const OvAutoCad& plugin) {
  resbuf variable = {};
  acedGetVar(L"tilemode", &variable);
  const short tilemode = variable.resval.rint;
  acedGetVar(L"cvport", &variable);
  const short cvport = variable.resval.rint;
  const short sample[] = {plugin.mCapX, plugin.mCapY, plugin.mCapZ, plugin.mCapA, plugin.mCapB, plugin.mCapC};
  bool isDeflected = false;
  for (const short value : sample)
    isDeflected |= std::abs(value) > 0;
  if (!isDeflected || (tilemode == 0 && cvport == 1) || isControlUnderPointer(*plugin.mAutoCadProxyP))
    return;

  acedGetVar(L"CVPORT", &variable);
  AcGsKernelDescriptor descriptor;
  descriptor.addRequirement(AcGsKernelDescriptor::k3DDrawing);
  AcGsView* const viewP = acgsObtainAcGsView(variable.resval.rint, descriptor);
  if (!viewP)
    return;
  const AcGePoint3d position = viewP->position();
  const AcGePoint3d target = viewP->target();
  AcGeVector3d yAxis = viewP->upVector();
  AcGeVector3d zAxis = position - target;
  AcGeVector3d xAxis = zAxis.crossProduct(yAxis);
  xAxis.normalize(AcGeContext::gTol);
  yAxis.normalize(AcGeContext::gTol);
  zAxis.normalize(AcGeContext::gTol);
  if (viewP->isPerspective())
    return;

  const double x = sample[0] / 20000.0, y = sample[1] / 20000.0, z = sample[2] / 20000.0;
  shift(*viewP, 5 * x, xAxis);
  shift(*viewP, -5 * y, yAxis);
  viewP->zoom(std::clamp(1 + z, 0.8, 1.2));
  const AcGePoint3d centre = viewP->target();
  turn(*viewP, sample[3] / 10000.0, xAxis, centre);
  turn(*viewP, -sample[4] / 10000.0, yAxis, centre);
  turn(*viewP, -sample[5] / 10000.0, zAxis, centre);
  viewP->update();
}

} // namespace bench
