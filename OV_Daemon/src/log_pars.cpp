#include "log_pars.h"

#include <locale>
#include <ostream>
#include <sstream>

#include "cnfg.h"
#include "logging.h"
#include "parameter.h"
#include "util.h"

namespace {

constexpr std::size_t kNameWidth = 16; // columns that a name takes in the dump

/// In the order of the file.
const Parameter<LogPars> kParameters[] = {
    {"logFile", &LogPars::mLogFile, "mLogFile", "# name of log file"},
    {"maxSize", &LogPars::mMaxSize, "mMaxSize", "# max. size of log file (kB)"},
    {"logToFile", &LogPars::mIsLogToFile, "mIsLogToFile", "# log into log file:               off/on"},
    {"logToCnsl", &LogPars::mIsLogToCnsl, "mIsLogToCnsl", "# log to console:                  off/on"},
    {"warning", &LogPars::mIsWarning, "mIsWarning", "# log warnings:                    off/on"},
    {"creation", &LogPars::mIsCreation, "mIsCreation", "# log creation etc.:               off/on"},
    {"trace", &LogPars::mIsTrace, "mIsTrace", "# log trace data:                  off/on"},
    {"devcom", &LogPars::mIsDevCom, "mIsDevCom", "# not used in this plug-in"},
    {"intcom", &LogPars::mIsIntCom, "mIsIntCom", "# log internal communication data: off/on"},
    {"info", &LogPars::mIsInfo, "mIsInfo", "# log info data:                   off/on"},
    {"debug", &LogPars::mIsDebug, "mIsDebug", "# log debug data:                  off/on"},
    {"tmp", &LogPars::mIsTmp, "mIsTmp", "# log data of temporal interest:   off/on"},
    {"fileToLog", &LogPars::mExclFileToLog, "mExclFileToLog", "# name of the exclusively logged file"},
};

} // namespace

LogPars::LogPars()
    : mSectionName("LOGGING"), mLogFile("autocad_addin_log.txt"), mMaxSize(5000), mIsLogToFile(true),
      mIsLogToCnsl(false), mIsWarning(false), mIsCreation(true), mIsTrace(false), mIsDevCom(false),
      mIsIntCom(false), mIsInfo(true), mIsDebug(false), mIsTmp(false) {}

int LogPars::read(Cnfg& cnfg) {
  int sum = 0;
  std::string value;
  for (const auto& parameter : kParameters) {
    const int code = cnfg.readParameter(parameter.key, value, mSectionName, true);
    if (code != Cnfg::kOk)
      OV_LOG(ERR, "LogPars", "LogPars::read", cnfg.errorText());
    sum += code;
    parameter.read(*this, value);
  }
  return sum;
}

void LogPars::write(std::ostream& os, int width) const {
  os << '[' << mSectionName << "]\n";
  for (const auto& parameter : kParameters)
    parameter.write(os, *this, width);
}

std::string LogPars::dump(int indent) const {
  const std::string blanks(static_cast<std::size_t>(indent), ' ');
  std::ostringstream os;
  os.imbue(std::locale::classic()); // no grouping dots in numbers if the host sets a locale
  os << blanks << "    mSectionName: " << mSectionName << '\n'
     << blanks << "mSettingsDirPath: " << mSettingsDirPath;
  for (const auto& parameter : kParameters) {
    os << '\n' << blanks;
    parameter.dump(os, *this, kNameWidth);
  }
  return os.str();
}
