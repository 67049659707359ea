#ifndef VIEW_PAINTER_H
#define VIEW_PAINTER_H

#include "host.h"

#include <windows.h>

#include <vector>

namespace program {

/// Draws the host's view with GDI, as lines, and finds the object under the mouse. Belongs to the main
/// thread.
class ViewPainter {
public:
  /// Notes objects that have moved, for the next painting.
  void forget(const std::vector<host::Moved>& moved);
  /// Paints the view, or the layout, into a rectangle of the size given.
  void paint(HDC dc, SIZE size);
  /// Returns the number of the object nearest to a point, 0 if none is near.
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
