#include "settings.h"

#include <fstream>
#include <locale>
#include <sstream>

#include "cnfg.h"
#include "logging.h"
#include "settings_parameters.h"
#include "util.h"

namespace {

constexpr std::size_t kNameWidth = 23; // columns that a name takes in the dump

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
    // Out of memory while the text is composed: the old file stays.
  }
  OV_LOG(CRT, "Settings", "Settings::~Settings", "Destructed.");
}

void Settings::setDefaults() {
  for (const auto& parameter : kProgramParameters)
    parameter.read(*this, parameter.defaultValue);
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
  for (const auto& parameter : kProgramParameters) {
    sum += readParameter(cnfg, parameter.key, value, kProgramSection);
    parameter.read(*this, value);
  }
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
  os << kSettingsHead << '[' << kProgramSection << "]\n";
  for (const auto& parameter : kProgramParameters)
    parameter.write(os, *this, kValueWidth);
  os << '\n';
  mLogPars.write(os, kValueWidth);
  return os.str();
}

int Settings::writeSettingsFile(const std::string& path) {
  // The text is composed before the file is opened, and written by one unbuffered write: if the host dies in
  // between, the file is lost, so that time is as short as possible.
  const std::string text = fileText();
  OV_LOG(TRC, "Settings", "Settings::writeSettingsFile", "Writing new default settings file ...");
  char room[1]; // a buffer of our own, so that the opening, which empties the file, allocates nothing
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
  os.imbue(std::locale::classic()); // no grouping dots in numbers if the host sets a locale
  for (const auto& parameter : kProgramParameters) {
    parameter.dump(os, *this, kNameWidth);
    os << '\n';
  }
  os << std::string(kNameWidth - 8, ' ') << "mLogPars:\n" << mLogPars.dump(4) << '\n';
  return os.str();
}
