#ifndef ACCMD_H
#define ACCMD_H

#include <windows.h>

#include "acadstatus.h"
#include "rxobject.h"

typedef void (*AcRxFunctionPtr)();

class AcEdUIContext : public AcRxObject {};

class AcEdCommand : public AcRxObject {};

/// The commands that applications have added to the host's own.
class AcEdCommandStack : public AcRxObject {
public:
  static AcRxClass* desc();
  AcRxClass* isA() const override;
  /// Adds a command. Names compare without case. Returns eDuplicateKey if the group has that global name
  /// already.
  /// out  must be null
  virtual Acad::ErrorStatus addCommand(const ACHAR* group, const ACHAR* globalName, const ACHAR* localName,
                                       Adesk::Int32 flags, AcRxFunctionPtr function,
                                       AcEdUIContext* context = nullptr, int commandId = -1,
                                       HINSTANCE resource = nullptr, AcEdCommand** out = nullptr) = 0;
  virtual Acad::ErrorStatus removeCmd(const ACHAR* group, const ACHAR* globalName) = 0;
};

#endif
