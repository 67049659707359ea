#ifndef RXOBJECT_H
#define RXOBJECT_H

#include "adesk.h"

class AcRxObject;

/// Describes a runtime class. Each class of the host has one instance, for as long as the host runs.
class AcRxClass {
public:
  AcRxClass(const ACHAR* name, const AcRxClass* parent) : mName(name), mParentP(parent) {}

  const ACHAR* name() const { return mName; }

  /// True for the class itself and for everything above it.
  bool isDerivedFrom(const AcRxClass* other) const;

private:
  const ACHAR* mName;
  const AcRxClass* mParentP;
};

/// Root of everything that the host knows by its class at runtime.
class AcRxObject {
public:
  AcRxObject() = default;
  AcRxObject(const AcRxObject&) = default;
  AcRxObject& operator=(const AcRxObject&) = default;
  virtual ~AcRxObject();

  static AcRxClass* desc();
  /// The object's own class.
  virtual AcRxClass* isA() const;
  bool isKindOf(const AcRxClass* aClass) const { return isA()->isDerivedFrom(aClass); }
};

/// Finds objects by name.
class AcRxDictionary : public AcRxObject {
public:
  static AcRxClass* desc();
  AcRxClass* isA() const override;
  /// The object of that name, owned by the host; null if there is none. Names are exact.
  virtual AcRxObject* at(const ACHAR* name) const = 0;
};

/// Keeps track of the loaded applications.
class AcRxDynamicLinker : public AcRxObject {
public:
  static AcRxClass* desc();
  AcRxClass* isA() const override;
  /// Lets the user unload the application. False if there is no such application.
  virtual bool unlockApplication(void* appId) = 0;
  /// Declares that the application can live with several documents. False if there is no such application.
  virtual bool registerAppMDIAware(void* appId) = 0;
};

/// The host's registry: "DynamicLinker", "ACAD_REGISTERED_COMMANDS".
AcRxDictionary* acrxSysRegistry();

#endif
