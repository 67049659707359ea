#include "log_pars.h"

#include <locale>
#include <ostream>
#include <sstream>

#include "cnfg.h"
#include "logging.h"
#include "parameter_text.h"
#include "util.h"

LogPars::LogPars()
    : mSectionName("LOGGING"), mLogFile("autocad_addin_log.txt"), mMaxSize(5000), mIsLogToFile(true),
      mIsLogToCnsl(false), mIsWarning(false), mIsCreation(true), mIsTrace(false), mIsDevCom(false),
      mIsIntCom(false), mIsInfo(true), mIsDebug(false), mIsTmp(false) {}

int LogPars::read(Cnfg& cnfg) {
  int sum = 0;
  std::string value;
  const auto fetch = [&](const char* key) -> const std::string& {
    const int code = cnfg.readParameter(key, value, mSectionName, true);
    if (code != Cnfg::kOk)
      OV_LOG(ERR, "LogPars", "LogPars::read", cnfg.errorText());
    sum += code;
    return value;
  };
  mLogFile = fetch("logFile");
  mMaxSize = toNumber(fetch("maxSize"));
  mIsLogToFile = Util::isOn(fetch("logToFile"));
  mIsLogToCnsl = Util::isOn(fetch("logToCnsl"));
  mIsWarning = Util::isOn(fetch("warning"));
  mIsCreation = Util::isOn(fetch("creation"));
  mIsTrace = Util::isOn(fetch("trace"));
  mIsDevCom = Util::isOn(fetch("devcom"));
  mIsIntCom = Util::isOn(fetch("intcom"));
  mIsInfo = Util::isOn(fetch("info"));
  mIsDebug = Util::isOn(fetch("debug"));
  mIsTmp = Util::isOn(fetch("tmp"));
  mExclFileToLog = fetch("fileToLog");
  return sum;
}

void LogPars::write(std::ostream& os, int width) const {
  const auto line = [&](const char* key, const std::string& value, const char* comment) {
    writeParameterLine(os, key, value, width, comment);
  };
  os << '[' << mSectionName << "]\n";
  line("logFile", mLogFile, "# name of log file");
  line("maxSize", std::to_string(mMaxSize), "# max. size of log file (kB)");
  line("logToFile", Util::onOffText(mIsLogToFile), "# log into log file:               off/on");
  line("logToCnsl", Util::onOffText(mIsLogToCnsl), "# log to console:                  off/on");
  line("warning", Util::onOffText(mIsWarning), "# log warnings:                    off/on");
  line("creation", Util::onOffText(mIsCreation), "# log creation etc.:               off/on");
  line("trace", Util::onOffText(mIsTrace), "# log trace data:                  off/on");
  line("devcom", Util::onOffText(mIsDevCom), "# not used in this plug-in");
  line("intcom", Util::onOffText(mIsIntCom), "# log internal communication data: off/on");
  line("info", Util::onOffText(mIsInfo), "# log info data:                   off/on");
  line("debug", Util::onOffText(mIsDebug), "# log debug data:                  off/on");
  line("tmp", Util::onOffText(mIsTmp), "# log data of temporal interest:   off/on");
  line("fileToLog", mExclFileToLog, "# name of the exclusively logged file");
}

std::string LogPars::dump(int indent) const {
  const std::string blanks(static_cast<std::size_t>(indent), ' ');
  std::ostringstream os;
  os.imbue(std::locale::classic()); // no grouping dots in numbers, whatever the host has set
  os << blanks << "    mSectionName: " << mSectionName << '\n'
     << blanks << "mSettingsDirPath: " << mSettingsDirPath << '\n'
     << blanks << "        mLogFile: " << mLogFile << '\n'
     << blanks << "        mMaxSize: " << mMaxSize << '\n'
     << blanks << "    mIsLogToFile: " << mIsLogToFile << '\n'
     << blanks << "    mIsLogToCnsl: " << mIsLogToCnsl << '\n'
     << blanks << "      mIsWarning: " << mIsWarning << '\n'
     << blanks << "     mIsCreation: " << mIsCreation << '\n'
     << blanks << "        mIsTrace: " << mIsTrace << '\n'
     << blanks << "       mIsDevCom: " << mIsDevCom << '\n'
     << blanks << "       mIsIntCom: " << mIsIntCom << '\n'
     << blanks << "         mIsInfo: " << mIsInfo << '\n'
     << blanks << "        mIsDebug: " << mIsDebug << '\n'
     << blanks << "          mIsTmp: " << mIsTmp << '\n'
     << blanks << "  mExclFileToLog: " << mExclFileToLog;
  return os.str();
}
