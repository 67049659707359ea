#ifndef ACDATAMANAGER_H
#define ACDATAMANAGER_H

#include <map>

#include "acdocman.h"

/// An application's data for each document, removed when the document is closed. For the host's main thread.
template <class T> class AcApDataManager : public AcApDocManagerReactor {
public:
  AcApDataManager() {
    try {
      if (AcApDocManager* const managerP = acDocManagerPtr())
        managerP->addReactor(this);
    } catch (...) { // nothing may leave the load of a library; the map then keeps data of closed documents
    }
  }
  ~AcApDataManager() override {
    try {
      if (AcApDocManager* const managerP = acDocManagerPtr())
        managerP->removeReactor(this);
    } catch (...) { // nothing may leave a destructor
    }
  }
  AcApDataManager(const AcApDataManager&) = delete;
  AcApDataManager& operator=(const AcApDataManager&) = delete;

  void documentToBeDestroyed(AcApDocument* document) override { mDataMap.erase(document); }

  /// Returns the document's data, constructed at the first call.
  T& docData(AcApDocument* document) { return mDataMap[document]; }

private:
  std::map<AcApDocument*, T> mDataMap;
};

#endif
