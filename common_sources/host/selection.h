#ifndef SELECTION_H
#define SELECTION_H

#include <arxHeaders.h>

/// What we borrow from the host, returned by destructors also when a call throws.
namespace host_handles {

/// A selection set of the host. Its destructor frees it if it is still held, and swallows what the host
/// throws then.
class SelectionSet {
public:
  SelectionSet() = default;
  ~SelectionSet();
  SelectionSet(const SelectionSet&) = delete;
  SelectionSet& operator=(const SelectionSet&) = delete;

  /// Takes what the user has selected now. Returns false if the host has no selection.
  bool takeImplied();
  /// If the host throws, the set is still held, and the destructor frees it again.
  void free();
  const Adesk::Int64* name() const { return mName; }

private:
  ads_name mName = {};
  bool mIsHeld = false;
};

/// Returns the number of objects in a selection set.
Adesk::Int32 selectionLength(const ads_name set);

/// An object of the drawing, opened by its name. Its destructor closes it if it is still open, and swallows
/// what the host throws then.
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

} // namespace host_handles

#endif
