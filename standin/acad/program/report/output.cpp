#include "output.h"

#include "arx_module.h"
#include "report_page.h"
#include "wide_text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <ostream>

namespace program {

namespace {

namespace fs = std::filesystem;

void makeFolder(const fs::path& path) {
  std::error_code failure;
  fs::create_directories(path, failure);
  if (failure || !fs::is_directory(path, failure))
    throw Error("can't make the folder " + path.u8string());
}

void setUserProfile(const fs::path& home) {
#ifdef _WIN32
  const bool isSet = _wputenv_s(L"USERPROFILE", home.wstring().c_str()) == 0;
#else
  const bool isSet = setenv("USERPROFILE", home.c_str(), 1) == 0;
#endif
  if (!isSet)
    throw Error("can't set USERPROFILE");
}

/// Returns a text on one line, with marks for Enter and Escape.
std::string oneLine(const std::wstring& text) {
  std::string out;
  for (const char c : narrowed(text)) {
    if (c == '\x1b')
      out += "<ESC>";
    else if (c == '\n')
      out += "<ENTER>";
    else
      out += c;
  }
  return out;
}

void printView(std::ostream& out, const char* name, const RecordedFrame& frame) {
  const host::ViewState& v = frame.mView;
  // Coordinates to a ten-thousandth of the picture's width, wherever in the world it is.
  const double order = std::floor(std::log10(std::fabs(v.fieldWidth)));
  const int places = std::isfinite(order) ? static_cast<int>(std::clamp(4 - order, 0.0, 12.0)) : 4;
  out << name << std::fixed << std::setprecision(places) << "eye (" << v.position.x << ", " << v.position.y
      << ", " << v.position.z << ")  target (" << v.target.x << ", " << v.target.y << ", " << v.target.z
      << ")  up (" << std::setprecision(3) << v.up.x << ", " << v.up.y << ", " << v.up.z << ")  field "
      << std::setprecision(places) << v.fieldWidth << " x " << v.fieldHeight
      << (v.perspective ? ", perspective" : ", parallel") << std::defaultfloat << '\n';
}

void printTyped(std::ostream& out, const std::vector<host::HistoryLine>& history) {
  constexpr std::size_t kMaxShown = 60;
  std::size_t count = 0;
  for (const host::HistoryLine& line : history) {
    if (line.isTyped && ++count <= kMaxShown)
      out << (count == 1 ? "Typed          " : "               ") << oneLine(line.text) << '\n';
  }
  if (count == 0)
    out << "Typed          nothing\n";
  else if (count > kMaxShown)
    out << "               and " << count - kMaxShown << " more\n";
}

std::string modesHeard(const std::vector<DeviceEvent>& events) {
  std::vector<std::string> names;
  for (const DeviceEvent& event : events) {
    if (event.mKind == DeviceEvent::Kind::mode &&
        std::find(names.begin(), names.end(), event.mText) == names.end())
      names.push_back(event.mText);
  }
  std::string out;
  for (const std::string& name : names)
    out += (out.empty() ? "" : ", ") + name;
  return out.empty() ? "none" : out;
}

} // namespace

Folders Folders::make(const std::string& out, const std::string& home) {
  Folders folders;
  folders.mOut = fs::absolute(fs::u8path(out)).lexically_normal();
  folders.mHome = home.empty() ? folders.mOut / "home" : fs::absolute(fs::u8path(home)).lexically_normal();
  // An existing home stays as it is: what it lacks, the plug-in lacks too.
  const bool isOwnHome = home.empty() || !fs::is_directory(folders.mHome);
  makeFolder(folders.mOut);
  if (isOwnHome)
    makeFolder(folders.mHome / "Orvaner" / "Applications");
  setUserProfile(folders.mHome.make_preferred());
  return folders;
}

fs::path Folders::log() const {
  return mHome / "Orvaner" / "autocad_addin_log.txt";
}

void writeFile(const fs::path& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << text;
  file.close();
  if (!file)
    throw Error("can't write " + path.u8string());
}

void writeOutputs(const Folders& folders, const Recorder& recorder, const SessionInput& input) {
  MovedWriter moved;
  const nlohmann::json data = sessionData(recorder, input, moved);
  writeFile(folders.mOut / "command_line.txt", host::historyText());
  writeFile(folders.mOut / "session.json", jsonText(data) + "\n");
  writeFile(folders.mOut / "report.html", pageWith(data));
  if (!input.mCounted.empty())
    writeFile(folders.mOut / "saved.session", input.mCounted);
}

void printSummary(std::ostream& out, const Folders& folders, const Recorder& recorder,
                  const SessionInput& input) {
  const auto motions = countOf(input.mEvents, DeviceEvent::Kind::motion);
  const auto others = countOf(input.mEvents, DeviceEvent::Kind::event);
  const Outcome& outcome = input.mOutcome;
  out << "\nDevice events  " << motions + others << " (" << motions << " motion, " << others
      << " other); modes heard: " << modesHeard(input.mEvents) << '\n'
      << "Frames         " << recorder.shownFrames() << ", " << std::fixed << std::setprecision(1)
      << recorder.framesPerSecond() << " a second while the cap moved\n"
      << std::setprecision(3) << "Plug-in's part " << shareOf(recorder.plugInTimes(), 0.5) * 1000
      << " ms of a frame (median), p99 below " << shareOf(recorder.plugInTimes(), 0.99) * 1000 << " ms"
      << (outcome.mCheckP ? ", the recording of its calls included\n" : "\n") << std::defaultfloat;
  printTyped(out, input.mHistory);
  printView(out, "First view     ", recorder.frames().front());
  printView(out, "Last view      ", recorder.frames().back());
  if (recorder.drawings().size() > 1)
    out << "Last drawing   " << host::documentName() << '\n';
  const std::string effects = outcome.effects();
  const auto word = [](bool is, const char* yes, const char* no) { return is ? yes : no; };
  if (outcome.mCheckP)
    out << "Model          " << outcome.mCheckP->summary() << '\n';
  if (outcome.isContradicted())
    out << "Contradicted   " << outcome.mCheckP->firstContradiction << '\n';
  out << "Plug-in        " << word(outcome.mIsLoaded, "loaded, ", "NOT loaded, ")
      << word(outcome.mTookEvents, "took events, ", "took NO events, ")
      << (effects.empty() ? "NOTHING came of them" : effects) << ", "
      << word(outcome.mIsUnloaded, "unloaded", "NOT unloaded") << '\n'
      << "Report         " << (folders.mOut / "report.html").u8string() << '\n'
      << std::flush;
}

} // namespace program
