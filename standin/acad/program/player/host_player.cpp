#include "host_player.h"

#include "call_log.h"
#include "wide_text.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iomanip>
#include <ostream>

namespace program {

namespace {

/// Shape of the host's window, and how much of it a fitted drawing leaves free.
constexpr double kAspect = 16.0 / 9.0;
constexpr double kRoom = 1.12;
/// Distance of the eye in sizes of the field: near enough for a perspective that can be seen.
constexpr double kEyeDistance = 1.7;
/// A drawing flatter than this part of its breadth is looked at more steeply.
constexpr double kFlat = 0.02;

void setBothViews(const host::ViewState& view) {
  host::view() = host::storedView() = view;
}

/// Returns the unit vector perpendicular to the line of sight that is nearest to world Z.
AcGeVector3d uprightFor(const AcGeVector3d& look) {
  const AcGeVector3d sideways = AcGeVector3d(0, 0, 1).crossProduct(look);
  return look.crossProduct(sideways).normalize();
}

void fitFirstView() {
  const AcDbExtents extents = host::extents();
  if (extents.isEmpty())
    return;
  const AcGeVector3d size = extents.maxPoint() - extents.minPoint();
  const bool isFlat = size.z < kFlat * std::max(size.x, size.y);
  const AcGeVector3d look =
      (isFlat ? AcGeVector3d(0.25, -0.9, 1.6) : AcGeVector3d(0.75, -1, 0.62)).normalize();
  host::ViewState view;
  view.target = extents.minPoint() + size * 0.5;
  view.position = view.target + look * 100.0;
  view.up = uprightFor(look);
  view.fieldHeight = 9;
  view.fieldWidth = view.fieldHeight * kAspect;
  setBothViews(view);
  host::zoomExtents();

  view = host::view();
  view.fieldHeight = std::max(view.fieldHeight, view.fieldWidth / kAspect) * kRoom;
  view.fieldWidth = view.fieldHeight * kAspect;
  const double distance = std::max(kEyeDistance * view.fieldWidth, size.length());
  view.position = view.target + look * distance;
  setBothViews(view);
}

} // namespace

dxf::Result loadDrawing(const std::string& path) {
  dxf::Result drawing = dxf::load(path);
  if (drawing.isLoaded()) {
    host::documentName() = std::filesystem::u8path(path).filename().u8string();
    fitFirstView();
  }
  return drawing;
}

HostPlayer::HostPlayer(const session::Session& session, Controls& controls, Recorder& recorder,
                       std::ostream& log)
    : mActions(session.actionsOf(session::Who::host)), mControls(controls), mRecorder(recorder), mLog(log) {
  for (const session::Action& action : session.mActions) {
    const bool isAway = action.mVerb == session::Verb::away;
    mEnd = std::max(mEnd, action.mSeconds + (isAway ? action.mValue : 0));
  }
}

void HostPlayer::play(double seconds, std::int64_t nextPass) {
  while (mNext < mActions.size() && mActions[mNext].mSeconds <= seconds && mActions[mNext].mPass <= nextPass)
    perform(mActions[mNext++]);
}

void HostPlayer::report(const session::Action& action, const std::string& text) {
  mLog << std::fixed << std::setprecision(1) << std::setw(7) << action.mSeconds << " s  " << text << '\n'
       << std::flush;
}

void HostPlayer::select(const session::Action& action) {
  using session::Selection;
  if (action.mSelection == Selection::all) {
    host::selectAll();
  } else if (action.mSelection == Selection::line) {
    const int line = host::firstLine();
    if (line == 0)
      report(action, "(no line to select)");
    host::selectNumbers(line == 0 ? std::vector<int>{} : std::vector<int>{line});
  } else {
    host::selectNumbers(action.mObjects);
    if (host::selected().size() < action.mObjects.size())
      report(action, "(only " + std::to_string(host::selected().size()) + " of these objects to select)");
  }
  mRecorder.selection();
}

/// Opens a drawing, switches to another or closes the current one.
void HostPlayer::changeDrawing(const session::Action& action) {
  if (action.mVerb == session::Verb::open) {
    host::openDocument();
    const dxf::Result drawing = loadDrawing(action.mText);
    if (!drawing.isLoaded()) {
      report(action, drawing.error);
      host::closeDocument();
    }
  } else if (action.mVerb == session::Verb::close) {
    host::closeDocument();
  } else if (!host::switchDocument(action.mObjects.front())) {
    report(action, "(no such drawing is open)");
  }
  mRecorder.selection();
  if (host::held().locks > 0)
    report(action, "(" + host::documentName() + " is locked)");
}

void HostPlayer::perform(const session::Action& action) {
  using session::Verb;
  if (action.mVerb != Verb::wait && action.mVerb != Verb::setting && action.mVerb != Verb::tick)
    call_log::Traced(kHostLine, widened(action.mSource));
  switch (action.mVerb) {
  case Verb::select:
    select(action);
    break;
  case Verb::type:
    host::type(widened(action.mText) + L"\n");
    break;
  case Verb::layout:
  case Verb::viewport:
    host::setLayout(action.mIsOn || action.mVerb == Verb::viewport);
    if (action.mIsOn && action.mVerb == Verb::viewport)
      host::setVariable("cvport", 2);
    break;
  case Verb::lock:
  case Verb::unlock:
    for (const int number : action.mObjects)
      if (AcDbEntity* const entityP = host::entity(number))
        entityP->mHost.refusesTransform = action.mVerb == Verb::lock;
    break;
  case Verb::perspective: {
    host::ViewState view = host::view();
    view.perspective = action.mIsOn;
    setBothViews(view);
    break;
  }
  case Verb::pointer:
    mControls.point(action.mPointer);
    mRecorder.pointer(action.mPointer);
    break;
  case Verb::look: {
    host::ViewState view = host::view();
    const auto& v = action.mLook;
    view.position = {v[0], v[1], v[2]};
    view.target = {v[3], v[4], v[5]};
    view.up = {v[6], v[7], v[8]};
    setBothViews(view);
    break;
  }
  case Verb::fit:
    host::zoomExtents();
    break;
  case Verb::open:
  case Verb::drawing:
  case Verb::close:
    changeDrawing(action);
    break;
  case Verb::caption:
    mRecorder.caption(action.mText);
    report(action, action.mText);
    break;
  default: // others do nothing here, or are the device's
    break;
  }
  // Now, and not with what is typed later, so that a session that counts passes can say when it ran.
  host::runQueue();
}

} // namespace program
