#include "engine.h"

namespace model {

/// Works on a handle, unless it is null, and releases it, also if the work fails.
/// isRetried  a release that fails is tried once more
void Engine::holding(const char* release, double handle, const std::function<void()>& work, bool isRetried) {
  if (handle == 0)
    return;
  try {
    work();
    if (isRetried) {
      call(release, {handle});
      return;
    }
  } catch (const HostException&) {
    try {
      call(release, {handle});
    } catch (const HostException&) {
    }
    throw;
  }
  call(release, {handle});
}

/// Works on a given set, or on the objects that are selected now, if there are any, and frees their set.
void Engine::withSet(double given, const std::function<void(double set)>& work) {
  if (given != 0)
    return work(given);
  const Call& got = call("acedSSGet", {}, L"I");
  if (out(got, 0) == RTNORM)
    holding("acedSSFree", out(got, 1), [&] { work(out(got, 1)); });
}

/// Returns the number of a set's objects, as the host filled it in.
int Engine::countOf(double set) {
  return static_cast<int>(out(call("acedSSLength", {set}), 1));
}

/// Works on an object of a set, unless it can't be opened; returns its name, and whether it has one.
const Call& Engine::withObject(double set, int index, double mode,
                               const std::function<void(const Call& opened, double object)>& work) {
  const Call& name = call("acedSSName", {set, double(index)});
  if (out(name, 0) == RTNORM) {
    const Call& opened = call("acdbOpenObject", {out(call("acdbGetObjectId", {out(name, 1)}), 1), mode});
    holding("close", out(opened, 1), [&] { work(opened, out(opened, 1)); });
  }
  return name;
}

/// Sets selAxisVector and selCenterPoint to the selected line; true if one line is selected and nothing else.
bool Engine::getSelObjectAxis() {
  if (capIsMoving)
    return selAxisValid;
  return guarded("getSelObjectAxis", [&] {
    bool isLine = false;
    const auto readLine = [&](const Call& opened, double object) {
      selAxisValid = false;
      if (out(opened, 2) == 0)
        return;
      const Vec3 start = outPoint(call("getStartPoint", {object}), 1);
      const Vec3 end = outPoint(call("getEndPoint", {object}), 1);
      selAxisVector = normalized(end - start);
      selCenterPoint = {start, largest(start)};
      selAxisValid = isLine = true;
    };
    withSet(0, [&](double set) {
      if (countOf(set) == 1 && out(withObject(set, 0, 0, readLine), 0) == RTNORM)
        selAxisValid = isLine;
    });
    return selAxisValid = isLine;
  });
}

/// Sets the centre to the mean of the midpoints of the objects' extents; true if there is one.
/// given  the caller's set; 0: the objects selected now, looked at once per movement
bool Engine::getSelObjectsCenter(double given, Scaled& centre) {
  if (capIsMoving && given == 0)
    return selCenterValid;
  return guarded("getSelObjectsCenter", [&] {
    int counted = 0;
    withSet(given, [&](double set) {
      centre = {};
      const int count = countOf(set);
      bool areNamed = true;
      for (int i = 0; i < count && areNamed; ++i) {
        const Call* extentsP = nullptr;
        const auto read = [&](const Call&, double object) { extentsP = &call("getGeomExtents", {object}); };
        areNamed = out(withObject(set, i, 0, read), 0) == RTNORM;
        if (extentsP == nullptr || out(*extentsP, 0) != 0)
          continue;
        const Vec3 low = outPoint(*extentsP, 1), high = outPoint(*extentsP, 4);
        centre = {centre + (low + high) * 0.5, std::max({centre.scale, largest(low), largest(high)})};
        ++counted;
      }
      counted = areNamed ? counted : 0;
    });
    selCenterValid = counted > 0;
    if (selCenterValid) {
      centre = {centre / counted, centre.scale};
      log("TMP", text("selCenterPoint: ", centre.x, ", ", centre.y, ", ", centre.z));
    }
    return selCenterValid;
  });
}

/// Returns where a sample moves the three axes of the world and its origin.
std::array<Scaled, 4> Engine::placement(const Sample& sample, double set, bool hoverMode, bool keepHorizon) {
  constexpr Vec3 x{1, 0, 0}, y{0, 1, 0}, z{0, 0, 1};
  if (viewMode == 1) {
    const Vec3 shift{sample[0] * 0.00005, sample[1] * 0.00005, 0};
    return {{{x, 1}, {y, 1}, {z, 1}, {shift, largest(shift)}}};
  }
  Scaled centre;
  if (!getSelObjectsCenter(set, centre))
    centre = {};
  const Vec3 dx = mAxes[0] * (sample[0] * -0.5), dy = mAxes[1] * (sample[1] * 0.5),
             dz = mAxes[2] * (sample[2] * 0.5);
  Vec3 shift = dx + dy + dz;
  double scale = std::max({largest(dx), largest(dy), largest(dz)});
  if (hoverMode)
    shift.y = 0;
  std::array<Scaled, 4> placed{{{x, 1}, {y, 1}, {z, 1}, centre}};
  const auto turn = [&](double angle, const Vec3& axis) {
    if (angle == 0 || length(axis) == 0)
      return;
    const Vec3 before = placed[3];
    for (Scaled& v : placed)
      v = {rotateBy(v, angle, axis), v.scale};
    shift = shift + (before - placed[3]);
    scale = std::max({scale, largest(centre), centre.scale});
  };
  turn(keepHorizon ? 0 : sample[5] * 0.002, mAxes[2]);
  turn(sample[4] * 0.002, keepHorizon ? y : mAxes[1]);
  turn(sample[3] * -0.002, mAxes[0]);
  placed[3] = {shift, scale};
  return placed;
}

/// Moves the selected objects; true if there are any.
bool Engine::transformSelection(const Sample& sample) {
  const bool hoverMode = mInputsP->hoverMode(), keepHorizon = mInputsP->keepHorizon();
  return guarded("transformSelection", [&] {
    bool isTaken = false;
    const double document = ask("acDocManagerPtr") == 0 ? 0 : ask("curDocument");
    if (document == 0)
      return false;
    withSet(0, [&](double set) {
      const int count = countOf(set);
      if (count < 1)
        return;
      const std::array<Scaled, 4> placed = placement(sample, set, hoverMode, keepHorizon);
      Args args{0};
      for (const auto coordinate : {&Vec3::x, &Vec3::y, &Vec3::z})
        for (const Scaled& v : placed)
          args.emplace_back(v.*coordinate, v.scale);
      args.insert(args.end(), {0, 0, 0, 1});
      if (!isDocLocked)
        call("lockDocument", {document, 4, 1});
      isDocLocked = isTaken = true;
      for (int i = 0; i < count && areFinite(args); ++i) {
        bool isOpen = false;
        const Call& name = withObject(set, i, 1, [&](const Call&, double object) {
          isOpen = true;
          args[0] = object;
          call("transformBy", args);
        });
        if (viewMode == 1 && isOpen)
          call("acedRedraw", {out(name, 1), 1});
      }
    });
    return isTaken;
  });
}

} // namespace model
