#ifndef ACADSTATUS_H
#define ACADSTATUS_H

namespace Acad {

/// Result of the host's object-oriented operations.
enum ErrorStatus {
  eOk = 0,
  eNotApplicable = 2,
  eInvalidInput = 3,
  eDuplicateKey = 8,
  eKeyNotFound = 9,
  eNullObjectId = 20,
  eUnknownObjectId = 21,
  eNotThatKindOfClass = 23,
  eCannotBeOpened = 24,
  eWasOpenForRead = 26,
  eWasOpenForWrite = 27,
  eNotOpen = 28,
  eNotOpenForWrite = 29,
  eOnLockedLayer = 30,
  eInvalidExtents = 31,
  eCannotScaleNonUniformly = 32,
  eNoDocument = 40,
  eNotLocked = 41
};

} // namespace Acad

#endif
