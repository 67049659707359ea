#include "log_pars.h"

#include <locale>
#include <ostream>
#include <sstream>

#include "cnfg.h"
#include "log_parameters.h"
#include "logging.h"

namespace {

constexpr std::size_t kNameWidth = 16; // columns that a name takes in the dump

} // namespace

LogPars::LogPars()
    : mSectionName(kLogSection), mMaxSize(0), mIsLogToFile(false), mIsLogToCnsl(false), mIsWarning(false),
      mIsCreation(false), mIsTrace(false), mIsDevCom(false), mIsIntCom(false), mIsInfo(false),
      mIsDebug(false), mIsTmp(false) {
  for (const auto& parameter : kLogParameters)
    parameter.read(*this, parameter.defaultValue);
}

int LogPars::read(Cnfg& cnfg) {
  int sum = 0;
  std::string value;
  for (const auto& parameter : kLogParameters) {
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
  for (const auto& parameter : kLogParameters)
    parameter.write(os, *this, width);
}

std::string LogPars::dump(int indent) const {
  const std::string blanks(static_cast<std::size_t>(indent), ' ');
  std::ostringstream os;
  os.imbue(std::locale::classic()); // no grouping dots in numbers if the host sets a locale
  os << blanks << "    mSectionName: " << mSectionName << '\n'
     << blanks << "mSettingsDirPath: " << mSettingsDirPath;
  for (const auto& parameter : kLogParameters) {
    os << '\n' << blanks;
    parameter.dump(os, *this, kNameWidth);
  }
  return os.str();
}
