#include "engine.h"

namespace model {

/// Works on a handle, unless it is null, and releases it, also if the work fails.
/// isRetried  a release that fails is tried once more
void Engine::holding(const char* release, double handle, const Work& work, bool isRetried) {
  if (handle == 0)
    return;
  const auto give = [&] { call(release, {handle}); };
  const bool isDone = succeeds([&] {
    work();
    if (isRetried)
      give();
  });
  const bool isGiven = (isDone && isRetried) || succeeds(give);
  if (!isDone || !isGiven)
    throw HostException();
}

/// Works on a given set, or on the objects that are selected now, if there are any, and frees their set.
void Engine::withSet(double given, const std::function<void(double set)>& work) {
  if (given != 0)
    return work(given);
  const Call& got = call("acedSSGet", {}, L"I");
  if (out(got, 0) == RTNORM)
    holding("acedSSFree", out(got, 1), [&] { work(out(got, 1)); });
}

/// Works on an object of a set, unless it can't be opened. Returns its name, 0 if it has none.
double Engine::withObject(double set, int index, double mode,
                          const std::function<void(const Call& opened)>& work) {
  const Call& name = call("acedSSName", {set, double(index)});
  if (out(name, 0) != RTNORM)
    return 0;
  const Call& opened = call("acdbOpenObject", {out(call("acdbGetObjectId", {out(name, 1)}), 1), mode});
  holding("close", out(opened, 1), [&] { work(opened); });
  return out(name, 1);
}

/// Sets selAxisVector and selCenterPoint to the selected line. Returns whether one line is selected and nothing else.
bool Engine::getSelObjectAxis() {
  if (capIsMoving)
    return selAxisValid;
  const bool isDone = guarded("getSelObjectAxis", [&] {
    bool isLine = false;
    const auto readLine = [&](const Call& opened) {
      selAxisValid = false;
      if (out(opened, 2) == 0)
        return;
      const Vec3 start = outPoint(call("getStartPoint", {out(opened, 1)}), 1);
      const Vec3 end = outPoint(call("getEndPoint", {out(opened, 1)}), 1);
      selAxisVector = normalized(end - start);
      selCenterPoint = start;
      selAxisValid = isLine = true;
    };
    withSet(0, [&](double set) {
      if (countOf(set) == 1 && withObject(set, 0, 0, readLine) != 0)
        selAxisValid = isLine;
    });
    selAxisValid = isLine;
  });
  return isDone && selAxisValid;
}

/// Sets the centre to the mean of the midpoints of the objects' extents. Returns whether there is one.
/// given  the caller's set; 0: the objects selected now, read at a movement's first sample only
bool Engine::getSelObjectsCenter(double given, Vec3& centre) {
  if (capIsMoving && given == 0)
    return selCenterValid;
  const bool isDone = guarded("getSelObjectsCenter", [&] {
    int counted = 0;
    bool areNamed = true;
    withSet(given, [&](double set) {
      centre = {};
      const int count = countOf(set);
      for (int i = 0; i < count && areNamed; ++i) {
        const Call* extentsP = nullptr;
        const auto read = [&](const Call& opened) { extentsP = &call("getGeomExtents", {out(opened, 1)}); };
        areNamed = withObject(set, i, 0, read) != 0;
        if (extentsP == nullptr || out(*extentsP, 0) != 0)
          continue;
        centre = centre + (outPoint(*extentsP, 1) + outPoint(*extentsP, 4)) * 0.5;
        ++counted;
      }
    });
    selCenterValid = areNamed && counted > 0;
    if (!selCenterValid)
      return;
    centre = {centre.x / counted, centre.y / counted, centre.z / counted, centre.scale};
    log("TMP", text("selCenterPoint: ", centre.x, ", ", centre.y, ", ", centre.z));
  });
  return isDone && selCenterValid;
}

/// Returns the matrix that moves the objects of a set, row by row.
Args Engine::placement(const Sample& sample, double set, bool hoverMode, bool keepHorizon) {
  Vec3 shift{sample[0] * 0.00005, sample[1] * 0.00005, 0};
  std::array<Vec3, 4> placed{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}}}; // three directions, the origin
  if (viewMode != 1) {
    Vec3 centre;
    if (!getSelObjectsCenter(set, centre))
      centre = {};
    shift = mAxes[0] * (sample[0] * -0.5) + mAxes[1] * (sample[1] * 0.5) + mAxes[2] * (sample[2] * 0.5);
    shift.y = hoverMode ? 0 : shift.y;
    const auto turn = [&](double angle, const Vec3& axis) {
      if (angle == 0 || length(axis) == 0)
        return;
      for (std::size_t i = 0; i < 3; ++i)
        placed[i] = rotateBy(placed[i], angle, axis);
      placed[3] = centre + rotateBy(placed[3] - centre, angle, axis);
    };
    turn(keepHorizon ? 0 : sample[5] * 0.002, mAxes[2]);
    turn(sample[4] * 0.002, keepHorizon ? Vec3{0, 1, 0} : mAxes[1]);
    turn(sample[3] * -0.002, mAxes[0]);
  }
  placed[3] = placed[3] + shift;
  Args entries;
  for (const auto coordinate : {&Vec3::x, &Vec3::y, &Vec3::z})
    for (const Vec3& v : placed)
      entries.emplace_back(v.*coordinate, v.scale);
  entries.insert(entries.end(), {0, 0, 0, 1});
  return entries;
}

/// Moves the selected objects. Returns whether there are any.
bool Engine::transformSelection(const Sample& sample, bool hoverMode, bool keepHorizon) {
  bool isTaken = false;
  const auto transform = [&] {
    const double document = ask("acDocManagerPtr") == 0 ? 0 : ask("curDocument");
    if (document != 0)
      withSet(0, [&](double set) {
        const int count = countOf(set);
        if (count < 1)
          return;
        Args args = placement(sample, set, hoverMode, keepHorizon);
        if (!isDocLocked)
          call("lockDocument", {document, 4, 1});
        isDocLocked = isTaken = true;
        const bool isToMove = areFinite(args);
        args.insert(args.begin(), 0);
        for (int i = 0; i < count && isToMove; ++i) {
          bool isOpen = false;
          const double name = withObject(set, i, 1, [&](const Call& opened) {
            isOpen = true;
            args[0] = out(opened, 1);
            call("transformBy", args);
          });
          if (viewMode == 1 && isOpen)
            call("acedRedraw", {name, 1});
        }
      });
  };
  return guarded("transformSelection", transform) && isTaken;
}

} // namespace model
