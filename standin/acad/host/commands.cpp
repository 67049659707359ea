#include "commands.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <locale>
#include <sstream>

#include "command_line.h"
#include "frames.h"
#include "named_views.h"
#include "text.h"

namespace host {

namespace {

constexpr double kMaxCoordinate = 1e15; // beyond this doubles hold no useful fraction

bool readNumber(const std::string& text, double& value) {
  std::istringstream in(text);
  in.imbue(std::locale::classic());
  return (in >> value) && in.peek() == std::istringstream::traits_type::eof() &&
         std::fabs(value) <= kMaxCoordinate;
}

/// Reads "x,y" or "x,y,z".
bool readPoint(const std::wstring& text, AcGePoint3d& point) {
  double values[3] = {0, 0, 0};
  int count = 0;
  std::istringstream parts(narrow(text));
  for (std::string part; std::getline(parts, part, ','); ++count)
    if (count == 3 || !readNumber(part, values[count]))
      return false;
  if (count < 2)
    return false;
  point.set(values[0], values[1], values[2]);
  return true;
}

/// Returns an option in lower case, without the mark of the common language.
std::wstring option(const std::wstring& input) {
  return lowered(input.substr(std::min(input.size(), input.find_first_not_of(L'_'))));
}

RunningCommand line() {
  return [count = 0, first = AcGePoint3d(), last = AcGePoint3d()](const std::wstring& input) mutable {
    if (input.empty())
      return false;
    if (option(input) == L"c" && count > 2) {
      add(std::make_unique<AcDbLine>(last, first));
      return false;
    }
    AcGePoint3d point;
    if (!readPoint(input, point)) {
      print(L"Invalid point.\n");
      return true;
    }
    if (count++ == 0)
      first = point;
    else
      add(std::make_unique<AcDbLine>(last, point));
    last = point;
    return true;
  };
}

RunningCommand circle() {
  return [hasCentre = false, centre = AcGePoint3d()](const std::wstring& input) mutable {
    if (input.empty())
      return false;
    double radius = 0;
    if (!hasCentre) {
      hasCentre = readPoint(input, centre);
      if (!hasCentre)
        print(L"Invalid point.\n");
      return true;
    }
    if (!readNumber(narrow(input), radius) || radius <= 0) {
      print(L"Value must be positive and nonzero.\n");
      return true;
    }
    add(std::make_unique<AcDbCircle>(centre, AcGeVector3d::kZAxis, radius));
    return false;
  };
}

RunningCommand changeView() {
  // save or restore, whose name comes next
  return [chosen = std::wstring()](const std::wstring& input) mutable {
    if (input.empty())
      return false;
    const std::wstring word = option(input);
    if (chosen.empty() && (word == L"save" || word == L"s" || word == L"restore" || word == L"r")) {
      chosen = word;
      return true;
    }
    if (!chosen.empty() && chosen[0] == L's')
      saveView(word);
    else if (chosen.empty() ? showNamedView(word) : restoreView(word))
      showFrame(isLayout());
    else
      print(L"Invalid view \"" + input + L"\".\n");
    return false;
  };
}

/// Looks straight down on all of the drawing. The coordinate system that it asks for makes no difference here.
bool plan(const std::wstring&) {
  showNamedView(L"top");
  zoomExtents();
  showFrame(isLayout());
  return false;
}

bool zoom(const std::wstring& input) {
  if (input.empty())
    return false;
  const std::wstring what = option(input);
  if (what == L"previous" || what == L"p") {
    if (showPreviousView())
      showFrame(isLayout());
    else
      print(L"No previous view saved.\n");
    return false;
  }
  if (what != L"all" && what != L"a" && what != L"extents" && what != L"e") {
    print(L"Invalid option \"" + input + L"\".\n");
    return false;
  }
  if (isLayout())
    fitLayout();
  else
    zoomExtents();
  showFrame(isLayout());
  return false;
}

/// Writes the menu file, as the menu reader does. Returns an error text, empty on success.
std::string writeMenuFile() {
  const char* const profileP = std::getenv("USERPROFILE");
  if (!profileP || !*profileP)
    return "Menu reader: the environment variable USERPROFILE is not set.";
  const std::filesystem::path path =
      std::filesystem::path(profileP) / "Orvaner" / "Applications" / "autocad.mnu";
  std::ofstream out(path, std::ios::binary);
  out << menuText();
  out.close();
  if (!out)
    return "Menu reader: cannot write \"" + path.string() + "\".";
  return {};
}

/// Loads the menu reader, the only .NET library that the host knows, by doing its work.
bool netload(const std::wstring& input) {
  const std::wstring file = input.substr(input.find_last_of(L"/\\") + 1); // all of it if there is no slash
  std::string error;
  if (lowered(file) != L"ovscribe2018.dll" || !std::ifstream(narrow(input), std::ios::binary))
    error = "Cannot load assembly \"" + narrow(input) + "\".";
  else
    error = writeMenuFile();
  if (!error.empty())
    print(widen(error) + L"\n");
  return false;
}

} // namespace

bool runCommand(const std::wstring& name) {
  if (name != L"u")
    return false;
  if (undo())
    showFrame(isLayout());
  else
    print(L"Everything has been undone.\n");
  return true;
}

RunningCommand makeCommand(const std::wstring& name) {
  if (name == L"line")
    return line();
  if (name == L"circle")
    return circle();
  if (name == L"-view" || name == L"view")
    return changeView();
  if (name == L"plan")
    return plan;
  if (name == L"zoom")
    return zoom;
  if (name == L"netload")
    return netload;
  return nullptr;
}

} // namespace host
