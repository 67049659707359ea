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
constexpr double kMargin = 1.05;

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

class Line : public RunningCommand {
public:
  Progress take(const std::wstring& input) override {
    if (input.empty())
      return kIsOver;
    if (option(input) == L"c" && mCount > 2) {
      add(std::make_unique<AcDbLine>(mLast, mFirst));
      return kIsOver;
    }
    AcGePoint3d point;
    if (!readPoint(input, point)) {
      print(L"Invalid point.\n");
      return kGoesOn;
    }
    if (mCount++ == 0)
      mFirst = point;
    else
      add(std::make_unique<AcDbLine>(mLast, point));
    mLast = point;
    return kGoesOn;
  }

private:
  int mCount = 0;
  AcGePoint3d mFirst;
  AcGePoint3d mLast;
};

class Circle : public RunningCommand {
public:
  Progress take(const std::wstring& input) override {
    if (input.empty())
      return kIsOver;
    double radius = 0;
    if (!mHasCentre) {
      mHasCentre = readPoint(input, mCentre);
      if (!mHasCentre)
        print(L"Invalid point.\n");
      return kGoesOn;
    }
    if (!readNumber(narrow(input), radius) || radius <= 0) {
      print(L"Value must be positive and nonzero.\n");
      return kGoesOn;
    }
    add(std::make_unique<AcDbCircle>(mCentre, AcGeVector3d::kZAxis, radius));
    return kIsOver;
  }

private:
  bool mHasCentre = false;
  AcGePoint3d mCentre;
};

class View : public RunningCommand {
public:
  Progress take(const std::wstring& input) override {
    if (input.empty())
      return kIsOver;
    const std::wstring word = option(input);
    if (mOption.empty() && (word == L"save" || word == L"s" || word == L"restore" || word == L"r")) {
      mOption = word;
      return kGoesOn;
    }
    if (!mOption.empty() && mOption[0] == L's')
      saveView(word);
    else if (mOption.empty() ? showNamedView(word) : restoreView(word))
      showFrame(isLayout());
    else
      print(L"Invalid view \"" + input + L"\".\n");
    return kIsOver;
  }

private:
  std::wstring mOption; // save or restore, whose name comes next
};

/// Looks straight down on all of the drawing. The coordinate system that it asks for makes no difference here.
class Plan : public RunningCommand {
public:
  Progress take(const std::wstring&) override {
    showNamedView(L"top");
    zoomExtents();
    showFrame(isLayout());
    return kIsOver;
  }
};

class Undo : public RunningCommand {
public:
  Progress begin() override {
    if (undo())
      showFrame(isLayout());
    else
      print(L"Everything has been undone.\n");
    return kIsOver;
  }
  Progress take(const std::wstring&) override { return kIsOver; }
};

/// Fits all of model space into the layout's viewport.
void fitLayout() {
  const AcDbExtents box = extents();
  if (box.isEmpty())
    return;
  const AcGeVector3d size = box.maxPoint() - box.minPoint();
  LayoutState shown = layout();
  const double height = kMargin * std::max(size.y, size.x * shown.height / shown.width);
  if (height > 0 && std::isfinite(height))
    shown.viewHeight = height;
  shown.centre = {box.minPoint().x + size.x / 2, box.minPoint().y + size.y / 2};
  setLayoutState(shown);
}

class Zoom : public RunningCommand {
public:
  Progress take(const std::wstring& input) override {
    if (input.empty())
      return kIsOver;
    const std::wstring what = option(input);
    if (what == L"previous" || what == L"p") {
      if (showPreviousView())
        showFrame(isLayout());
      else
        print(L"No previous view saved.\n");
      return kIsOver;
    }
    if (what != L"all" && what != L"a" && what != L"extents" && what != L"e") {
      print(L"Invalid option \"" + input + L"\".\n");
      return kIsOver;
    }
    if (isLayout())
      fitLayout();
    else
      zoomExtents();
    showFrame(isLayout());
    return kIsOver;
  }
};

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
class Netload : public RunningCommand {
public:
  Progress take(const std::wstring& input) override {
    const std::wstring file = input.substr(input.find_last_of(L"/\\") + 1); // all of it if there is no slash
    std::string error;
    if (lowered(file) != L"ovscribe2018.dll" || !std::ifstream(narrow(input), std::ios::binary))
      error = "Cannot load assembly \"" + narrow(input) + "\".";
    else
      error = writeMenuFile();
    if (!error.empty())
      print(widen(error) + L"\n");
    return kIsOver;
  }
};

} // namespace

std::unique_ptr<RunningCommand> makeCommand(const std::wstring& name) {
  if (name == L"line")
    return std::make_unique<Line>();
  if (name == L"circle")
    return std::make_unique<Circle>();
  if (name == L"-view" || name == L"view")
    return std::make_unique<View>();
  if (name == L"plan")
    return std::make_unique<Plan>();
  if (name == L"u")
    return std::make_unique<Undo>();
  if (name == L"zoom")
    return std::make_unique<Zoom>();
  if (name == L"netload")
    return std::make_unique<Netload>();
  return nullptr;
}

} // namespace host
