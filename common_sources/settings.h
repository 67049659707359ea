#ifndef SETTINGS_H
#define SETTINGS_H

#include <cstdint>
#include <string>

#include "log_pars.h"

class Cnfg;

constexpr std::int32_t kDefaultTraSensBase = 20000; // device counts, as in kProgramParameters
constexpr std::int32_t kDefaultRotSensBase = 10000; // the same

/// What the user may change, and the file that keeps it from run to run.
///
/// The constructor reads the file; if it is missing or lacks a key, all values become the defaults and a new
/// file is written. The destructor writes the file from the values as they are then. No failure of the file
/// reaches the caller: the plug-in runs on its defaults then.
///
/// All fields belong to the host's main thread.
class Settings {
public:
  Settings();
  ~Settings();
  Settings(const Settings&) = delete;
  Settings& operator=(const Settings&) = delete;

  /// Sets every value from mName on to its default, mLogPars included.
  void setDefaults();

  /// Returns 0, -1 if the file can't be opened (no field has changed then), or -2 if a key is missing.
  int readSettingsFile(const std::string& path);
  /// Returns 0, or -1 if the file can't be written.
  int writeSettingsFile(const std::string& path);

  /// Calls Cnfg's readParameter with trimming; logs its error text. Returns its code.
  int readParameter(Cnfg& cnfg, const std::string& key, std::string& value, const std::string& section);
  /// Calls Cnfg's readNextParameter with trimming; logs its error text. Returns its code.
  int readNextParameter(Cnfg& cnfg, std::string& key, std::string& value);

  /// Returns the values as text for the log.
  std::string dump() const;

  std::string mFolderName;       // below the home folder
  std::string mFileName;         // of the settings file
  std::string mApplicationsName; // folder below mFolderName
  std::string mHomeDir;
  std::string mSettingsFilePath;
  std::string mApplicationsDirPath; // folder of settings file and menu file

  std::string mName;
  std::string mVersion;
  std::int32_t mTraSensBase;     // divisor of X, Y and Z, device counts
  std::int32_t mRotSensBase;     // divisor of A, B and C, device counts per radian
  std::int32_t mMinThreshold;    // device counts; a deflection has to be above it
  std::int32_t mMaxContMoveTime; // milliseconds that the pump may hold the host's main thread
  bool mToggleRotationCenter;    // a selected object sets the rotation centre
  bool mToggleRotationAxis;      // a selected line sets the rotation axis
  bool mScrollTreeAndList;       // the cap scrolls trees and lists under the pointer
  bool mUseInt3dIntrfce;         // the cap does nothing here; another plug-in serves it
  LogPars mLogPars;

private:
  std::string fileText() const;
};

#endif
