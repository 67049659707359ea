#ifndef ACDOCMAN_H
#define ACDOCMAN_H

#include "acadstatus.h"
#include "rxobject.h"

namespace AcAp {
enum DocLockMode { kWrite = 4 };
} // namespace AcAp

class AcApDocument : public AcRxObject {};

/// Is informed about documents, on the host's main thread.
class AcApDocManagerReactor : public AcRxObject {
public:
  virtual void documentToBeDestroyed(AcApDocument* document);
};

class AcApDocManager : public AcRxObject {
public:
  /// Returns the current document, null if none is open.
  virtual AcApDocument* curDocument() const = 0;
  /// Locks a document for changes from outside a command; locks add up.
  virtual Acad::ErrorStatus lockDocument(AcApDocument* document, AcAp::DocLockMode mode = AcAp::kWrite,
                                         const ACHAR* globalCommand = nullptr,
                                         const ACHAR* localCommand = nullptr, bool prompt = true) = 0;
  /// Releases one lock. Returns eNotLocked if there is none.
  virtual Acad::ErrorStatus unlockDocument(AcApDocument* document) = 0;
  /// Queues a text for the command line and returns at once.
  virtual Acad::ErrorStatus sendStringToExecute(AcApDocument* document, const ACHAR* text,
                                                bool activate = true, bool wrapUpInactiveDoc = false,
                                                bool echoString = true) = 0;
  /// Adds a reactor, which stays its owner's and must be removed before it is destroyed.
  virtual void addReactor(AcApDocManagerReactor* reactor) = 0;
  virtual void removeReactor(AcApDocManagerReactor* reactor) = 0;
};

/// Returns the document manager, null if there is none.
AcApDocManager* acDocManagerPtr();

#endif
