#ifndef STATE_H
#define STATE_H

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "acdocman.h"
#include "host.h"

/// What the host holds inside. Main thread only, no locks: the host is called from nowhere else.
namespace host {

/// Everything that goes with a document.
struct Document {
  Document();

  AcDbObjectId addObject(std::unique_ptr<AcDbObject> object);

  Adesk::Int64 generation = 0;                      // the upper half of all its ids
  std::vector<std::unique_ptr<AcDbObject>> objects; // place 0 stays empty, so that no id is null
  std::vector<AcDbEntity*> modelSpace;              // by number - 1
  AcDbObjectId viewport;
  std::map<std::wstring, short> variables; // names in lower case
  ViewState view;
  ViewState storedView;
  bool isViewValid = true;
  ViewCounts viewCounts;
  std::vector<AcDbObjectId> selected;
  std::map<Adesk::Int64, std::vector<AcDbObjectId>> sets; // by serial number
  Held held;
  std::int64_t writesWithoutLock = 0;
  std::map<int, AcGeMatrix3d> moved; // by entity number, since the last frame
  bool isRedrawPending = false;
};

struct State {
  std::unique_ptr<Document> documentP;
  bool hasDocument = true;
  bool hasDocumentManager = true;
  std::vector<AcApDocManagerReactor*> reactors;
  std::vector<HistoryLine> history;
  std::function<double()> clock;
  std::function<void(const Frame&)> frameSink;
  double refreshRate = 0;
  std::string menuText; // empty: the host's own menu
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
void noteMotion(int number, const AcGeMatrix3d& transform);
/// Writes the menu file, as the menu reader does. The error text is empty on success.
std::string writeMenuFile();
/// The six views, by their names in lower case; false if the name is none of them.
bool showNamedView(const std::wstring& name);
/// The object behind an id, without opening it; null if there is none.
AcDbObject* find(AcDbObjectId id);

inline AcGePoint3d apply(const AcGeMatrix3d* transform, const AcGePoint3d& p) {
  return transform ? *transform * p : p;
}

} // namespace host

#endif
