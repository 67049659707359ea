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

/// The state of the host. Main thread only, so it has no locks.
namespace host {

/// A document, with all that is lost when it is closed.
struct Document {
  explicit Document(int number);

  AcDbObjectId addObject(std::unique_ptr<AcDbObject> object);

  const int number;
  std::string name;
  AcApDocument handle;                              // as callers know it
  Adesk::Int64 generation = 0;                      // the upper half of all its ids
  std::vector<std::unique_ptr<AcDbObject>> objects; // element 0 is empty, so that no id is null
  std::vector<AcDbEntity*> modelSpace;              // by number - 1
  AcDbObjectId viewport;
  std::map<std::wstring, short> variables; // names in lower case
  ViewState view;
  ViewState storedView;
  bool isViewValid = true;
  std::vector<ViewState> previousViews;            // those that ZOOM PREVIOUS returns to, the latest last
  std::map<std::wstring, ViewState> savedViews;    // by name
  std::map<int, AcGeMatrix3d> movement;            // by entity number, the way back of this lock's motion
  std::vector<std::map<int, AcGeMatrix3d>> undone; // the same of each lock before
  std::int64_t nonFiniteCalls = 0;
  std::vector<AcDbObjectId> selected;
  std::map<Adesk::Int64, std::vector<AcDbObjectId>> sets; // by serial number
  Held held;
  std::map<int, AcGeMatrix3d> moved; // by entity number, since the last frame
  bool isRedrawPending = false;
};

struct State {
  std::vector<std::unique_ptr<Document>> documents; // the current one last, before it the one current before
  int opened = 0;                                   // documents since reset()
  bool hasDocument = true;
  bool hasDocumentManager = true;
  std::vector<AcApDocManagerReactor*> reactors;
  std::vector<HistoryLine> history;
  std::int64_t sentTexts = 0;
  std::function<void(const Frame&)> frameSink;
  std::function<void()> onShown;
  double refreshRate = 0;
  std::int64_t lastRefresh = 0; // number of the last one that showed a frame
  std::string menuText;         // empty: the host's own menu
};

/// Returns the one state. Never destroyed: modules and static objects call the host while the process ends.
State& state();
inline Document& document() {
  return *state().documents.back();
}

/// Writes a view to the drawing; the one before becomes the previous view.
void storeView(const ViewState& view);
/// Returns the time, unix seconds.
double now();
/// Returns an object without opening it, null if the id is invalid.
AcDbObject* find(AcDbObjectId id);

} // namespace host

#endif
