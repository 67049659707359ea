#include "session_settings.h"

#include "arx_module.h"

#include "cnfg.h"
#include "util.h"

#include <fstream>
#include <sstream>

namespace program {

namespace {

/// The plug-in takes a settings file only if nothing is missing in it.
constexpr char kDefaults[] =
    "[PROGRAM]\nname = AutoCAD Plug-in\nversion = 2.9.0\ntransSensBase = 20000\nrotSensBase = 10000\n"
    "minThreshold = 0\nmaxContMoveTime = 500\ntoggleRotationCenter = on\ntoggleRotationAxis = off\n"
    "scrollTreeAndList = on\nuseInt3dIntrfce = off\n\n"
    "[LOGGING]\nlogFile = autocad_addin_log.txt\nmaxSize = 5000\nlogToFile = on\nlogToCnsl = off\nwarning = "
    "off\n"
    "creation = on\ntrace = off\ndevcom = off\nintcom = off\ninfo = on\ndebug = off\ntmp = off\nfileToLog "
    "=\n";

} // namespace

void writeSettings(const session::Session& session) {
  const std::string path = Util::getHomeDir() + "\\Orvaner\\Applications\\autocad_addin.ini";
  Cnfg file;
  for (const session::Action& action : session.actionsOf(session::Who::host)) {
    if (action.mVerb != session::Verb::setting)
      continue;
    if (!std::ifstream(Util::nativePath(path)))
      std::ofstream(Util::nativePath(path)) << kDefaults;
    if (file.mFileName.empty())
      file.open(path);
    std::istringstream words(action.mText);
    std::string name, value;
    words >> name >> value;
    if (file.writeParameter(name, value, "PROGRAM") != Cnfg::kOk)
      throw Error("line " + std::to_string(action.mLine) + ": " + file.errorText());
  }
  if (!file.mFileName.empty() && file.save() != Cnfg::kOk)
    throw Error("can't write " + path);
}

} // namespace program
