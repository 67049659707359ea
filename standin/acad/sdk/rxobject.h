#ifndef RXOBJECT_H
#define RXOBJECT_H

#include "adesk.h"

class AcRxObject;

/// Describes a runtime class. Each class of the host has one instance, which is never destroyed.
class AcRxClass {
public:
  AcRxClass(const ACHAR* name, const AcRxClass* parent) : mName(name), mParentP(parent) {}

  const ACHAR* name() const { return mName; }

  /// Returns true for the class itself and its base classes.
  bool isDerivedFrom(const AcRxClass* other) const;

private:
  const ACHAR* mName;
  const AcRxClass* mParentP;
};

/// Base of all classes with runtime information.
class AcRxObject {
public:
  AcRxObject() = default;
  AcRxObject(const AcRxObject&) = default;
  AcRxObject& operator=(const AcRxObject&) = default;
  virtual ~AcRxObject();

  static AcRxClass* desc();
  /// Returns the object's own class.
  virtual AcRxClass* isA() const;
  bool isKindOf(const AcRxClass* aClass) const { return isA()->isDerivedFrom(aClass); }
};

/// Finds objects by name.
class AcRxDictionary : public AcRxObject {
public:
  /// Returns the object of a name, owned by the host; null if there is none. Case counts.
  virtual AcRxObject* at(const ACHAR* name) const = 0;
};

/// Keeps track of the loaded applications.
class AcRxDynamicLinker : public AcRxObject {
public:
  static AcRxClass* desc();
  AcRxClass* isA() const override;
  /// Lets the user unload the application. Returns false if there is no such application.
  virtual bool unlockApplication(void* appId) = 0;
  /// Declares that the application supports several documents. Returns false if there is no such application.
  virtual bool registerAppMDIAware(void* appId) = 0;
};

/// Returns the host's registry. It holds "DynamicLinker" and "ACAD_REGISTERED_COMMANDS".
AcRxDictionary* acrxSysRegistry();

#endif
