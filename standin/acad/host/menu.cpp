// The menu, as the menu reader finds it.

#include "state.h"

namespace host {

namespace {

// A line of the menu bar has the form: name = place in the menu}macro|text of the status line. The device's
// keys count the lines with a macro.
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
    "Line = Draw}_LINE;0,0;100,0;;|Draws a line along the x axis\n"
    "Circle = Draw}_CIRCLE;50,50;25|Draws a circle\n"
    "Triangle = Draw}_LINE;0,0;60,0;30,50;_C\n"
    "FitTab = View/Zoom}_ZOOM;M=$(if,$(=,$(getvar,tilemode),1),_EXTENTS,_ALL)|Fits the tab that is "
    "shown\n"
    "MoveMode = Orvaner}OV_Toggle_Object_Move_Mode|The cap moves what is selected\n"
    "RotationCenter = Orvaner}OV_Toggle_Rotation_Center|The selection is the rotation centre\n"
    "RotationAxis = Orvaner}OV_Toggle_Rotation_Axis|A selected line is the rotation axis\n"
    "Scroll = Orvaner}OV_Toggle_Scroll_Mode|The cap scrolls trees and lists\n";

} // namespace

void setMenuText(const std::string& text) {
  state().menuText = text;
}

std::string menuText() {
  return state().menuText.empty() ? kMenu : state().menuText;
}

} // namespace host
