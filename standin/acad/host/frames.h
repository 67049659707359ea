#ifndef FRAMES_H
#define FRAMES_H

#include "state.h"

namespace host {

/// Waits for the display's next refresh and passes a frame to the sink, with what has moved since the last
/// one.
/// is2d  shows the layout
void showFrame(bool is2d);
/// Adds an entity's motion to the next frame, and to what undo() takes back. Does nothing for number 0.
void noteMotion(int number, const AcGeMatrix3d& transform);
/// Takes back how entities have been moved under the last lock of the document. Returns false if there is
/// nothing to take back.
bool undo();

} // namespace host

#endif
