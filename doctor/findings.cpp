#include "findings.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include <windows.h>

#include "keys/menu_lines.h"
#include "parameter.h"

namespace doctor {

namespace {

struct Kind {
  const char* mCode;
  const char* mNext; // what to do
};

constexpr char kSet[] = "Unload the plug-in, and set the key to its default.";
constexpr std::size_t kCantLook = 2; // the first ones

/// All findings, the likeliest cause of "nothing moves" first.
constexpr Kind kKinds[] = {
    {"unreadable", "Give yourself the right to read it; the plug-in needs it too."},
    {"no home", "Run this as the user who runs the host."},
    {"folder missing", "Start the device's driver, which makes it, and load the plug-in again."},
    {"library missing", "Put the one that came with the plug-in beside it; --module says where that is."},
    {"daemon absent", "Start the device's driver. If it uses another port, set OV_DEVLINK_PORT."},
    {"daemon differs", "Restart the driver. Install it and the device library in the same version."},
    {"device absent", "Look at the device's cable and driver."},
    {"module missing", "Put it back from the package; --module says where it is."},
    {"time odd", kSet},
    {"other plug-in", kSet},
    {"threshold odd", kSet},
    {"key missing", "Unload the plug-in, and complete the file, or run ov_doctor defaults."},
    {"reader missing", "Put it beside the plug-in."},
    {"menu missing", "Load the plug-in, and wait until the menu reader has written it."},
    {"modes missing", "Name start, layout and 3D in the section Modes of the host's menu, a line each."},
    {"menu cut short", "Remove that line from the host's menu."},
    {"never loaded", "Load it in the host. logFile is a name, or a whole path with backslashes."},
    {"error in log", nullptr},
    {"divisor odd", kSet},
};

std::size_t indexOf(const Json& finding) {
  std::size_t i = 0;
  while (finding["code"] != kKinds[i].mCode)
    ++i;
  return i;
}

/// Returns the values side by side.
std::string lineOf(const Json& node) {
  if (!node.is_object())
    return node.is_string() ? node.get<std::string>() : node.dump();
  std::string line;
  for (const Json& value : node)
    line += padded(lineOf(value), 22) + ' ';
  return line;
}

/// Writes names and values, one a line; of a list, one element a line.
void print(std::ostream& os, const Json& node, const std::string& indent) {
  for (const auto& [name, value] : node.items()) {
    os << indent << padded(name, 16) << (value.is_structured() ? "" : lineOf(value)) << '\n';
    if (value.is_object())
      print(os, value, indent + "  ");
    else if (value.is_array())
      for (const Json& row : value)
        os << indent << "  " << lineOf(row) << '\n';
  }
}

} // namespace

// The folders and names are those of Settings, whose constructor and destructor write the file.
Report::Report(const std::string& module)
    : mHome(Util::getHomeDir()), mFolder(mHome + "\\Orvaner"),
      mSettingsFile(mFolder + "\\Applications\\autocad_addin.ini"),
      mMenuFile(mFolder + "\\Applications\\" + kMenuFileName) {
  wchar_t own[260] = {}; // the system's own limit of a path
  GetModuleFileNameW(nullptr, own, 259);
  std::string file = module.empty() ? Util::toNarrow(own) : module;
  std::replace(file.begin(), file.end(), '/', '\\');
  mModuleFolder = file.substr(0, file.rfind('\\') + 1);
  mModule = module.empty() ? mModuleFolder + "OVAutoCAD2019.arx" : file;
}

std::optional<std::string> Report::read(const std::string& path) {
  if (Util::fileExists(path)) {
    std::ifstream file(Util::nativePath(path), std::ios::binary);
    return std::string{std::istreambuf_iterator<char>(file), {}};
  }
  if (GetFileAttributesA(Util::nativePath(path).c_str()) != INVALID_FILE_ATTRIBUTES)
    find("unreadable", "'" + path + "' is there and can't be read.");
  return {};
}

void Report::find(const std::string& code, const std::string& cause, const char* next) {
  Json finding = {{"code", code}, {"cause", cause}};
  finding["next"] = next ? next : kKinds[indexOf(finding)].mNext;
  mFindings.push_back(finding);
}

void checkHome(Report& report) {
  const std::string folder = report.mFolder + "\\Applications";
  report.mData = {{"home", folder}, {"plug-in", report.mModule}};
  if (!Util::fileExists(report.mModule))
    report.find("module missing", "'" + report.mModule + "' is missing.");
  if (report.mHome.empty())
    report.find("no home", "The environment variable USERPROFILE isn't set.");
  else if (!Util::folderExists(folder))
    report.find("folder missing", "Folder '" + folder + "' is missing.");
}

int Report::examine() {
  for (const auto check : {checkHome, checkDevice, checkSettings, checkMenu, checkLog})
    check(*this);
  const auto isBefore = [](const Json& a, const Json& b) { return indexOf(a) < indexOf(b); };
  std::stable_sort(mFindings.begin(), mFindings.end(), isBefore);
  const Json allWell = {{"code", "all well"},
                        {"cause", "All well."},
                        {"next", "Load the plug-in. ov_doctor watch shows what the cap does."}};
  mData["findings"] = mFindings;
  mData["verdict"] = mFindings.empty() ? allWell : mFindings[0];
  return mFindings.empty() ? 0 : indexOf(mFindings[0]) < kCantLook ? 2 : 1;
}

std::string Report::text() const {
  std::ostringstream os;
  print(os, mData, "");
  return os.str();
}

} // namespace doctor
