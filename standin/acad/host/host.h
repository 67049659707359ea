#ifndef HOST_H
#define HOST_H

#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "dbents.h"

/// Inspects and controls the host. For programs and tests, on the host's main thread. Nothing here shows in
/// the journal of calls or takes part in ordered faults.
namespace host {

/// Returns true if no coordinate is NaN or infinite.
inline bool isFinite(const AcGePoint3d& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

/// Restores the initial state: a document without entities, one layout with the default viewport, the model
/// tab (tilemode 1, cvport 2), the default view in memory and in the drawing, nothing selected, locked or
/// open; queue, history, counters and refusals empty; no registered commands and no frame sink; default
/// refresh rate and menu. The reactors of the document manager stay.
void reset();

/// Opens an empty document, which becomes the current one. View, layout, variables, selection and locks are each
/// document's own; commands, queue and history are the host's. All that follows is about the current document.
void openDocument();
/// Makes another open document the current one. Documents count from 1 in the order of opening; returns false
/// if none of that number is open.
bool switchDocument(int number);
/// Informs the reactors and closes the current document. The one that was current before it follows, an empty one
/// if there is none.
void closeDocument();
int documentNumber();
/// Returns the current document's name, to be read and set.
std::string& documentName();
/// Set whether there is a document, and whether there is a document manager. Both are true after reset().
/// Without them curDocument() and acDocManagerPtr() return null, and the manager's operations eNoDocument.
void setHasDocument(bool hasDocument);
void setHasDocumentManager(bool hasManager);

// ---- System variables and tabs ----

/// Set and return a variable. Names compare without case. Setting an unknown one adds it; variable() returns
/// 0 for it.
void setVariable(const std::string& name, short value);
short variable(const std::string& name);
/// Removes a variable, so that acedGetVar fails for it.
void removeVariable(const std::string& name);
/// Switches to the layout, its viewport not entered (tilemode 0, cvport 1), or to the model tab (1, 2).
void setLayout(bool isLayout);
bool isLayout();

// ---- The drawing ----

/// Adds an entity to model space and returns its id. Entities count from 1 in the order of adding.
AcDbObjectId add(std::unique_ptr<AcDbEntity> entity);
int entityCount();
/// Returns the number of an entity, 0 if it isn't in model space.
int entityNumber(AcDbObjectId id);
/// Returns an entity without opening it, null for an invalid number. Owned by the drawing. What its host record
/// refuses, it refuses until that is reset.
AcDbEntity* entity(int number);
/// Returns the number of the first AcDbLine, 0 if there is none.
int firstLine();
/// Returns the extents of model space, empty if there is no entity.
AcDbExtents extents();
/// Returns the entity's shape as lines through world points. Curves are drawn in pieces of at most 6 degrees.
std::vector<AcDbStroke> strokes(int number);

/// Returns what the layout's viewport shows, to be read and set.
using LayoutState = AcDbViewport::Layout;
LayoutState& layout();

// ---- The graphics view ----

struct ViewState {
  AcGePoint3d position{0, 0, 100};
  AcGePoint3d target{0, 0, 0};
  AcGeVector3d up{0, 1, 0};
  double fieldWidth = 40;
  double fieldHeight = 10;
  bool perspective = false;
};
/// Returns the view in memory, to be read and set. A view that is obtained again continues from there.
ViewState& view();
/// Returns the view in the drawing, to be read and set. Of callers only acgsSetViewParameters and the view
/// commands write it.
ViewState& storedView();
/// Sets the result of the view's isValid().
void setViewValid(bool isValid);
/// Centres the view on the drawing and makes the drawing fill the field, as ZOOM EXTENTS does. Changes the
/// view in memory and in the drawing. Does nothing if the drawing is empty.
void zoomExtents();

/// Returns the number of calls since reset() of setView, zoom, transformBy, setViewCenter and setViewHeight
/// with NaN or infinity, or a zoom by 0 or less.
std::int64_t nonFiniteCalls();

// ---- Selection, locks, balance ----

/// Replace the user's selection, by id or by number. Invalid numbers are left out.
void select(const std::vector<AcDbObjectId>& ids);
void selectNumbers(const std::vector<int>& numbers);
void selectAll();
const std::vector<AcDbObjectId>& selected();

/// What callers hold at the moment. All zero when everything has been returned.
struct Held {
  int selectionSets = 0;
  int openForRead = 0;
  int openForWrite = 0;
  int locks = 0;
};
Held held();

// ---- The command line ----

/// Runs the queued texts, and what they send in turn, as if typed. Returns the number of texts run. Ends
/// after 10000, so that commands that send themselves can't run for ever.
int runQueue();
/// Returns the number of texts that the plug-in has queued since reset().
std::int64_t sentTexts();
/// Queues a text as typed by the user; "\n" is the Enter key, U+001B the Escape key.
void type(const std::wstring& text);

struct HistoryLine {
  double seconds = 0; // unix time
  bool isTyped = false;
  std::wstring text; // may hold line feeds, and U+001B where Escape was typed
};
const std::vector<HistoryLine>& history();
/// Returns everything that was printed.
std::wstring printed();
/// Returns the history for a person to read: typed lines start with "> ", Escape shows as <ESC>, an Enter
/// alone as <ENTER>.
std::string historyText();

// ---- Frames ----

/// An entity that moved.
struct Moved {
  int entity = 0;         // number
  AcGeMatrix3d transform; // all of its motion since the frame before
};

struct Frame {
  bool is2d = false; // the layout is shown, as in layout
  ViewState view;
  LayoutState layout;
  std::vector<Moved> moved; // in the order of their numbers
};

/// Sets the function that receives each frame once it is drawn, or null, and the function that is called when
/// the display has shown it. Motion is recorded only while there is the former.
void setFrameSink(std::function<void(const Frame&)> sink, std::function<void()> onShown = nullptr);
/// Sets the refresh rate of the display, in Hz. A frame waits for the next refresh. 0, the default: no
/// waiting.
void setRefreshRate(double hz);
/// Shows a frame if acedRedraw has drawn entities since the last one. For message loops.
void showPending();

/// Sets the menu that the menu reader writes into the menu file. An empty text means the host's own menu.
void setMenuText(const std::string& text);
std::string menuText();

} // namespace host

#endif
