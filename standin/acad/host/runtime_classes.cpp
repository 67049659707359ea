#include <windows.h>

#include "accmd.h"
#include "acdocman.h"
#include "dbents.h"
#include "rxobject.h"

bool AcRxClass::isDerivedFrom(const AcRxClass* other) const {
  for (const AcRxClass* classP = this; classP; classP = classP->mParentP)
    if (classP == other)
      return true;
  return false;
}

AcRxObject::~AcRxObject() = default;

// One class object each, constructed at first use, its parent first.
#define OV_RUNTIME_CLASS(Class, parentP)                                                                     \
  AcRxClass* Class::desc() {                                                                                 \
    static AcRxClass sClass(L"" #Class, parentP);                                                            \
    return &sClass;                                                                                          \
  }                                                                                                          \
  AcRxClass* Class::isA() const {                                                                            \
    return desc();                                                                                           \
  }

OV_RUNTIME_CLASS(AcRxObject, nullptr)
OV_RUNTIME_CLASS(AcRxDynamicLinker, AcRxObject::desc())
OV_RUNTIME_CLASS(AcEdCommandStack, AcRxObject::desc())
OV_RUNTIME_CLASS(AcDbObject, AcRxObject::desc())
OV_RUNTIME_CLASS(AcDbEntity, AcDbObject::desc())
OV_RUNTIME_CLASS(AcDbLine, AcDbEntity::desc())
OV_RUNTIME_CLASS(AcDbPolyFaceMesh, AcDbEntity::desc())
OV_RUNTIME_CLASS(AcDbFace, AcDbEntity::desc())
OV_RUNTIME_CLASS(AcDbBlockReference, AcDbEntity::desc())
OV_RUNTIME_CLASS(AcDbViewport, AcDbEntity::desc())
