// Device library, daemon and devices.

#include <boost/asio.hpp> // before <windows.h>, which it wants to include by itself

#include <cstring>
#include <iostream>

#include <ov_devlink.h>
#include <windows.h>

#include "event_codes.h"
#include "findings.h"
#include "keys/special_functions.h"
#include "motion/rotation_mode.h"
#include "protocol.h"
#include "util.h"

namespace doctor {

namespace {

/// The device library, as the plug-in gets it: from the module's folder, or else from where the system looks.
/// It stays loaded until the program's end.
struct DeviceLibrary {
  explicit DeviceLibrary(const Report& report) {
    for (const std::string& path : {report.mModuleFolder + OV_DEVICE_LIBRARY, std::string(OV_DEVICE_LIBRARY)})
      if (!module)
        module = LoadLibraryW(Util::toWideByCodePage(Util::nativePath(path)).c_str());
    isWhole = module && take(connect, 104, "ovConnect") && take(disconnect, 106, "ovDisconnect") &&
              take(fetchEvent, 108, "ovFetchEvent") && take(getSettings, 110, "ovGetAdvancedSettings") &&
              take(getInfo, 116, "ovGetDevInfo") && take(getCount, 117, "ovGetDevNum") &&
              take(setMode, 180, "ovSetApplMode");
  }
  template <class Function>
  bool take(Function& function, [[maybe_unused]] UINT_PTR ordinal, [[maybe_unused]] const char* name) {
#ifdef _WIN32 // the library has ordinals only there
    name = reinterpret_cast<const char*>(ordinal);
#endif
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    return function;
  }

  HMODULE module = nullptr;
  bool isWhole = false;
  decltype(&ovConnect) connect = nullptr;
  decltype(&ovDisconnect) disconnect = nullptr;
  decltype(&ovFetchEvent) fetchEvent = nullptr;
  decltype(&ovGetAdvancedSettings) getSettings = nullptr;
  decltype(&ovGetDevInfo) getInfo = nullptr;
  decltype(&ovGetDevNum) getCount = nullptr;
  decltype(&ovSetApplMode) setMode = nullptr; // not called: the plug-in alone announces modes
};

/// Lists devices and rotation settings over an open link, then closes the link.
void listDevices(Report& report, const DeviceLibrary& library, Json& data) {
  constexpr const char* kWords[] = {"scene about the point looked at", "scene about the drawing's origin",
                                    "camera about the eye", "camera about the point looked at"};
  int count = 0, unused = 0;
  library.getCount(&count, &unused, &unused);
  for (int i = 0; i < count; ++i) {
    char record[devlink::kInfoBytes + 1] = {};
    library.getInfo(i, record);
    data["devices"].push_back(record + devlink::kInfoNameOffset);
  }
  if (count == 0)
    report.find("device absent", "The daemon is there, and has no device.");
  char record[devlink::kSettingsBytes] = {};
  std::int32_t code = 0;
  library.getSettings(0, record);
  std::memcpy(&code, record + devlink::kSettingsRotationOffset, sizeof code);
  const motion::RotationMode mode = motion::rotationMode(code);
  data["rotation"] = std::to_string(code) + ": " + kWords[mode.rotMode] +
                     (mode.keepHorizon ? ", level horizon" : "") + (mode.hoverMode ? ", hovering" : "");
  data["zoom after view"] = record[devlink::kSettingsZoomOffset] != 0;
  library.disconnect();
}

/// Returns a name and a bar, as in "X[    |##  ]". A deflection, however small, shows.
std::string barOf(char name, int value, int largest) {
  const int length = (std::abs(value) * 4 + largest - 1) / largest;
  std::string bar = "[    |    ] ";
  std::fill_n(bar.begin() + (value > 0 ? 6 : 5 - length), length, '#');
  return name + bar;
}

std::string nameOf(int code, const std::vector<std::string>& keyNames) {
  const auto key = static_cast<std::size_t>(code - APPL_FUNC_START);
  if (code >= APPL_FUNC_START)
    return "key " + std::to_string(key) + ": " + (key < keyNames.size() ? keyNames[key] : "not in the menu");
  const SpecialFunction* const functionP = findSpecialFunction(code);
  const std::wstring text = functionP ? functionP->text : L""; // ASCII
  return functionP ? "view key: " + std::string(text.begin(), text.end()) : "event " + std::to_string(code);
}

} // namespace

void checkDevice(Report& report) {
  const char* const variableP = std::getenv(devlink::kPortVariable);
  const std::uint16_t port = variableP && *variableP ? devlink::portFrom(variableP) : devlink::kDefaultPort;
  const DeviceLibrary library(report);
  const bool answers = library.isWhole && library.connect(0, "ov_doctor") == 0;
  Json& data = report.mData["device"] = {{"port", port}, {"daemon answers", answers}};
  if (!library.isWhole)
    return report.find("library missing", std::string(OV_DEVICE_LIBRARY) +
                                              (library.module ? " lacks functions" : " is missing") +
                                              ": the plug-in can't be loaded.");
  if (answers)
    return listDevices(report, library, data);
  boost::asio::io_context io;
  boost::system::error_code failure;
  boost::asio::ip::tcp::socket(io).connect({boost::asio::ip::address_v4::loopback(), port}, failure);
  if (failure)
    report.find("daemon absent", "No daemon: nobody listens on port " + std::to_string(port) + ".");
  else
    report.find("daemon differs",
                "The daemon on port " + std::to_string(port) + " hangs, or is of another version.");
}

void watch(Report& report) {
  checkMenu(report); // for the names of the keys
  const DeviceLibrary library(report);
  if (!library.isWhole)
    throw std::runtime_error("there is no device library; run ov_doctor without watch");
  int largest = 100; // device counts that fill a bar; grows with what comes
  for (;;) {         // Ctrl-C ends the program; the daemon sees the link go
    const bool isConnected = library.connect(0, "ov_doctor") == 0;
    std::cout << (isConnected ? "connected; Ctrl-C ends" : "no daemon; looking again") << std::endl;
    short axes[6] = {};
    int code = 0, unused = 0;
    while (isConnected && library.fetchEvent(0, axes, axes + 1, axes + 2, axes + 3, axes + 4, axes + 5,
                                             &unused, &unused, &code, &unused, &unused) == 0) {
      std::string line; // the bars stay in the last line, keys go above it
      if (code >= 0 && code != kAnnounceModeEvent)
        line = nameOf(code, report.mKeyNames) + std::string(40, ' ') + '\n';
      for (std::size_t i = 0; i < 6; ++i) {
        largest = std::max(largest, std::abs(static_cast<int>(axes[i])));
        line += barOf("XYZABC"[i], axes[i], largest);
      }
      std::cout << '\r' << line << std::flush;
    }
    std::cout << std::endl;
    library.disconnect();
    Util::sleep(2000); // as the plug-in does
  }
}

} // namespace doctor
