#ifndef STATE_H
#define STATE_H

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "acdocman.h"
#include "call_log.h"
#include "host.h"

/// What the host holds inside. Main thread only, no locks: the host is called from nowhere else.
namespace host {

/// A system variable. The name is in lower case.
struct Variable {
  std::wstring name;
  short value = 0;
};

/// A selection set that a caller holds. The list is shared with the selection that it was made from: a new
/// selection is a new list, so making a set costs nothing however much is selected.
struct SelectionSet {
  std::shared_ptr<const std::vector<AcDbObjectId>> idsP; // null: free slot
  Adesk::Int64 serial = 0;
};

/// Everything that goes with a document.
struct Document {
  Document();
  ~Document();
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  AcDbObjectId addObject(std::unique_ptr<AcDbObject> object);

  Adesk::Int64 generation;             // the upper half of all its ids
  std::vector<AcDbObject*> objects;    // owned; place 0 stays empty, so that no id is null
  std::vector<AcDbEntity*> modelSpace; // by number - 1; null once erased
  AcDbObjectId viewport;
  std::vector<Variable> variables;
  ViewState view;
  ViewState storedView;
  bool isViewValid = true;
  ViewCounts viewCounts;
  std::shared_ptr<const std::vector<AcDbObjectId>> selectedP;
  std::vector<SelectionSet> sets;
  Held held;
  std::int64_t writesWithoutLock = 0;
  std::vector<Moved> moved;
  bool isRedrawPending = false;
};

struct State {
  std::unique_ptr<Document> documentP;
  bool hasDocument = true;
  bool hasDocumentManager = true;
  std::vector<AcApDocManagerReactor*> reactors;
  std::vector<HistoryLine> history;
  std::function<double()> clock;
  std::string menuText;
  std::function<void(const Frame&)> frameSink;
  double refreshRate = 0;
};

/// Made at the first call, never destroyed: modules and static objects call the host while the process ends.
State& state();
inline Document& document() {
  return *state().documentP;
}

/// What other files of the host need from each other.
double now();
void print(const std::wstring& text);
void clearCommands();
void clearQueue();
/// Shows a frame at the next refresh, and forgets what moved up to now.
void showFrame(bool is2d);
/// Puts an entity's motion on the list for the next frame.
void noteMotion(AcDbEntity& entity, const AcGeMatrix3d& transform);
/// The host's own menu.
std::string defaultMenu();
/// Writes the menu file, as the menu reader does. The error text is empty on success.
std::string writeMenuFile();
/// Works out the $(...) parts of a menu expression. False if it can't be read.
bool evaluateMenuExpression(const std::wstring& text, std::wstring& result);
/// The six views, by their names in lower case; false if the name is none of them.
bool showNamedView(const std::wstring& name);
AcDbViewport& layoutViewport();
/// As variable(), without a copy of the name.
short variableValue(const ACHAR* name);

/// Text byte by byte.
std::string narrow(const std::wstring& text);
std::wstring widen(const std::string& text);
std::wstring lowered(const std::wstring& text);
std::string number(double value);
bool isFinite(const AcGeMatrix3d& m);

inline AcGePoint3d apply(const AcGeMatrix3d* transform, const AcGePoint3d& p) {
  return transform ? *transform * p : p;
}

} // namespace host

/// What the host's own types are in the trace of calls.
inline void append(std::vector<double>& numbers, std::wstring&, const AcGePoint3d& p) {
  numbers.insert(numbers.end(), {p.x, p.y, p.z});
}
inline void append(std::vector<double>& numbers, std::wstring&, const AcGeVector3d& v) {
  numbers.insert(numbers.end(), {v.x, v.y, v.z});
}
inline void append(std::vector<double>& numbers, std::wstring&, const AcGePoint2d& p) {
  numbers.insert(numbers.end(), {p.x, p.y});
}
inline void append(std::vector<double>& numbers, std::wstring&, const AcGeMatrix3d& m) {
  numbers.insert(numbers.end(), &m.entry[0][0], &m.entry[0][0] + 16);
}
inline void append(std::vector<double>& numbers, std::wstring&, AcDbObjectId id) {
  numbers.push_back(static_cast<double>(id.asOldId()));
}

/// The host's way to what objects keep to themselves.
struct HostAccess {
  enum Flag : unsigned char { kCannotBeOpened = 1, kHasNoExtents = 2, kRefusesTransform = 4 };

  static void setId(AcDbObject& object, AcDbObjectId id) { object.mId = id; }
  static int& openCount(AcDbObject& object) { return object.mOpenCount; }
  static int& number(AcDbObject& object) { return object.mNumber; }
  static int number(const AcDbObject& object) { return object.mNumber; }
  static int& movedSlot(AcDbObject& object) { return object.mMovedSlot; }
  static bool hasFlag(const AcDbObject& object, Flag flag) { return (object.mFlags & flag) != 0; }
  static void setFlag(AcDbObject& object, Flag flag, bool isOn) {
    object.mFlags = static_cast<unsigned char>(isOn ? object.mFlags | flag : object.mFlags & ~flag);
  }
  static host::LayoutState layout(const AcDbViewport& viewport) {
    return {viewport.mWidth, viewport.mHeight, viewport.mViewHeight, viewport.mViewCentre};
  }
  static void setLayout(AcDbViewport& viewport, const host::LayoutState& state) {
    viewport.mWidth = state.width;
    viewport.mHeight = state.height;
    viewport.mViewHeight = state.viewHeight;
    viewport.mViewCentre = state.centre;
  }
};

namespace host {
/// The object behind an id, without opening it; null if there is none.
AcDbObject* find(AcDbObjectId id);
} // namespace host

#endif
