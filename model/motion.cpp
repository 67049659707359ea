#include "engine.h"

namespace model {

void Engine::retrieveViewParams() {
  const Call& variable = call("acedGetVar", {}, L"CVPORT");
  view = 0;
  if (out(variable, 0) != RTNORM)
    return log("ERR", text("System variable 'CVPORT'could not be retrieved! rc = ", int(out(variable, 0))));
  cvportNumber = static_cast<int>(out(variable, 1));
  view = ask("acgsObtainAcGsView", {double(cvportNumber), 1});
  if (view == 0)
    log("ERR", "AcGsView object could not be retrieved!");
}

void Engine::handleCapIsReleased() {
  if (!capIsMoving)
    return;
  guarded("handleCapIsReleased", [&] {
    const double document = viewMode == 1 || isDocLocked ? currentDocument() : 0;
    if (isDocLocked)
      call("unlockDocument", {document});
    isDocLocked = false;
    if (viewMode == 1)
      return log("TRC", "Document unlocked");
    retrieveViewParams();
    if (view != 0 && ask("isValid", {view}) != 0)
      call("acgsSetViewParameters", {double(cvportNumber), view, 1, 1, 0});
    else if (view != 0)
      log("ERR", "viewP not valid!");
  });
  capIsMoving = false;
  log("TRC", "Cap released.");
}

void Engine::handleCapIsDeflectedIn3DMode(const Sample& sample) {
  retrieveViewParams();
  if (view == 0)
    return log("ERR", "ViewP could not be retrieved!");
  const bool isFramed = guarded("calcScreenAxesRelativeToObject", [&] {
    const Vec3 p = askPoint("position"), t = askPoint("target"), u = askPoint("upVector");
    mAxes = {normalized(cross(p - t, u)), normalized(u), normalized(p - t)};
  });
  if (!isFramed)
    return;
  mIsPerspective = ask("isPerspective", {view}) != 0;
  if (!mInputsP->settings().objectMoveMode ||
      !transformSelection(sample, read(HOVER_MODE) != 0, read(KEEP_HORIZON) != 0)) {
    moveXYZ(sample);
    rotateABC(sample);
  }
  call("update", {view});
}

void Engine::moveXYZ(const Sample& sample) {
  if (sample[0] == 0 && sample[1] == 0 && sample[2] == 0)
    return;
  const double base = (read(ROT_MODE) < 2 ? 1.0 : -1.0) * mCopied.traSensBase;
  const bool hovers = read(HOVER_MODE) != 0 && mIsPerspective;
  const auto move3D = [&](double value, const Vec3& axis) {
    const Vec3 p = askPoint("position"), t = askPoint("target");
    const double w = ask("fieldWidth", {view}), h = ask("fieldHeight", {view});
    Vec3 shift = axis * (value * std::sqrt(h * w));
    shift.z = hovers ? 0 : shift.z;
    setView(p + shift, t + shift, askPoint("upVector"), w, h);
  };
  guarded("moveXYZ", [&] {
    for (std::size_t i = 0; i < 3; ++i) {
      const double d = sample[i] / base;
      if (d == 0)
        continue;
      log("INF", text("Move ", "xyz"[i], "-Direction, value: ", d));
      if (i == 2 && !hovers)
        call("zoom", {view, Arg(std::clamp(1 + d, 0.8, 1.2), 1)});
      else
        guarded("move3D", [&] { move3D(d * (i == 0 ? 5.0 : -5.0), mAxes[i]); });
    }
  });
}

/// Rotates the view about the selection or the mode's centre. A selected line is the axis, and takes its
/// share of the values.
void Engine::rotateABC(const Sample& sample) {
  std::array<int, 3> values{sample[3], sample[4], sample[5]};
  if (values == std::array<int, 3>{})
    return;
  std::array<Vec3, 3> axes = mAxes;
  Vec3 centre;
  if (mInputsP->settings().toggleRotationAxis && getSelObjectAxis()) {
    for (std::size_t i = 0; i < 3; ++i) {
      const double share = std::clamp(dot(selAxisVector, axes[i]), -1.0, 1.0) * values[i];
      values[i] = static_cast<int>(std::isnan(share) ? 0 : std::min(32767.0, share));
      axes[i] = selAxisVector;
    }
    centre = selCenterPoint;
  } else if (mInputsP->settings().toggleRotationCenter && getSelObjectsCenter(0, selCenterPoint)) {
    centre = selCenterPoint;
  } else if (const int rotMode = read(ROT_MODE); rotMode == 0 || rotMode == 3) {
    centre = askPoint("target");
  } else if (rotMode == 2 && mIsPerspective) {
    centre = askPoint("position");
  }
  for (std::size_t i = 0; i < 3; ++i)
    if (values[i] != 0)
      rotate((i == 0 ? 1.0 : -1.0) * values[i] / mCopied.rotSensBase, i, centre, axes[i]);
}

void Engine::rotate(double angle, std::size_t axisIndex, const Vec3& centre, Vec3 axis) {
  const int rotMode = read(ROT_MODE);
  const bool keepHorizon = read(KEEP_HORIZON) != 0;
  if (axisIndex == 2 && keepHorizon)
    return;
  guarded("rotate", [&] {
    angle = rotMode < 2 ? angle : -angle;
    log("DBG", text("Rotate Axis: ", angle, "(", axisIndex, ")"));
    if (axisIndex == 1 && keepHorizon) {
      angle = axis.z < 0 ? -angle : angle;
      axis = {0, 0, 1};
    }
    if (!hasDirection(axis))
      return;
    const auto turned = [&](const Vec3& v) { return centre + rotateBy(v - centre, angle, axis); };
    const Vec3 p = askPoint("position"), t = askPoint("target"), u = askPoint("upVector");
    const double h = ask("fieldHeight", {view}), w = ask("fieldWidth", {view});
    setView(turned(p), turned(t), rotateBy(u, angle, axis), w, h);
  });
}

/// Sets the view, unless one of the numbers isn't finite.
void Engine::setView(const Vec3& p, const Vec3& t, const Vec3& u, double width, double height) {
  Args args{view};
  for (const Vec3& v : {p, t, u})
    args.insert(args.end(), {{v.x, v.scale}, {v.y, v.scale}, {v.z, v.scale}});
  args.insert(args.end(), {width, height, mIsPerspective ? 1.0 : 0.0});
  if (areFinite(args))
    call("setView", args);
}

void Engine::handleCapIsDeflectedIn2DMode(const Sample& sample) {
  const bool wasLocked = isDocLocked;
  if (mInputsP->settings().objectMoveMode && transformSelection(sample, false, false))
    return;
  if (!capIsMoving) {
    const bool isLockedByThisPass = isDocLocked && !wasLocked;
    if (!isLockedByThisPass)
      call("lockDocument", {currentDocument(), 4, 1});
    isDocLocked = true;
    log("TRC", "Document locked");
  }
  const double base = mCopied.traSensBase;
  if (sample[0] != 0 || sample[1] != 0)
    changeViewport("setViewCenter", [&](double viewport) {
      const double w = ask("width", {viewport}), h = ask("height", {viewport});
      const double viewHeight = ask("viewHeight", {viewport});
      const Call& old = call("viewCenter", {viewport});
      const Vec3 centre = Vec3{out(old, 0), out(old, 1)} +
                          Vec3{(w / h) * viewHeight * (-sample[0] / base), viewHeight * (-sample[1] / base)};
      return Args{viewport, {centre.x, centre.scale}, {centre.y, centre.scale}};
    });
  if (sample[2] != 0)
    changeViewport("setViewHeight", [&](double viewport) {
      const double old = ask("viewHeight", {viewport});
      const double height = std::clamp(1 - sample[2] / base, 0.8, 1.2) * old;
      return Args{viewport, {height > 0 ? height : NAN, std::abs(old)}}; // no other height is set
    });
}

/// Sets something of the active viewport, unless one of the numbers isn't finite.
void Engine::changeViewport(const char* setter, const std::function<Args(double viewport)>& values) {
  const double id = ask("acedActiveViewportId");
  const double viewport = out(call("acdbOpenObject", {id, 1}), 1);
  if (viewport == 0)
    log("ERR", "AcDbObjectPointer could not be retrieved!");
  const auto change = [&] {
    const Args args = values(viewport);
    if (!areFinite(args))
      return;
    call(setter, args);
    call("updateDisplay", {viewport});
  };
  holding("close", viewport, change, false);
}

} // namespace model
