// The settings file: read values are those that plain rules find, or all are the defaults; what is written
// reads back, and is the same at the second writing.
//
// Input: the file.

#include <cstdlib>

#include "check.h"
#include "plain_config.h"
#include "scratch.h"
#include "settings.h"

using fuzz::PlainConfig;
using fuzz::require;
using fuzz::requireSame;

namespace {

constexpr char kFile[] = "Orvaner/Applications/autocad_addin.ini";
constexpr char kDefaults[] = "AutoCAD Plug-in|2.9.0|20000|10000|0|500|1|0|1|0|autocad_addin_log.txt|5000|"
                             "1|0|0|1|0|0|0|1|0|0||";

enum class Form { text, number, flag };

struct Key {
  const char* section;
  const char* name;
  Form form;
};

constexpr Key kKeys[] = {
    {"PROGRAM", "name", Form::text},
    {"PROGRAM", "version", Form::text},
    {"PROGRAM", "transSensBase", Form::number},
    {"PROGRAM", "rotSensBase", Form::number},
    {"PROGRAM", "minThreshold", Form::number},
    {"PROGRAM", "maxContMoveTime", Form::number},
    {"PROGRAM", "toggleRotationCenter", Form::flag},
    {"PROGRAM", "toggleRotationAxis", Form::flag},
    {"PROGRAM", "scrollTreeAndList", Form::flag},
    {"PROGRAM", "useInt3dIntrfce", Form::flag},
    {"LOGGING", "logFile", Form::text},
    {"LOGGING", "maxSize", Form::number},
    {"LOGGING", "logToFile", Form::flag},
    {"LOGGING", "logToCnsl", Form::flag},
    {"LOGGING", "warning", Form::flag},
    {"LOGGING", "creation", Form::flag},
    {"LOGGING", "trace", Form::flag},
    {"LOGGING", "devcom", Form::flag},
    {"LOGGING", "intcom", Form::flag},
    {"LOGGING", "info", Form::flag},
    {"LOGGING", "debug", Form::flag},
    {"LOGGING", "tmp", Form::flag},
    {"LOGGING", "fileToLog", Form::text},
};

/// The number that a text starts with, held within 32 bits.
std::string plainNumber(const std::string& text) {
  std::size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || (text[i] >= '\t' && text[i] <= '\r')))
    ++i;
  const bool isNegative = i < text.size() && text[i] == '-';
  if (i < text.size() && (text[i] == '-' || text[i] == '+'))
    ++i;
  double value = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i)
    value = std::min(value * 10 + (text[i] - '0'), 1e12);
  value = isNegative ? std::max(-value, -2147483648.0) : std::min(value, 2147483647.0);
  return std::to_string(static_cast<long long>(value));
}

/// All values one behind the other, as they should come out of that file.
std::string expectedValues(const std::string& text) {
  const PlainConfig config(text);
  const PlainConfig::Parameters sections[] = {config.parametersOf("PROGRAM"), config.parametersOf("LOGGING")};
  std::string all;
  for (const Key& key : kKeys) {
    const PlainConfig::Parameters& parameters = sections[key.section[0] == 'L'];
    const auto found = std::find_if(parameters.begin(), parameters.end(),
                                    [&key](const auto& parameter) { return parameter.first == key.name; });
    if (found == parameters.end())
      return kDefaults; // one that is missing takes all others along
    const std::string& value = found->second;
    if (key.form == Form::text)
      all += value;
    else if (key.form == Form::number)
      all += plainNumber(value);
    else
      all += value.find("on") != std::string::npos ? "1" : "0";
    all += '|';
  }
  return all;
}

std::string valuesOf(const Settings& s) {
  std::string all = s.mName + '|' + s.mVersion + '|';
  const auto number = [&all](std::int32_t value) { all += std::to_string(value) + '|'; };
  for (const std::int32_t value : {s.mTraSensBase, s.mRotSensBase, s.mMinThreshold, s.mMaxContMoveTime})
    number(value);
  for (const bool value :
       {s.mToggleRotationCenter, s.mToggleRotationAxis, s.mScrollTreeAndList, s.mUseInt3dIntrfce})
    number(value);
  const LogPars& l = s.mLogPars;
  all += l.mLogFile + '|';
  number(l.mMaxSize);
  for (const bool value : {l.mIsLogToFile, l.mIsLogToCnsl, l.mIsWarning, l.mIsCreation, l.mIsTrace,
                           l.mIsDevCom, l.mIsIntCom, l.mIsInfo, l.mIsDebug, l.mIsTmp})
    number(value);
  return all + l.mExclFileToLog + '|';
}

/// A run of the plug-in as far as the settings are concerned. Gives the values that it had.
std::string run() {
  const Settings settings;
  require(!settings.dump().empty(), "values can be shown");
  return valuesOf(settings);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool isPrepared = [] {
    setenv("USERPROFILE", fuzz::scratch().native().c_str(), 1);
    fuzz::scratch().makeFolder("Orvaner/Applications");
    return true;
  }();
  require(isPrepared, "a home folder");
  const std::string text(reinterpret_cast<const char*>(data), size);
  fuzz::scratch().write(kFile, text);
  const std::string values = run();
  requireSame(values, expectedValues(text), "values of the file, or the defaults");
  const std::string written = fuzz::scratch().read(kFile);
  static std::string sDefaultFile;
  if (values == kDefaults && written == sDefaultFile)
    return 0; // has been seen before
  requireSame(run(), values, "what was written reads back");
  requireSame(fuzz::scratch().read(kFile), written, "the second writing is the first one");
  if (values == kDefaults)
    sDefaultFile = written;
  return 0;
}
