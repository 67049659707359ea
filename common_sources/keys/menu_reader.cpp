// The start of the menu reader, a plug-in of its own beside ours, which the host is asked to load.

#include "auto_cad_proxy.h"

#include <algorithm>

#include "logging.h"
#include "ov_auto_cad.h"
#include "util.h"

namespace {

constexpr wchar_t kMenuReaderName[] = L"\\OvScribe2018.dll";
constexpr DWORD kPathSize = 260; // characters, the system's own limit of a path

/// Returns the path of a module's file.
std::wstring pathOf(HINSTANCE module) {
  wchar_t path[kPathSize] = {};
  GetModuleFileNameW(module, path, kPathSize);
  path[kPathSize - 1] = 0;
  return path;
}

/// Returns the path of the menu reader beside the plug-in. If it isn't there, logs why and returns an empty
/// path.
std::wstring findMenuReader() {
  const std::wstring path = pathOf(AutoCadProxy::mPlugInLibrary);
  const std::string charPath = Util::toNarrow(path.c_str());
  OV_LOG(TRC, "AutoCadProxy", "AutoCadProxy::StartDotNETPlugin", "charPath: '" << charPath << "'");
  // The path is cut as wide text: in narrow text, the second byte of a character may look like a backslash.
  const std::size_t backslash = path.rfind(L'\\');
  if (charPath.empty() || backslash == std::wstring::npos) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::StartDotNETPlugin", "Error: Invalid path " << charPath);
    return {};
  }
  std::wstring readerPath = path.substr(0, backslash) + kMenuReaderName;
  const std::string dllPath = Util::toNarrow(readerPath.c_str());
  OV_LOG(TRC, "AutoCadProxy", "AutoCadProxy::StartDotNETPlugin", "dllPath: '" << dllPath << "'");
  if (!Util::fileExists(dllPath)) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::StartDotNETPlugin",
           "Error: OvScribe does not exist " << dllPath);
    return {};
  }
  return readerPath;
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
    std::wstring readerPath = findMenuReader();
    if (readerPath.empty())
      return;
    // A backslash would need doubling in the expression.
    std::replace(readerPath.begin(), readerPath.end(), L'\\', L'/');
    const std::string loggedCommand =
        "(command \"netload\" \"" + Util::toNarrow(readerPath.c_str()) + "\")\n";
    AcApDocument* const documentP = managerP->curDocument();
    const int ec = managerP->sendStringToExecute(
        documentP, (L"(command \"netload\" \"" + readerPath + L"\")\n").c_str(), true, false, true);
    OV_LOG(TRC, "AutoCadProxy", "AutoCadProxy::StartDotNETPlugin",
           "totalCmd: '" << loggedCommand << "', ec: " << ec);
  } catch (...) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::StartDotNETPlugin", "Error StartDotNETPlugin()");
  }
}
