// The start of the menu reader, a plug-in of its own beside ours, which the host is asked to load.

#include "auto_cad_proxy.h"

#include <algorithm>

#include "logging.h"
#include "ov_auto_cad.h"
#include "util.h"

namespace {

constexpr char kMenuReaderName[] = "\\OvScribe2018.dll";
constexpr DWORD kPathSize = 260; // characters, the system's own limit of a path

/// Path of the plug-in's own file.
std::string modulePath() {
  wchar_t path[kPathSize] = {};
  GetModuleFileNameW(gModuleInstance, path, kPathSize);
  path[kPathSize - 1] = 0;
  return Util::toNarrow(path);
}

} // namespace

void AutoCadProxy::StartDotNETPlugin() {
  try {
    const std::string& folder = mOvAutoCadP->mApplicationsDirPath;
    if (!Util::folderExists(folder)) {
      Util::showMessage(
          nullptr,
          "Folder '" + folder +
              "' not found!\n\nStart the driver first and try again to read out AutoCAD's menu items.",
          "Orvane Plug-in Error", MB_OK);
      return;
    }
    OV_LOG(TRC, "AutoCadProxy", "AutoCadProxy::StartDotNETPlugin", "Start .NET Plugin...");
    AcApDocManager* const managerP = acDocManagerPtr();
    if (!managerP)
      return;
    const std::string charPath = modulePath();
    OV_LOG(TRC, "AutoCadProxy", "AutoCadProxy::StartDotNETPlugin", "charPath: '" << charPath << "'");
    const std::size_t backslash = charPath.rfind('\\');
    if (backslash == std::string::npos) {
      OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::StartDotNETPlugin", "Error: Invalid path " << charPath);
      return;
    }
    std::string dllPath = charPath.substr(0, backslash) + kMenuReaderName;
    OV_LOG(TRC, "AutoCadProxy", "AutoCadProxy::StartDotNETPlugin", "dllPath: '" << dllPath << "'");
    if (!Util::fileExists(dllPath)) {
      OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::StartDotNETPlugin",
             "Error: OvScribe does not exist " << dllPath);
      return;
    }
    std::replace(dllPath.begin(), dllPath.end(), '\\',
                 '/'); // a backslash would need doubling in the expression
    AcApDocument* const documentP = managerP->curDocument();
    const std::string command = "(command \"netload\" \"" + dllPath + "\")\n";
    const int ec = managerP->sendStringToExecute(documentP, Util::toWide(command).c_str(), true, false, true);
    OV_LOG(TRC, "AutoCadProxy", "AutoCadProxy::StartDotNETPlugin",
           "totalCmd: '" << command << "', ec: " << ec);
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::StartDotNETPlugin", "Error StartDotNETPlugin()");
  }
}
