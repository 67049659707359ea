#ifndef HOST_H
#define HOST_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "dbents.h"

/// How programs and tests see and steer the host. Everything here belongs to the host's main thread, and
/// nothing here shows in the journal of calls or takes part in ordered faults.
namespace host {

/// A fresh document: no entities, one layout with its viewport (paper 300 x 200, view height 100, centre (0,
/// 0)), model tab (tilemode 1, cvport 2), the default view below in memory and in the drawing, nothing
/// selected, no locks, nothing open, queue, history, counters and marks empty. Registered commands, the frame
/// sink, the refresh rate, the clock and the menu go back to their defaults too. What the document manager's reactors
/// are stays.
void reset();

/// Tells the reactors that the document goes, then opens a fresh, empty one. Commands, queue and history
/// stay.
void closeDocument();
/// Whether there is a document, and whether there is a document manager at all. Both true after reset().
/// Without them curDocument() and acDocManagerPtr() give null and the manager's operations eNoDocument; the
/// rest goes on.
void setHasDocument(bool hasDocument);
void setHasDocumentManager(bool hasManager);

// ---- System variables and tabs ----

/// Names compare without case. Unknown names can be set, which makes them known; variable() gives 0 for
/// unknown ones.
void setVariable(const std::string& name, short value);
short variable(const std::string& name);
/// Removes a variable, so that acedGetVar fails for it.
void removeVariable(const std::string& name);
/// true: tilemode 0, cvport 1 (the layout, its viewport not entered); false: 1 and 2 (the model tab).
void setLayout(bool isLayout);
bool isLayout();

// ---- The drawing ----

/// Adds an entity to model space and returns its id. Entities count from 1 in the order of adding.
AcDbObjectId add(std::unique_ptr<AcDbEntity> entity);
int entityCount();
/// Returns null for an invalid number.
AcDbObjectId entityId(int number);
/// Number of an entity, 0 if it isn't in model space.
int entityNumber(AcDbObjectId id);
/// Returns an entity without opening it, null for an invalid number. Owned by the drawing.
const AcDbEntity* entity(int number);
/// Number of the first AcDbLine; 0 if there is none.
int firstLine();
/// Extents of all of model space; empty if there is nothing.
AcDbExtents extents();
/// The entity's shape as lines through world points. Curves are drawn in pieces of at most 6 degrees.
std::vector<AcDbStroke> strokes(int number);
std::vector<AcDbStroke> strokes(const AcDbEntity& entity);

/// Marks that make an entity refuse things, until set to false or reset().
void setCannotBeOpened(AcDbObjectId id, bool isOn = true); // eCannotBeOpened
void setHasNoExtents(AcDbObjectId id,
                     bool isOn = true); // getGeomExtents: eInvalidExtents, argument untouched
void setRefusesTransform(AcDbObjectId id, bool isOn = true); // transformBy: eOnLockedLayer

/// What the layout's viewport shows.
using LayoutState = AcDbViewport::Layout;
LayoutState layout();
void setLayoutState(const LayoutState& state);

// ---- The graphics view ----

struct ViewState {
  AcGePoint3d position{0, 0, 100};
  AcGePoint3d target{0, 0, 0};
  AcGeVector3d up{0, 1, 0};
  double fieldWidth = 40;
  double fieldHeight = 10;
  bool perspective = false;
};
/// The view in memory. A view that is obtained again continues from there.
ViewState view();
void setView(const ViewState& state);
/// The view as the drawing has it. Only acgsSetViewParameters and the view commands write it.
ViewState storedView();
void setStoredView(const ViewState& state);
/// What isValid() of the view answers.
void setViewValid(bool isValid);
/// Looks along a direction at the middle of the drawing and makes it fill the field; as ZOOM EXTENTS does,
/// without the command line. Changes the view in memory and in the drawing. An empty drawing changes nothing.
void zoomExtents();

/// Calls of the view since reset().
struct ViewCounts {
  std::int64_t setViews = 0;
  std::int64_t zooms = 0;
  std::int64_t updates = 0;
  std::int64_t storedViews = 0;    // calls of acgsSetViewParameters that wrote the drawing
  std::int64_t nonFiniteCalls = 0; // calls of setView, zoom, transformBy, setViewCenter and setViewHeight
                                   // with NaN or infinity
};
ViewCounts viewCounts();

// ---- Selection, locks, balance ----

/// What the user has selected now, by id or by number; replaces what was selected. Invalid numbers are
/// left out.
void select(const std::vector<AcDbObjectId>& ids);
void selectNumbers(const std::vector<int>& numbers);
void selectAll();
const std::vector<AcDbObjectId>& selected();

/// What callers hold at the moment. All zero when everything has been given back.
struct Held {
  int selectionSets = 0;
  int openForRead = 0;
  int openForWrite = 0;
  int locks = 0;
};
Held held();
/// Openings for write since reset() while no lock was held.
std::int64_t writesWithoutLock();

// ---- The command line ----

/// Runs what was sent and typed up to now, as if typed, and what that sends in turn. Gives the number of
/// texts run. Ends after 10000 texts, so that commands that send themselves can't hold it for ever.
int runQueue();
/// Texts that wait.
int queueLength();
/// Adds a text to the queue as a user would type it; "\n" is the Enter key, U+001B the Escape key.
void type(const std::wstring& text);

struct HistoryLine {
  double seconds = 0; // by the clock
  bool isTyped = false;
  std::wstring text; // as it stands: may hold line feeds, and U+001B where Escape was typed
};
const std::vector<HistoryLine>& history();
/// Everything that was printed, put together.
std::wstring printed();
/// The history as a person would read it: typed lines start with "> ", Escape shows as <ESC>, Enter as
/// <ENTER> where it stands alone.
std::string historyText();
/// Where the times come from; null: seconds since the host was made.
void setClock(std::function<double()> clock);

// ---- Frames ----

/// An entity that moved.
struct Moved {
  int entity = 0;         // number
  AcGeMatrix3d transform; // all of its motion since the frame before
};

struct Frame {
  bool is2d = false; // the layout is shown, and layout tells its state
  ViewState view;
  LayoutState layout;
  std::vector<Moved> moved; // in the order of their numbers
  std::chrono::steady_clock::time_point
      asked; // when the frame was asked for, before the wait for the display
};

/// Hears each frame that is shown; null: nobody. What moves is only kept in mind while there is a sink.
void setFrameSink(std::function<void(const Frame&)> sink);
/// How often the display shows a frame, in Hz: a frame waits for the next time. 0: no waiting (the default).
void setRefreshRate(double hz);
/// Shows a frame if acedRedraw has drawn entities since the last one. Message loops call it.
void showPending();

/// Sets the menu that the menu reader writes into the menu file. An empty text means the host's own menu.
void setMenuText(const std::string& text);
std::string menuText();

} // namespace host

#endif
