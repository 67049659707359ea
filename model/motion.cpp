#include "engine.h"
#include "support.h"

namespace model {

namespace {

void append(std::vector<Arg>& args, const Scaled& v) {
  for (const double coordinate : {v.value.x, v.value.y, v.value.z}) {
    args.emplace_back(coordinate, v.scale);
  }
}

/// Give the factor of a zoom by a signed amount: at most 20 percent either way.
double zoomFactor(double amount) {
  return amount < 0 ? std::max(0.8, 1 - std::abs(amount)) : std::min(1.2, 1 + std::abs(amount));
}

/// Reduce a value to its share along a line, by the scalar product of the line's and the axis's direction.
short share(double product, short value) {
  const double part = std::max(-1.0, std::min(1.0, product)) * value;
  return static_cast<short>(std::isnan(product) ? 0.0 : std::min(32767.0, std::trunc(part)));
}

/// Open the active viewport for write and work on it; report if it can't be opened.
void withActiveViewport(Replay& replay, const std::function<void(double viewport)>& work) {
  Held held;
  try {
    const double id = ask(replay, "acedActiveViewportId");
    const double viewport = out(replay.call("acdbOpenObject", {id, 1}), 1);
    if (viewport == 0) {
      replay.log("ERR", "AcDbObjectPointer could not be retrieved!");
      return;
    }
    held.object = viewport;
    work(viewport);
    held.object.reset(); // not tried again
    replay.call("close", {viewport});
  } catch (const HostException&) {
    giveBack(replay, held);
    throw;
  }
}

} // namespace

void Engine::handleCapIsDeflectedIn3DMode(Replay& replay, const Sample& sample) {
  try {
    retrieveViewParams(replay);
    if (view == 0) {
      replay.log("ERR", "ViewP could not be retrieved!");
      return;
    }
    Frame frame;
    if (!calcScreenAxesRelativeToObject(replay, frame)) {
      return;
    }
    const bool isPerspective = ask(replay, "isPerspective", {view}) != 0;
    bool isTaken = false;
    if (mInputs->objectMoveMode()) {
      const bool hoverMode = mInputs->hoverMode();
      const bool keepHorizon = mInputs->keepHorizon();
      isTaken = transformSelection3d(replay, sample, frame, hoverMode, keepHorizon);
    }
    if (!isTaken) {
      moveView(replay, sample, frame, isPerspective);
    }
    replay.call("update", {view});
  } catch (const HostException&) {
    replay.log("ERR", "Error handleCapIsDeflectedIn3DMode()");
  }
}

void Engine::handleCapIsReleased(Replay& replay, int mode) {
  if (!capIsMoving) {
    return;
  }
  try {
    if (mode == 1 || isDocLocked) {
      const Documents documents = currentDocument(replay);
      if (isDocLocked && documents.manager != 0) {
        replay.call("unlockDocument", {documents.current});
      }
      isDocLocked = false;
    }
    if (mode == 1) {
      replay.log("TRC", "Document unlocked");
    } else {
      retrieveViewParams(replay);
      if (view != 0 && ask(replay, "isValid", {view}) != 0) {
        replay.call("acgsSetViewParameters", {double(cvportNumber), view, 1, 1, 0});
      } else if (view != 0) {
        replay.log("ERR", "viewP not valid!");
      }
    }
  } catch (const HostException&) {
    replay.log("ERR", "Error handleCapIsReleased()");
  }
  capIsMoving = false;
  replay.log("TRC", "Cap released.");
}

void Engine::retrieveViewParams(Replay& replay) {
  const Call& read = replay.call("acedGetVar", {}, L"CVPORT");
  view = 0;
  const double status = out(read, 0);
  if (status != RTNORM) {
    replay.log("ERR",
               text("System variable 'CVPORT'could not be retrieved! rc = ", static_cast<int>(status)));
    return;
  }
  cvportNumber = static_cast<int>(out(read, 1));
  view = ask(replay, "acgsObtainAcGsView", {double(cvportNumber), 1});
  if (view == 0) {
    replay.log("ERR", "AcGsView object could not be retrieved!");
  }
}

/// Move the view by one sample: translation, then rotation.
void Engine::moveView(Replay& replay, const Sample& sample, const Frame& frame, bool isPerspective) {
  if (sample[0] != 0 || sample[1] != 0 || sample[2] != 0) {
    const Vec3 d{sample[0] / mTraSensBase, sample[1] / mTraSensBase, sample[2] / mTraSensBase};
    const int rotMode = mInputs->rotMode();
    const bool hoverMode = mInputs->hoverMode();
    moveXYZ(replay, d, frame, rotMode, isPerspective, hoverMode);
  }
  std::array<short, 3> values{sample[3], sample[4], sample[5]};
  if (values[0] == 0 && values[1] == 0 && values[2] == 0) {
    return;
  }
  std::array<Vec3, 3> axes{frame.x, frame.y, frame.z};
  const Scaled centre = chooseRotation(replay, values, axes, isPerspective);
  for (std::size_t i = 0; i < 3; ++i) {
    if (values[i] != 0) {
      const double angle = (i == 0 ? values[i] : -values[i]) / mRotSensBase;
      const int rotMode = mInputs->rotMode();
      const bool keepHorizon = mInputs->keepHorizon();
      rotate(replay, angle, static_cast<int>(i), centre, axes[i], rotMode, keepHorizon, isPerspective);
    }
  }
}

void Engine::moveXYZ(Replay& replay, Vec3 d, const Frame& frame, int rotMode, bool isPerspective,
                     bool hoverMode) {
  try {
    if (rotMode == 2 || rotMode == 3) {
      d = d * -1;
    }
    if (d.x != 0) {
      replay.log("INF", text("Move x-Direction, value: ", d.x));
      move3D(replay, d.x * 5.0, frame.x, hoverMode, isPerspective);
    }
    if (d.y != 0) {
      replay.log("INF", text("Move y-Direction, value: ", d.y));
      move3D(replay, d.y * -5.0, frame.y, hoverMode, isPerspective);
    }
    if (d.z != 0) {
      replay.log("INF", text("Move z-Direction, value: ", d.z));
      if (hoverMode && isPerspective) {
        move3D(replay, d.z * -5.0, frame.z, hoverMode, isPerspective);
      } else {
        replay.call("zoom", {view, Arg(zoomFactor(d.z), 1)});
      }
    }
  } catch (const HostException&) {
    replay.log("ERR", "Error moveXYZ()");
  }
}

void Engine::move3D(Replay& replay, double value, const Vec3& axis, bool hoverMode, bool isPerspective) {
  try {
    const Vec3 p = askPoint(replay, "position", view);
    const Vec3 t = askPoint(replay, "target", view);
    const double w = ask(replay, "fieldWidth", {view});
    const double h = ask(replay, "fieldHeight", {view});
    const double step = value * std::sqrt(h * w);
    Vec3 shift = axis * step;
    if (hoverMode && isPerspective) {
      shift.z = 0;
    }
    const Scaled position{p + shift, std::max(largest(p), std::abs(step))};
    const Scaled target{t + shift, std::max(largest(t), std::abs(step))};
    const Scaled up{askPoint(replay, "upVector", view)};
    setView(replay, {position, target, up, w, h}, isPerspective);
  } catch (const HostException&) {
    replay.log("ERR", "Error move3D()");
  }
}

/// Give the rotation centre; a selected line also gives the axes and takes its share of the values.
Scaled Engine::chooseRotation(Replay& replay, std::array<short, 3>& values, std::array<Vec3, 3>& axes,
                              bool isPerspective) {
  if (mInputs->toggleRotationAxis() && getSelObjectAxis(replay)) {
    for (std::size_t i = 0; i < 3; ++i) {
      values[i] = share(dot(selAxisVector, axes[i]), values[i]);
      axes[i] = selAxisVector;
    }
    return {selCenterPoint, selCenterScale};
  }
  if (mInputs->toggleRotationCenter() &&
      getSelObjectsCenter(replay, nullptr, selCenterPoint, selCenterScale)) {
    return {selCenterPoint, selCenterScale};
  }
  const int rotMode = mInputs->rotMode();
  if (rotMode == 0 || rotMode == 3) {
    return {askPoint(replay, "target", view)};
  }
  if (rotMode == 2 && isPerspective) {
    return {askPoint(replay, "position", view)};
  }
  return {};
}

void Engine::rotate(Replay& replay, double angle, int axisIndex, const Scaled& centre, Vec3 axis, int rotMode,
                    bool keepHorizon, bool isPerspective) {
  if (angle == 0 || (axisIndex == 2 && keepHorizon)) {
    return;
  }
  try {
    if (rotMode == 2 || rotMode == 3) {
      angle = -angle;
    }
    replay.log("DBG", text("Rotate Axis: ", angle, "(", axisIndex, ")"));
    if (axisIndex == 1 && keepHorizon) {
      if (axis.z < 0) {
        angle = -angle;
      }
      axis = {0, 0, 1};
    }
    if (!(length(axis) > SHORTEST)) {
      return;
    }
    const Vec3 p = askPoint(replay, "position", view);
    const Vec3 t = askPoint(replay, "target", view);
    const Vec3 u = askPoint(replay, "upVector", view);
    const auto turned = [&](const Vec3& point) -> Scaled {
      const Vec3& c = centre.value;
      const double operands = std::max({largest(point), largest(c), largest(point - c), centre.scale});
      return {c + rotateBy(point - c, angle, axis), operands};
    };
    const double h = ask(replay, "fieldHeight", {view});
    const double w = ask(replay, "fieldWidth", {view});
    setView(replay, {turned(p), turned(t), {rotateBy(u, angle, axis), largest(u)}, w, h}, isPerspective);
  } catch (const HostException&) {
    replay.log("ERR", "Error rotate()");
  }
}

/// Set the view, unless one of the numbers isn't finite.
void Engine::setView(Replay& replay, const ViewValues& values, bool isPerspective) {
  std::vector<Arg> args{view};
  append(args, values.position);
  append(args, values.target);
  append(args, values.up);
  args.insert(args.end(), {values.width, values.height, isPerspective ? 1.0 : 0.0});
  for (const Arg& arg : args) {
    if (!std::isfinite(arg.value)) {
      return;
    }
  }
  replay.call("setView", args);
}

void Engine::handleCapIsDeflectedIn2DMode(Replay& replay, short x, short y, short z) {
  try {
    const bool wasLocked = isDocLocked;
    if (mInputs->objectMoveMode() && transformSelection2d(replay, x, y)) {
      return;
    }
    if (!capIsMoving) {
      const bool isLockedByThisPass = isDocLocked && !wasLocked;
      if (!isLockedByThisPass) {
        const Documents documents = currentDocument(replay);
        if (documents.manager != 0) {
          replay.call("lockDocument", {documents.current, 4, 1});
        }
      }
      isDocLocked = true;
      replay.log("TRC", "Document locked");
    }
    if (x != 0 || y != 0) {
      pan2D(replay, -(x / mTraSensBase), -(y / mTraSensBase));
    }
    if (z != 0) {
      zoom2D(replay, -(z / mTraSensBase));
    }
  } catch (const HostException&) {
    replay.log("ERR", "Error handleCapIsDeflectedIn2DMode()");
  }
}

void Engine::pan2D(Replay& replay, double dx, double dy) {
  withActiveViewport(replay, [&](double viewport) {
    const double w = ask(replay, "width", {viewport});
    const double h = ask(replay, "height", {viewport});
    const double viewHeight = ask(replay, "viewHeight", {viewport});
    const Call& centre = replay.call("viewCenter", {viewport});
    const double shiftX = (w / h) * viewHeight * dx;
    const double shiftY = viewHeight * dy;
    const double x = out(centre, 0) + shiftX;
    const double y = out(centre, 1) + shiftY;
    if (std::isfinite(x) && std::isfinite(y)) {
      const double scaleX = std::max(std::abs(out(centre, 0)), std::abs(shiftX));
      const double scaleY = std::max(std::abs(out(centre, 1)), std::abs(shiftY));
      replay.call("setViewCenter", {viewport, Arg(x, scaleX), Arg(y, scaleY)});
      replay.call("updateDisplay", {viewport});
    }
  });
}

void Engine::zoom2D(Replay& replay, double dz) {
  const double factor = zoomFactor(dz);
  withActiveViewport(replay, [&](double viewport) {
    const double old = ask(replay, "viewHeight", {viewport});
    const double height = factor * old;
    if (std::isfinite(height) && height > 0) {
      replay.call("setViewHeight", {viewport, Arg(height, std::abs(old))});
      replay.call("updateDisplay", {viewport});
    }
  });
}

} // namespace model
