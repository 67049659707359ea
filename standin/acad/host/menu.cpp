// The menu, as the menu reader finds it.

#include <algorithm>
#include <cmath>
#include <locale>
#include <sstream>

#include "state.h"

namespace host {

namespace {

// A line of the menu bar has the form: name = place in the menu}macro|text of the status line. The device's
// keys count the lines with a macro. @x,y is a point in hundredths of the drawing's size, from its middle; @r
// such a length.
constexpr char kMenu[] =
    "[Modes]\n"
    "Start\n"
    "Layout\n"
    "Model\n"
    "\n"
    "[MenuBar]\n"
    "ZoomExtents = View/Zoom}_ZOOM;_EXTENTS|Shows all of the drawing\n"
    "Heading = View\n"
    "Front = View/3D Views}_-VIEW;_FRONT|Looks at the drawing from the front\n"
    "Top = View/3D Views}_-VIEW;_TOP|Looks at the drawing from above\n"
    "Separator = --}\n"
    "Line = Draw}_LINE;@-50,0;@50,0;;|Draws a line along the x axis\n"
    "Circle = Draw}_CIRCLE;@0,0;@25|Draws a circle\n"
    "Triangle = Draw}_LINE;@-30,-25;@30,-25;@0,25;_C\n"
    "FitTab = View/Zoom}_ZOOM;M=$(if,$(=,$(getvar,tilemode),1),_EXTENTS,_ALL)|Fits the tab that is "
    "shown\n"
    "MoveMode = Orvaner}OV_Toggle_Object_Move_Mode|The cap moves what is selected\n"
    "RotationCenter = Orvaner}OV_Toggle_Rotation_Center|The selection is the rotation centre\n"
    "RotationAxis = Orvaner}OV_Toggle_Rotation_Axis|A selected line is the rotation axis\n"
    "Scroll = Orvaner}OV_Toggle_Scroll_Mode|The cap scrolls trees and lists\n";

/// Replaces the marks of kMenu by numbers, so that its entries draw where the drawing is, and in its size.
std::string fitted(const std::string& menu) {
  const AcDbExtents box = extents();
  AcGePoint3d middle(0, 0, 0);
  double size = 100, floor = 0;
  if (!box.isEmpty()) {
    const AcGeVector3d reach = box.maxPoint() - box.minPoint();
    middle = box.minPoint() + reach * 0.5;
    floor = box.minPoint().z;
    const double largest = std::max({reach.x, reach.y, reach.z});
    size = largest > 0 && std::isfinite(largest) ? largest : size;
  }
  const double unit = size / 100;
  const double step = std::pow(10, std::floor(std::log10(unit)));
  const auto rounded = [step](double value) {
    return std::round(value / step) * step + 0.0;
  }; // readable, and no -0
  std::istringstream in(menu);
  std::ostringstream out;
  out.imbue(std::locale::classic());
  out.precision(15);
  for (char c = 0; in.get(c);) {
    double x = 0, y = 0;
    if (c != '@') {
      out << c;
      continue;
    }
    in >> x;
    if (in.peek() != ',') {
      out << rounded(x * unit);
      continue;
    }
    in.ignore() >> y;
    out << rounded(middle.x + x * unit) << ',' << rounded(middle.y + y * unit);
    if (floor != 0)
      out << ',' << rounded(floor);
  }
  return out.str();
}

} // namespace

void setMenuText(const std::string& text) {
  state().menuText = text;
}

std::string menuText() {
  return state().menuText.empty() ? fitted(kMenu) : state().menuText;
}

} // namespace host
