#ifndef DBOBJECT_H
#define DBOBJECT_H

#include "acadstatus.h"
#include "adesk.h"
#include "rxobject.h"

namespace AcDb {
enum OpenMode { kForRead = 0, kForWrite = 1 };
} // namespace AcDb

/// Names an object of the drawing for as long as the drawing lives. An id of a drawing that is gone opens
/// nothing.
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

/// What the host keeps about an object. Applications leave it alone.
struct AcDbHostRecord {
  AcDbObjectId id;
  int openCount = 0; // openings for read, or -1: open for write
  int number = 0;    // position in model space from 1; 0: not in model space
  bool cannotBeOpened = false;
  bool hasNoExtents = false;
  bool refusesTransform = false;
};

/// An object that can live in a drawing. While it does, the drawing owns it, and others open and close it.
class AcDbObject : public AcRxObject {
public:
  AcDbObject() = default;
  AcDbObject(const AcDbObject&) = delete;
  AcDbObject& operator=(const AcDbObject&) = delete;

  static AcRxClass* desc();
  AcRxClass* isA() const override;

  /// Null while the object is in no drawing.
  AcDbObjectId objectId() const { return mHost.id; }
  /// Ends one opening. eNotOpen if there is none.
  Acad::ErrorStatus close();
  bool isReadEnabled() const { return mHost.openCount != 0; }
  bool isWriteEnabled() const { return mHost.openCount < 0; }

  AcDbHostRecord mHost;
};

/// Returns the id of an entity's name. eUnknownObjectId if no entity has that name.
Acad::ErrorStatus acdbGetObjectId(AcDbObjectId& id, const ads_name name);

/// Opens an object if it is of that class or derived from it. Any number of readers or one writer at a time.
/// On a failure object is null.
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

/// Closes what it has opened when it goes.
template <class T> class AcDbObjectPointer {
public:
  AcDbObjectPointer() = default;
  AcDbObjectPointer(AcDbObjectId id, AcDb::OpenMode mode, bool openErased = false) {
    open(id, mode, openErased);
  }
  AcDbObjectPointer(const AcDbObjectPointer&) = delete;
  AcDbObjectPointer& operator=(const AcDbObjectPointer&) = delete;
  ~AcDbObjectPointer() {
    try {
      close();
    } catch (...) { // nothing may leave a destructor
    }
  }

  /// Closes what was open before. On a failure object() is null.
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
