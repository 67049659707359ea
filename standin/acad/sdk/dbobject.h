#ifndef DBOBJECT_H
#define DBOBJECT_H

#include "acadstatus.h"
#include "adesk.h"
#include "rxobject.h"

namespace AcDb {
enum OpenMode { kForRead = 0, kForWrite = 1 };
} // namespace AcDb

/// Identifies an object of a drawing. Once the drawing is closed, the id is unknown.
class AcDbObjectId {
public:
  static const AcDbObjectId kNull;

  AcDbObjectId() = default;
  explicit AcDbObjectId(Adesk::Int64 value) : mValue(value) {}

  bool isNull() const { return mValue == 0; }
  Adesk::Int64 asOldId() const { return mValue; }
  bool operator==(const AcDbObjectId& id) const { return mValue == id.mValue; }
  bool operator!=(const AcDbObjectId& id) const { return mValue != id.mValue; }
  bool operator<(const AcDbObjectId& id) const { return mValue < id.mValue; }

private:
  Adesk::Int64 mValue = 0;
};

/// What the host keeps about an object, and what it is to refuse. Applications leave it alone.
struct AcDbHostRecord {
  AcDbObjectId id;
  int openCount = 0;             // openings for read, or -1: open for write
  int number = 0;                // position in model space from 1; 0: not in model space
  bool cannotBeOpened = false;   // eCannotBeOpened
  bool hasNoExtents = false;     // getGeomExtents: eInvalidExtents
  bool refusesTransform = false; // transformBy: eOnLockedLayer
};

/// An object that can be part of a drawing. The drawing then owns it, and callers open and close it.
class AcDbObject : public AcRxObject {
public:
  AcDbObject() = default;
  AcDbObject(const AcDbObject&) = delete;
  AcDbObject& operator=(const AcDbObject&) = delete;

  static AcRxClass* desc();
  AcRxClass* isA() const override;

  /// Returns null while the object isn't in a drawing.
  AcDbObjectId objectId() const { return mHost.id; }
  /// Ends one opening. Returns eNotOpen if there is none.
  Acad::ErrorStatus close();
  bool isReadEnabled() const { return mHost.openCount != 0; }
  bool isWriteEnabled() const { return mHost.openCount < 0; }

  AcDbHostRecord mHost;
};

/// Converts an entity's name to its id. Returns eUnknownObjectId if no entity has that name.
Acad::ErrorStatus acdbGetObjectId(AcDbObjectId& id, const ads_name name);

/// Opens an object of that class or one derived from it: any number of times for read, or once for write. On
/// a failure object is null.
Acad::ErrorStatus acdbOpenObject(AcDbObject*& object, AcDbObjectId id, const AcRxClass* aClass,
                                 AcDb::OpenMode mode, bool openErased);

template <class T>
Acad::ErrorStatus acdbOpenObject(T*& object, AcDbObjectId id, AcDb::OpenMode mode = AcDb::kForRead,
                                 bool openErased = false) {
  object = nullptr;
  AcDbObject* openedP = nullptr;
  const Acad::ErrorStatus status = acdbOpenObject(openedP, id, T::desc(), mode, openErased);
  object = static_cast<T*>(openedP);
  return status;
}

/// Opens an object; the destructor closes it.
template <class T> class AcDbObjectPointer {
public:
  AcDbObjectPointer() = default;
  AcDbObjectPointer(AcDbObjectId id, AcDb::OpenMode mode) { open(id, mode); }
  AcDbObjectPointer(const AcDbObjectPointer&) = delete;
  AcDbObjectPointer& operator=(const AcDbObjectPointer&) = delete;
  ~AcDbObjectPointer() {
    try {
      close();
    } catch (...) { // nothing may leave a destructor
    }
  }

  /// Closes the object opened before, if any. On a failure object() is null.
  Acad::ErrorStatus open(AcDbObjectId id, AcDb::OpenMode mode, bool openErased = false) {
    close();
    return acdbOpenObject(mObjectP, id, mode, openErased);
  }
  Acad::ErrorStatus close() {
    T* const objectP = mObjectP;
    mObjectP = nullptr;
    return objectP ? objectP->close() : Acad::eOk;
  }
  T* object() const { return mObjectP; }
  T* operator->() const { return mObjectP; }

private:
  T* mObjectP = nullptr;
};

#endif
