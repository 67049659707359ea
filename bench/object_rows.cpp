// Selected objects under the cap.

#include "bench.h"

#include <algorithm>
#include <map>

#include "host.h"
#include "surroundings.h"

namespace bench {

namespace {

constexpr int kSizes[] = {100, 10000, 1000000};

void fillDrawing(int count) {
  host::reset();
  for (int i = 0; i < count; ++i) {
    const double at = i % 1000;
    host::add(std::make_unique<AcDbLine>(AcGePoint3d(at, 0, 0), AcGePoint3d(at, 10, 5)));
  }
  host::selectAll();
}

void moveOurs3d(int count) {
  for (int i = 0; i < count; ++i)
    engine().transformSelection3d(i % 2 ? 3 : -3, 0, 0, 0, 0, 0, AcGeVector3d::kXAxis, AcGeVector3d::kYAxis,
                                  AcGeVector3d::kZAxis, false, false);
}

void moveOurs2d(int count) {
  for (int i = 0; i < count; ++i)
    engine().transformSelection2d(i % 2 ? 300 : -300, 0);
}

enum class Kind { OpenTransformClose, WithRedraw, WithCentre };

template <Kind kind> void moveBare(int count) {
  for (int i = 0; i < count; ++i) {
    ads_name set = {};
    acedSSGet(L"I", nullptr, nullptr, nullptr, set);
    Adesk::Int32 length = 0;
    acedSSLength(set, &length);
    AcGeVector3d sum;
    for (Adesk::Int32 k = 0; kind == Kind::WithCentre && k < length; ++k) {
      ads_name name = {};
      AcDbObjectId id;
      AcDbEntity* entityP = nullptr;
      AcDbExtents extents;
      acedSSName(set, k, name);
      acdbGetObjectId(id, name);
      if (acdbOpenObject(entityP, id, AcDb::kForRead) != Acad::eOk)
        continue;
      entityP->getGeomExtents(extents);
      entityP->close();
      sum += (extents.minPoint().asVector() + extents.maxPoint().asVector()) * 0.5;
    }
    AcGeMatrix3d matrix;
    matrix.setTranslation(AcGeVector3d(i % 2 ? 0.015 : -0.015, 0, sum.x * 0));
    for (Adesk::Int32 k = 0; k < length; ++k) {
      ads_name name = {};
      AcDbObjectId id;
      AcDbEntity* entityP = nullptr;
      acedSSName(set, k, name);
      acdbGetObjectId(id, name);
      if (acdbOpenObject(entityP, id, AcDb::kForWrite) != Acad::eOk)
        continue;
      entityP->transformBy(matrix);
      entityP->close();
      if (kind == Kind::WithRedraw)
        acedRedraw(name, 1);
    }
    acedSSFree(set);
  }
}

std::map<int, double> gPerObject; // ours in 3D, by number of objects

Row rowFor(int size) {
  Row row;
  row.goal = 1.15;
  row.batch = std::max(1, 10000 / size);
  row.pairs = size > 100000 ? 15 : 101;
  row.share = size;
  row.start = [size] { fillDrawing(size); };
  row.stop = [] {
    setSample(0, 0, 0, 0, 0, 0);
    host::reset();
    engine().mIsDocLocked = false;
  };
  return row;
}

Result flatness() {
  const auto& all = results();
  double least = 0, most = 0, leastBare = 0, mostBare = 0;
  for (const Result& r : all) {
    if (r.what.rfind("objects moved in 2D", 0) != 0)
      continue;
    least = least == 0 ? r.ours : std::min(least, r.ours);
    most = std::max(most, r.ours);
    leastBare = leastBare == 0 ? r.theirs : std::min(leastBare, r.theirs);
    mostBare = std::max(mostBare, r.theirs);
  }
  const double ours = least > 0 ? most / least : 0;
  const double bare = leastBare > 0 ? mostBare / leastBare : 0;
  return {"objects moved, dearest size by cheapest",
          "the same of the bare loop",
          "x",
          ours,
          bare,
          bare > 0 ? ours / bare : 0,
          1.2,
          false};
}

} // namespace

void addObjectRows() {
  for (const int size : kSizes) {
    Row row = rowFor(size);
    const std::string text = ", per object of " + std::to_string(size);
    row.what = "objects moved in 2D" + text;
    row.reference = "a bare loop of open, transform, close, redraw";
    row.ours = moveOurs2d;
    row.theirs = moveBare<Kind::WithRedraw>;
    add(row);
    row.what = "objects moved in 3D" + text;
    row.reference = "a bare loop for the centre, another to open, transform, close";
    row.ours = moveOurs3d;
    row.theirs = moveBare<Kind::WithCentre>;
    add(row);
  }
  add("objects moved: growth with their number", flatness);
}

} // namespace bench
