#ifndef LOG_PARS_H
#define LOG_PARS_H

#include <cstdint>
#include <iosfwd>
#include <string>

class Cnfg;

/// The parameters of the log, as the settings file's section for the log keeps them. A plain record.
class LogPars {
public:
  LogPars();

  /// Reads the thirteen keys. A key that isn't found is logged, and the others are read all the same.
  /// Returns the sum of the codes of all keys: 0 if each was there.
  int read(Cnfg& cnfg);
  /// Writes the section.
  /// width  columns that a value takes; a longer one takes its own length
  void write(std::ostream& os, int width) const;
  /// Returns the values as text, a line each, with no line feed after the last.
  /// indent  number of blanks before each line
  std::string dump(int indent) const;

  std::string mSectionName;
  std::string mSettingsDirPath; // folder of a log file that has no folder in its name
  std::string mLogFile;         // name or full path
  std::int32_t mMaxSize;        // limit of the log file, units of 1000 bytes
  bool mIsLogToFile;
  bool mIsLogToCnsl; // to standard output
  bool mIsWarning;
  bool mIsCreation;
  bool mIsTrace;
  bool mIsDevCom;
  bool mIsIntCom;
  bool mIsInfo;
  bool mIsDebug;
  bool mIsTmp;
  std::string mExclFileToLog; // if not empty, the one source file whose records are logged
};

#endif
