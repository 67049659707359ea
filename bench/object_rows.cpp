// Selected objects under the cap.

#include "bench.h"

#include <algorithm>

#include "host.h"
#include "surroundings.h"

namespace bench {

namespace {

void fillDrawing(int count) {
  host::reset();
  for (int i = 0; i < count; ++i) {
    const double at = i % 1000;
    host::add(std::make_unique<AcDbLine>(AcGePoint3d(at, 0, 0), AcGePoint3d(at, 10, 5)));
  }
  host::selectAll();
}

void move3d(int count) {
  for (int i = 0; i < count; ++i)
    engine().transformSelection3d(i % 2 ? 3 : -3, 0, 0, 0, 0, 0, AcGeVector3d::kXAxis, AcGeVector3d::kYAxis,
                                  AcGeVector3d::kZAxis, false, false);
}

void move2d(int count) {
  for (int i = 0; i < count; ++i)
    engine().transformSelection2d(i % 2 ? 300 : -300, 0);
}

/// Opens each selected object for the action, which closes it.
template <class Action> void forEach(ads_name set, AcDb::OpenMode mode, const Action& action) {
  Adesk::Int32 length = 0;
  acedSSLength(set, &length);
  for (Adesk::Int32 k = 0; k < length; ++k) {
    ads_name name = {};
    AcDbObjectId id;
    AcDbEntity* entityP = nullptr;
    acedSSName(set, k, name);
    acdbGetObjectId(id, name);
    if (acdbOpenObject(entityP, id, mode) == Acad::eOk)
      action(entityP, name);
  }
}

template <bool is3d> void moveBare(int count) {
  for (int i = 0; i < count; ++i) {
    ads_name set = {};
    acedSSGet(L"I", nullptr, nullptr, nullptr, set);
    AcGeVector3d sum;
    if (is3d)
      forEach(set, AcDb::kForRead, [&sum](AcDbEntity* entityP, const ads_name&) {
        AcDbExtents extents;
        entityP->getGeomExtents(extents);
        entityP->close();
        sum += (extents.minPoint().asVector() + extents.maxPoint().asVector()) * 0.5;
      });
    AcGeMatrix3d matrix;
    matrix.setTranslation(AcGeVector3d(i % 2 ? 0.015 : -0.015, 0, sum.x * 0));
    forEach(set, AcDb::kForWrite, [&matrix](AcDbEntity* entityP, const ads_name& name) {
      entityP->transformBy(matrix);
      entityP->close();
      if (!is3d)
        acedRedraw(name, 1);
    });
    acedSSFree(set);
  }
}

} // namespace

void addObjectRows() {
  for (const int size : {100, 10000, 1000000}) {
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
    const std::string text = ", per object of " + std::to_string(size);
    row.what = "objects moved in 2D" + text;
    row.reference = "a bare loop of open, transform, close, redraw";
    row.ours = move2d;
    row.theirs = moveBare<false>;
    add(row);
    row.what = "objects moved in 3D" + text;
    row.reference = "a bare loop for the centre, another to open, transform, close";
    row.ours = move3d;
    row.theirs = moveBare<true>;
    add(row);
  }
}

} // namespace bench
