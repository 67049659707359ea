#ifndef ACDATAMANAGER_H
#define ACDATAMANAGER_H

#include <map>

#include "acdocman.h"

/// An application's data for each document, dropped when the document goes. Belongs to the host's main
/// thread.
template <class T> class AcApDataManager : public AcApDocManagerReactor {
public:
  AcApDataManager() {
    try {
      if (AcApDocManager* const managerP = acDocManagerPtr())
        managerP->addReactor(this);
    } catch (
        ...) { // constructed while a library is loaded, where nothing could catch it; the map is never cleaned then
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

  /// The document's data; made at the first call.
  T& docData(AcApDocument* document) { return mDataMap[document]; }

private:
  std::map<AcApDocument*, T> mDataMap;
};

#endif
