#ifndef VIEW_PAINTER_H
#define VIEW_PAINTER_H

#include "host.h"

#include <windows.h>

/// Draws the host's view with GDI, as lines, and finds the object under the mouse. On the main thread.
namespace program {

/// Paints the view, or the layout, into a rectangle of the size given.
void paintView(HDC dc, SIZE size);
/// Returns the number of the object nearest to a point, 0 if none is near.
int objectAt(POINT point, SIZE size);

} // namespace program

#endif
