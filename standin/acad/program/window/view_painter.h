#ifndef VIEW_PAINTER_H
#define VIEW_PAINTER_H

#include "host.h"

#include <windows.h>

#include <vector>

namespace program {

/// Draws the host's view with GDI, as lines, and finds what lies under the mouse. Belongs to the main thread.
class ViewPainter {
public:
  /// Objects to be looked at anew at the next painting, since they have moved.
  void forget(const std::vector<host::Moved>& moved);
  /// Paints the view, or the layout, into a rectangle of the size given.
  void paint(HDC dc, SIZE size);
  /// Number of the object whose lines come nearest to a point, 0 if none is near.
  int objectAt(POINT point, SIZE size);

private:
  struct Object {
    int number = 0;
    std::vector<AcDbStroke> strokes;
  };

  void takeNew();
  template <class Visit> void forEachSegment(SIZE size, Visit visit);

  std::vector<Object> mObjects;
};

} // namespace program

#endif
