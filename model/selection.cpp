#include "engine.h"
#include "support.h"

namespace model {

namespace {

/// Get the objects that are selected now; false if there are none.
bool getSelection(Replay& replay, Held& held) {
  const Call& got = replay.call("acedSSGet", {}, L"I");
  if (out(got, 0) != RTNORM) {
    return false;
  }
  held.set = out(got, 1);
  return true;
}

/// Count the objects of a set; 0 also if that fails.
int countOf(Replay& replay, double set) {
  const Call& count = replay.call("acedSSLength", {set});
  return out(count, 0) == RTNORM ? std::max(0, static_cast<int>(out(count, 1))) : 0;
}

/// Open the object of a name; it is held if that worked.
const Call& openObject(Replay& replay, double name, double mode, Held& held) {
  const double id = out(replay.call("acdbGetObjectId", {name}), 1);
  const Call& opened = replay.call("acdbOpenObject", {id, mode});
  if (out(opened, 1) != 0) {
    held.object = out(opened, 1);
  }
  return opened;
}

} // namespace

bool Engine::calcScreenAxesRelativeToObject(Replay& replay, Frame& frame) {
  try {
    const Vec3 p = askPoint(replay, "position", view);
    const Vec3 t = askPoint(replay, "target", view);
    const Vec3 u = askPoint(replay, "upVector", view);
    frame.x = normalized(cross(p - t, u));
    frame.y = normalized(u);
    frame.z = normalized(p - t);
    return true;
  } catch (const HostException&) {
    replay.log("ERR", "Error calcScreenAxesRelativeToObject()");
    return false;
  }
}

/// Set selAxisVector and selCenterPoint to the selected line; true if one line is selected and nothing else.
bool Engine::getSelObjectAxis(Replay& replay) {
  if (capIsMoving) {
    return selAxisValid;
  }
  Held held;
  try {
    if (!getSelection(replay, held)) {
      selAxisValid = false;
      return false;
    }
    const double set = *held.set;
    const Call* name = countOf(replay, set) == 1 ? &replay.call("acedSSName", {set, 0}) : nullptr;
    if (name == nullptr || out(*name, 0) != RTNORM) {
      freeSet(replay, held);
      selAxisValid = false;
      return false;
    }
    const Call& opened = openObject(replay, out(*name, 1), 0, held);
    selAxisValid = false;
    if (held.object) {
      if (out(opened, 2) != 0) { // a line
        const Vec3 start = outPoint(replay.call("getStartPoint", {*held.object}), 1);
        const Vec3 end = outPoint(replay.call("getEndPoint", {*held.object}), 1);
        selAxisVector = normalized(end - start);
        selCenterPoint = start;
        selCenterScale = largest(start);
        selAxisValid = true;
      }
      closeObject(replay, held);
    }
    freeSet(replay, held);
    return selAxisValid;
  } catch (const HostException&) {
    giveBack(replay, held);
    replay.log("ERR", "Error getSelObjectAxis()");
    return false;
  }
}

/// Set the centre to the mean of the midpoints of the objects' extents; true if there is one.
/// given  the caller's set; null: the objects selected now, looked at once per movement
/// scale  largest operand of the centre
bool Engine::getSelObjectsCenter(Replay& replay, const double* given, Vec3& centre, double& scale) {
  if (capIsMoving && given == nullptr) {
    return selCenterValid;
  }
  Held held;
  try {
    if (given == nullptr && !getSelection(replay, held)) {
      selCenterValid = false;
      return false;
    }
    const double set = given != nullptr ? *given : *held.set;
    centre = {};
    scale = 0;
    const int count = countOf(replay, set);
    int counted = 0;
    for (int i = 0; i < count; ++i) {
      const Call& name = replay.call("acedSSName", {set, double(i)});
      if (out(name, 0) != RTNORM) {
        freeSet(replay, held);
        selCenterValid = false;
        return false;
      }
      openObject(replay, out(name, 1), 0, held);
      if (!held.object) {
        continue;
      }
      const Call& extents = replay.call("getGeomExtents", {*held.object});
      closeObject(replay, held);
      if (out(extents, 0) == 0) {
        const Vec3 minimum = outPoint(extents, 1);
        const Vec3 maximum = outPoint(extents, 4);
        centre = centre + (minimum + maximum) * 0.5;
        scale = std::max({scale, largest(minimum), largest(maximum)});
        ++counted;
      }
    }
    freeSet(replay, held);
    if (counted == 0) {
      selCenterValid = false;
      return false;
    }
    centre = centre / counted;
    replay.log("TMP", text("selCenterPoint: ", centre.x, ", ", centre.y, ", ", centre.z));
    selCenterValid = true;
    return true;
  } catch (const HostException&) {
    giveBack(replay, held);
    replay.log("ERR", "Error getSelObjectsCenter()");
    return false;
  }
}

bool Engine::transformSelection3d(Replay& replay, const Sample& sample, const Frame& frame, bool hoverMode,
                                  bool keepHorizon) {
  return transformSelection(replay, false, [&](double set) {
    Vec3 centre;
    double centreScale = 0;
    if (!getSelObjectsCenter(replay, &set, centre, centreScale)) {
      centre = {};
      centreScale = 0;
    }
    const Vec3 shiftX = frame.x * sample[0] * -0.5;
    const Vec3 shiftY = frame.y * sample[1] * 0.5;
    const Vec3 shiftZ = frame.z * sample[2] * 0.5;
    Vec3 shift = shiftX + shiftY + shiftZ;
    if (hoverMode) {
      shift.y = 0;
    }
    Placement placement;
    placement.scale = std::max({largest(shiftX), largest(shiftY), largest(shiftZ)});
    setColumn(placement.matrix, 3, shift);
    const auto turn = [&](double angle, const Vec3& axis) {
      if (angle != 0) {
        placement.matrix = placement.matrix * rotation(angle, axis, centre);
        placement.scale = std::max({placement.scale, largest(centre), centreScale});
      }
    };
    turn(sample[3] * -0.002, frame.x);
    turn(sample[4] * 0.002, keepHorizon ? Vec3{0, 1, 0} : frame.y);
    turn(keepHorizon ? 0 : sample[5] * 0.002, frame.z);
    return placement;
  });
}

bool Engine::transformSelection2d(Replay& replay, double x, double y) {
  return transformSelection(replay, true, [&](double) {
    const Vec3 shift{x * 0.00005, y * 0.00005, 0};
    Placement placement;
    setColumn(placement.matrix, 3, shift);
    placement.scale = largest(shift);
    return placement;
  });
}

/// Move the selected objects.
/// place  tells where to, once the selection is known
bool Engine::transformSelection(Replay& replay, bool redraws,
                                const std::function<Placement(double set)>& place) {
  Held held;
  try {
    const Documents documents = currentDocument(replay);
    if (documents.current == 0 || !getSelection(replay, held)) {
      return false;
    }
    const double set = *held.set;
    const int count = countOf(replay, set);
    if (count == 0) {
      freeSet(replay, held);
      return false;
    }
    const Placement placement = place(set);
    if (!isDocLocked) {
      replay.call("lockDocument", {documents.current, 4, 1});
      isDocLocked = true;
    }
    const auto& entries = placement.matrix.entry;
    const bool isFinite =
        std::all_of(entries.begin(), entries.end(), [](double e) { return std::isfinite(e); });
    for (int i = 0; isFinite && i < count; ++i) {
      const Call& name = replay.call("acedSSName", {set, double(i)});
      if (out(name, 0) != RTNORM) {
        continue;
      }
      openObject(replay, out(name, 1), 1, held);
      if (!held.object) {
        continue;
      }
      std::vector<Arg> args{*held.object};
      for (std::size_t e = 0; e < entries.size(); ++e) {
        args.emplace_back(entries[e], e % 4 == 3 && e < 12 ? placement.scale : 1);
      }
      replay.call("transformBy", args);
      closeObject(replay, held);
      if (redraws) {
        replay.call("acedRedraw", {out(name, 1), 1});
      }
    }
    freeSet(replay, held);
    return true;
  } catch (const HostException&) {
    giveBack(replay, held);
    replay.log("ERR", "Error transformSelection()");
    return false;
  }
}

} // namespace model
