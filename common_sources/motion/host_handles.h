#ifndef HOST_HANDLES_H
#define HOST_HANDLES_H

#include <arxHeaders.h>

/// What we get from the host and have to give back, whatever happens in between.
namespace motion {

/// A selection set of the host. Freed when it goes, if free() hasn't done it before; a host that fails in
/// that is beyond our help.
class SelectionSet {
public:
  SelectionSet() = default;
  ~SelectionSet();
  SelectionSet(const SelectionSet&) = delete;
  SelectionSet& operator=(const SelectionSet&) = delete;

  /// Takes what the user has selected now. False: nothing is.
  bool takeImplied();
  void free();
  const Adesk::Int64* name() const { return mName; }

private:
  ads_name mName = {};
  bool mIsHeld = false;
};

/// Number of objects in a selection set, 0 if the host doesn't tell.
Adesk::Int32 selectionLength(const ads_name set);

/// An open object of the drawing. Closed when it goes, if close() hasn't done it before.
template <class T> class OpenObject {
public:
  OpenObject(const ads_name name, AcDb::OpenMode mode) {
    AcDbObjectId id;
    acdbGetObjectId(id, name);
    acdbOpenObject(mObjectP, id, mode);
  }
  ~OpenObject() {
    try {
      close();
    } catch (...) {
    }
  }
  OpenObject(const OpenObject&) = delete;
  OpenObject& operator=(const OpenObject&) = delete;

  /// Null if it couldn't be opened.
  T* get() const { return mObjectP; }
  void close() {
    if (!mObjectP)
      return;
    mObjectP->close();
    mObjectP = nullptr;
  }

private:
  T* mObjectP = nullptr;
};

} // namespace motion

#endif
