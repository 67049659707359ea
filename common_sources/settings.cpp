#include "settings.h"

#include <fstream>
#include <locale>
#include <sstream>

#include "cnfg.h"
#include "logging.h"
#include "parameter_text.h"
#include "util.h"

namespace {

constexpr char kProgramSection[] = "PROGRAM";
constexpr int kValueWidth = 50; // columns that a value takes in the file

} // namespace

Settings::Settings()
    : mFolderName("Orvaner"), mFileName("autocad_addin.ini"), mApplicationsName("Applications"),
      mHomeDir(Util::getHomeDir()), mTraSensBase(0), mRotSensBase(0), mMinThreshold(0), mMaxContMoveTime(0),
      mToggleRotationCenter(false), mToggleRotationAxis(false), mScrollTreeAndList(false),
      mUseInt3dIntrfce(false) {
  const std::string settingsDirPath = mHomeDir + "\\" + mFolderName;
  const std::string applicationsDirPath = settingsDirPath + "\\" + mApplicationsName;
  OV_LOG(CRT, "Settings", "Settings::Settings", "Constructing ...");

  mLogPars.mSettingsDirPath = settingsDirPath;
  gLogging.mSettingsDirPath = settingsDirPath;
  mApplicationsDirPath = applicationsDirPath;
  mSettingsFilePath = applicationsDirPath + "\\" + mFileName;

  if (readSettingsFile(mSettingsFilePath) < 0) {
    OV_LOG(INF, "Settings", "Settings::Settings", "Settings file not found - using default values ...");
    setDefaults();
    writeSettingsFile(mSettingsFilePath);
  }
  OV_LOG(INF, "Settings", "Settings::Settings", '\n' << dump());
  OV_LOG(CRT, "Settings", "Settings::Settings", "Constructed.");
}

Settings::~Settings() {
  try {
    writeSettingsFile(mSettingsFilePath);
  } catch (...) {
    // Out of memory while the text is made: the old file stays as it is.
  }
  OV_LOG(CRT, "Settings", "Settings::~Settings", "Destructed.");
}

void Settings::setDefaults() {
  mName = "AutoCAD Plug-in";
  mVersion = "2.9.0";
  mTraSensBase = kDefaultTraSensBase;
  mRotSensBase = kDefaultRotSensBase;
  mMinThreshold = 0;
  mMaxContMoveTime = 500;
  mToggleRotationCenter = true;
  mToggleRotationAxis = false;
  mScrollTreeAndList = true;
  mUseInt3dIntrfce = false;
  mLogPars = LogPars();
}

int Settings::readParameter(Cnfg& cnfg, const std::string& key, std::string& value,
                            const std::string& section) {
  const int code = cnfg.readParameter(key, value, section, true);
  if (code != Cnfg::kOk)
    OV_LOG(ERR, "Settings", "Settings::readParameter", cnfg.errorText());
  return code;
}

int Settings::readNextParameter(Cnfg& cnfg, std::string& key, std::string& value) {
  const int code = cnfg.readNextParameter(key, value, true);
  if (code != Cnfg::kOk)
    OV_LOG(ERR, "Settings", "Settings::readNextParameter", cnfg.errorText());
  return code;
}

int Settings::readSettingsFile(const std::string& path) {
  int status = Cnfg::kOk;
  Cnfg cnfg(path, status);
  if (status != Cnfg::kOk)
    return -1;
  int sum = 0;
  std::string value;
  const auto fetch = [&](const char* key) -> const std::string& {
    sum += readParameter(cnfg, key, value, kProgramSection);
    return value;
  };
  mName = fetch("name");
  mVersion = fetch("version");
  mTraSensBase = toNumber(fetch("transSensBase"));
  mRotSensBase = toNumber(fetch("rotSensBase"));
  mMinThreshold = toNumber(fetch("minThreshold"));
  mMaxContMoveTime = toNumber(fetch("maxContMoveTime"));
  mToggleRotationCenter = Util::isOn(fetch("toggleRotationCenter"));
  mToggleRotationAxis = Util::isOn(fetch("toggleRotationAxis"));
  mScrollTreeAndList = Util::isOn(fetch("scrollTreeAndList"));
  mUseInt3dIntrfce = Util::isOn(fetch("useInt3dIntrfce"));
  sum += mLogPars.read(cnfg);
  if (sum != 0) {
    OV_LOG(ERR, "Settings", "Settings::readSettingsFile", "Error reading settings file!");
    return -2;
  }
  return 0;
}

std::string Settings::fileText() const {
  std::ostringstream os;
  os.exceptions(std::ios::badbit); // without memory no text, rather than a part of it
  const auto line = [&](const char* key, const std::string& value, const char* comment) {
    writeParameterLine(os, key, value, kValueWidth, comment);
  };
  os << "# Configuration file for Orvaner's AutoCAD plug-in\n\n[" << kProgramSection << "]\n";
  line("name", mName, "# program's name");
  line("version", mVersion, "# program's version number");
  line("transSensBase", std::to_string(mTraSensBase), "# base sensitivity divisor for translation");
  line("rotSensBase", std::to_string(mRotSensBase), "# base sensitivity divisor for rotation");
  line("minThreshold", std::to_string(mMinThreshold),
       "# minimal threshold (overrides setting in control panel)");
  line("maxContMoveTime", std::to_string(mMaxContMoveTime),
       "# maximal time for continuous cap movement in milliseconds");
  line("toggleRotationCenter", Util::onOffText(mToggleRotationCenter),
       "# if true a selected object will define the rotation center");
  line("toggleRotationAxis", Util::onOffText(mToggleRotationAxis),
       "# if true a selected line will define the rotation axis");
  line("scrollTreeAndList", Util::onOffText(mScrollTreeAndList),
       "# scroll trees and lists within Catia if the mouse is above (on/off)");
  line("useInt3dIntrfce", Util::onOffText(mUseInt3dIntrfce),
       "# if true no rotations/translations are done by this plugin; the Omnibus Plug-in must be used "
       "instead.");
  os << '\n';
  mLogPars.write(os, kValueWidth);
  return os.str();
}

int Settings::writeSettingsFile(const std::string& path) {
  // The text is made before the file is opened, and goes out in one unbuffered write: if the host dies in
  // between, the file is lost, so the time in between is as short as it can be.
  const std::string text = fileText();
  OV_LOG(TRC, "Settings", "Settings::writeSettingsFile", "Writing new default settings file ...");
  char room[1]; // given, so that the opening, which empties the file, needs no memory
  std::ofstream file;
  file.rdbuf()->pubsetbuf(room, sizeof room);
  file.open(Util::nativePath(path), std::ios::out | std::ios::trunc | std::ios::binary);
  if (file.is_open())
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
  file.close();
  if (!file) {
    OV_LOG(ERR, "Settings", "Settings::writeSettingsFile",
           "Writing default settings file '" << mFileName << "' failed!");
    return -1;
  }
  OV_LOG(TRC, "Settings", "Settings::writeSettingsFile", "Default settings file written.");
  return 0;
}

std::string Settings::dump() const {
  std::ostringstream os;
  os.imbue(std::locale::classic()); // no grouping dots in numbers, whatever the host has set
  os << "(AutoCAD Plug-in) mName: " << mName << '\n'
     << "               mVersion: " << mVersion << '\n'
     << "           mTraSensBase: " << mTraSensBase << '\n'
     << "           mRotSensBase: " << mRotSensBase << '\n'
     << "          mMinThreshold: " << mMinThreshold << '\n'
     << "       mMaxContMoveTime: " << mMaxContMoveTime << '\n'
     << "  mToggleRotationCenter: " << mToggleRotationCenter << '\n'
     << "    mToggleRotationAxis: " << mToggleRotationAxis << '\n'
     << "     mScrollTreeAndList: " << mScrollTreeAndList << '\n'
     << "       mUseInt3dIntrfce: " << mUseInt3dIntrfce << '\n'
     << "               mLogPars:\n"
     << mLogPars.dump(4) << '\n';
  return os.str();
}
