#include <windows.h>

#include "acedads.h"
#include "state.h"
#include "trace_types.h"

const AcDbObjectId AcDbObjectId::kNull;

namespace {

constexpr Adesk::Int64 kPlaceMask = 0xFFFFFFFF;

size_t placeOf(AcDbObjectId id) {
  return static_cast<size_t>(id.asOldId() & kPlaceMask);
}

Acad::ErrorStatus openForWrite(AcDbObject& object) {
  int& count = object.mHost.openCount;
  if (count != 0)
    return count < 0 ? Acad::eWasOpenForWrite : Acad::eWasOpenForRead;
  count = -1;
  ++host::document().held.openForWrite;
  return Acad::eOk;
}

Acad::ErrorStatus openForRead(AcDbObject& object) {
  int& count = object.mHost.openCount;
  if (count < 0)
    return Acad::eWasOpenForWrite;
  ++count;
  ++host::document().held.openForRead;
  return Acad::eOk;
}

Acad::ErrorStatus open(AcDbObject*& object, AcDbObjectId id, const AcRxClass* aClass, AcDb::OpenMode mode) {
  if (id.isNull())
    return Acad::eNullObjectId;
  AcDbObject* const foundP = host::find(id);
  if (!foundP)
    return Acad::eUnknownObjectId;
  if (!foundP->isA()->isDerivedFrom(aClass))
    return Acad::eNotThatKindOfClass;
  if (foundP->mHost.cannotBeOpened)
    return Acad::eCannotBeOpened;
  const Acad::ErrorStatus status = mode == AcDb::kForWrite ? openForWrite(*foundP) : openForRead(*foundP);
  if (status == Acad::eOk)
    object = foundP;
  return status;
}

} // namespace

Acad::ErrorStatus AcDbObject::close() {
  call_log::Call call("close", this);
  if (call.mustFail() || mHost.openCount == 0)
    return call.returns(Acad::eNotOpen);
  host::Held& held = host::document().held;
  if (mHost.openCount < 0) {
    mHost.openCount = 0;
    --held.openForWrite;
  } else {
    --mHost.openCount;
    --held.openForRead;
  }
  return call.returns(Acad::eOk);
}

Acad::ErrorStatus acdbOpenObject(AcDbObject*& object, AcDbObjectId id, const AcRxClass* aClass,
                                 AcDb::OpenMode mode, bool) {
  object = nullptr;
  call_log::Call call("acdbOpenObject", id,
                      call_log::Word{static_cast<double>(mode), mode == AcDb::kForWrite ? "write" : "read"});
  const Acad::ErrorStatus status = call.mustFail() ? Acad::eCannotBeOpened : open(object, id, aClass, mode);
  return call.returns(status, object, object && object->isKindOf(AcDbLine::desc()));
}

namespace host {

AcDbObject* find(AcDbObjectId id) {
  const Document& d = document();
  const size_t place = placeOf(id);
  return (id.asOldId() >> 32) == d.generation && place < d.objects.size() ? d.objects[place].get() : nullptr;
}

AcDbObjectId add(std::unique_ptr<AcDbEntity> entity) {
  Document& d = document();
  AcDbEntity* const entityP = entity.get();
  d.modelSpace.push_back(entityP);
  entityP->mHost.number = static_cast<int>(d.modelSpace.size());
  return d.addObject(std::move(entity));
}

int entityCount() {
  return static_cast<int>(document().modelSpace.size());
}

AcDbEntity* entity(int number) {
  const auto& space = document().modelSpace;
  return number >= 1 && static_cast<size_t>(number) <= space.size() ? space[static_cast<size_t>(number) - 1]
                                                                    : nullptr;
}

int entityNumber(AcDbObjectId id) {
  const AcDbObject* const objectP = find(id);
  return objectP ? objectP->mHost.number : 0;
}

int firstLine() {
  for (int i = 1; i <= entityCount(); ++i)
    if (entity(i)->isKindOf(AcDbLine::desc()))
      return i;
  return 0;
}

AcDbExtents extents() {
  AcDbExtents result;
  for (const AcDbEntity* const entityP : document().modelSpace)
    entityP->subAddExtents({}, result);
  return result;
}

std::vector<AcDbStroke> strokes(int number) {
  std::vector<AcDbStroke> result;
  if (const AcDbEntity* const entityP = entity(number))
    entityP->subAddStrokes({}, result);
  return result;
}

Held held() {
  return document().held;
}

} // namespace host
