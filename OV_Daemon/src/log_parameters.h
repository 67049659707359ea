#ifndef LOG_PARAMETERS_H
#define LOG_PARAMETERS_H

#include "log_pars.h"
#include "parameter.h"

constexpr char kLogSection[] = "LOGGING";

/// The keys of the settings file's section for the log, in the order of the file. Constant before any code
/// runs, since the log itself is constructed with them.
inline constexpr Parameter<LogPars> kLogParameters[] = {
    {"logFile", &LogPars::mLogFile, "mLogFile", "autocad_addin_log.txt", "# name of log file"},
    {"maxSize", &LogPars::mMaxSize, "mMaxSize", "5000", "# max. size of log file (kB)"},
    {"logToFile", &LogPars::mIsLogToFile, "mIsLogToFile", "on", "# log into log file:               off/on"},
    {"logToCnsl", &LogPars::mIsLogToCnsl, "mIsLogToCnsl", "off", "# log to console:                  off/on"},
    {"warning", &LogPars::mIsWarning, "mIsWarning", "off", "# log warnings:                    off/on"},
    {"creation", &LogPars::mIsCreation, "mIsCreation", "on", "# log creation etc.:               off/on"},
    {"trace", &LogPars::mIsTrace, "mIsTrace", "off", "# log trace data:                  off/on"},
    {"devcom", &LogPars::mIsDevCom, "mIsDevCom", "off", "# not used in this plug-in"},
    {"intcom", &LogPars::mIsIntCom, "mIsIntCom", "off", "# log internal communication data: off/on"},
    {"info", &LogPars::mIsInfo, "mIsInfo", "on", "# log info data:                   off/on"},
    {"debug", &LogPars::mIsDebug, "mIsDebug", "off", "# log debug data:                  off/on"},
    {"tmp", &LogPars::mIsTmp, "mIsTmp", "off", "# log data of temporal interest:   off/on"},
    {"fileToLog", &LogPars::mExclFileToLog, "mExclFileToLog", "", "# name of the exclusively logged file"},
};

#endif
