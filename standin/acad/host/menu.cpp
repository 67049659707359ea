#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include "state.h"

namespace host {

std::string defaultMenu() {
  // A line of the menu bar reads: name = place in the menu}what is typed|what the status line says. The
  // device's keys count the lines that type something.
  return "[Modes]\n"
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
}

void setMenuText(const std::string& text) {
  state().menuText = text.empty() ? defaultMenu() : text;
}

std::string menuText() {
  return state().menuText;
}

std::string writeMenuFile() {
  const char* const profile = std::getenv("USERPROFILE");
  if (!profile || !*profile)
    return "Menu reader: the environment variable USERPROFILE is not set.";
  const std::filesystem::path path =
      std::filesystem::path(profile) / "Orvaner" / "Applications" / "autocad.mnu";
  std::ofstream out(path, std::ios::binary);
  out << state().menuText;
  out.close();
  if (!out)
    return "Menu reader: cannot write \"" + path.string() + "\".";
  return {};
}

namespace {

constexpr int kMaxDepth = 32;

/// Works out expressions of the form $(name,argument,...), in which arguments may hold such expressions
/// again.
class MenuExpression {
public:
  explicit MenuExpression(const std::string& text) : mText(text) {}

  bool evaluate(std::string& result) { return readPart("", 0, result); }

private:
  /// Copies up to one of the characters in ends, or to the end of the text, and works out what is met on the
  /// way.
  bool readPart(const char* ends, int depth, std::string& result) {
    while (mPlace < mText.size() && (!*ends || !std::strchr(ends, mText[mPlace]))) {
      if (mText.compare(mPlace, 2, "$(") == 0) {
        if (!readCall(depth + 1, result))
          return false;
      } else {
        result += mText[mPlace++];
      }
    }
    return true;
  }

  bool readCall(int depth, std::string& result) {
    if (depth > kMaxDepth)
      return false;
    mPlace += 2;
    std::vector<std::string> parts;
    do {
      parts.emplace_back();
      if (!readPart(",)", depth, parts.back()) || mPlace >= mText.size())
        return false;
    } while (mText[mPlace++] == ',');
    const std::string name = parts[0];
    parts.erase(parts.begin());
    return call(name, parts, result);
  }

  static bool call(const std::string& name, const std::vector<std::string>& arguments, std::string& result) {
    const size_t count = arguments.size();
    if (name == "eval" && count == 1) {
      result += arguments[0];
      return true;
    }
    if (name == "getvar" && count == 1) {
      result += std::to_string(variable(arguments[0]));
      return true;
    }
    if (name == "if" && (count == 2 || count == 3)) {
      if (std::atof(arguments[0].c_str()) != 0)
        result += arguments[1];
      else if (count == 3)
        result += arguments[2];
      return true;
    }
    return count == 2 &&
           calculate(name, std::atof(arguments[0].c_str()), std::atof(arguments[1].c_str()), result);
  }

  static bool calculate(const std::string& name, double a, double b, std::string& result) {
    double value = 0;
    if (name == "+")
      value = a + b;
    else if (name == "-")
      value = a - b;
    else if (name == "*")
      value = a * b;
    else if (name == "=")
      value = a == b;
    else if (name == "!=")
      value = a != b;
    else if (name == "<")
      value = a < b;
    else if (name == ">")
      value = a > b;
    else
      return false;
    result += number(value);
    return true;
  }

  const std::string mText;
  size_t mPlace = 0;
};

} // namespace

bool evaluateMenuExpression(const std::wstring& text, std::wstring& result) {
  const std::string narrowText = narrow(text);
  if (narrowText.compare(0, 2, "M=") != 0) // other letters name places in menus, of which there are none here
    return false;
  std::string value;
  if (!MenuExpression(narrowText.substr(2)).evaluate(value))
    return false;
  result = widen(value);
  return true;
}

} // namespace host
