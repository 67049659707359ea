#include "cnfg.h"
#include "settings_fixture.h"

namespace {

class SettingsFile : public SettingsFixture {};

TEST_F(SettingsFile, TheFirstRunWritesTheDefaultsAndTheSecondKeepsThem) {
  for (const char* const run : {"first", "second"}) {
    {
      const Settings settings;
      EXPECT_EQ(defaultText(), read()) << run;
      mHome.remove(kFile);
    }
    EXPECT_EQ(defaultText(), read()) << run; // written again at the end
  }
  { const Settings settings; }
  const Settings settings;
  EXPECT_EQ(defaultText(), read());
}

TEST_F(SettingsFile, AFileWithoutOneKeyLosesAllItsValues) {
  for (const std::string& key : keys()) {
    std::string changed = textWithout(key);
    if (key != "transSensBase")
      changed.replace(changed.find("20000"), 5, "12345");
    write(changed);
    const Settings settings;
    EXPECT_EQ(20000, settings.mTraSensBase) << key;
    EXPECT_EQ(defaultText(), read()) << key;
  }
  // The log isn't set up so early, and an error reaches nobody.
  EXPECT_EQ("", mOut.take());
}

TEST_F(SettingsFile, AMissingKeyIsReportedOnceByItsName) {
  write(textWithout("rotSensBase"));
  Settings settings;
  write(textWithout("rotSensBase"));
  turnLogOn();
  EXPECT_EQ(-2, settings.readSettingsFile(path()));
  EXPECT_EQ((Texts{"ERR Parameter 'rotSensBase' in section 'PROGRAM' not found! (" + path() + ")",
                   "ERR Error reading settings file!"}),
            records());
  write(textWithout("tmp"));
  EXPECT_EQ(-2, settings.readSettingsFile(path()));
  EXPECT_EQ((Texts{"ERR Parameter 'tmp' in section 'LOGGING' not found! (" + path() + ")",
                   "ERR Error reading settings file!"}),
            records());
  // Without a section, each of its keys.
  write(defaultText().substr(0, defaultText().find("[LOGGING]")));
  EXPECT_EQ(-2, settings.readSettingsFile(path()));
  const Texts all = records();
  ASSERT_EQ(14u, all.size());
  EXPECT_EQ("ERR Section 'LOGGING' not found!", all[0]);
  // A file that isn't there changes nothing, and is no error.
  settings.mTraSensBase = 77;
  mHome.remove(kFile);
  EXPECT_EQ(-1, settings.readSettingsFile(path()));
  EXPECT_EQ(77, settings.mTraSensBase);
  EXPECT_EQ(Texts{}, records());
}

TEST_F(SettingsFile, ValuesOfAHandEditedFileSurviveAndItsLayoutDoesnt) {
  std::string text =
      "# mine\r\n[LOGGING]\r\ntmp=on\r\nlogFile=c:\\log files\\x.txt # here\r\nmaxSize=7\r\n"
      "logToFile=on\r\nlogToCnsl=off\r\nwarning=off\r\ncreation=on\r\ntrace=off\r\ndevcom=off\r\n"
      "intcom=off\r\ninfo=on\r\ndebug=off\r\nfileToLog=\r\nunknown=key\r\n\r\n[PROGRAM]\r\n"
      "useInt3dIntrfce=on\r\nscrollTreeAndList=off\r\ntoggleRotationAxis=none\r\n"
      "toggleRotationCenter=ON\r\nmaxContMoveTime=100\r\nminThreshold=-5\r\nrotSensBase=8\r\n"
      "transSensBase=9\r\nversion=1.0\r\nname=My Plug-in";
  write(text);
  {
    const Settings settings;
    EXPECT_EQ(text, read()) << "a file that was read isn't written before the end";
  }
  std::string expected = defaultText();
  using Change = std::pair<const char*, const char*>;
  for (const auto& [key, value] :
       {Change{"name", "My Plug-in"}, Change{"version", "1.0"}, Change{"transSensBase", "9"},
        Change{"rotSensBase", "8"}, Change{"minThreshold", "-5"}, Change{"maxContMoveTime", "100"},
        Change{"toggleRotationCenter", "off"}, Change{"toggleRotationAxis", "on"},
        Change{"scrollTreeAndList", "off"}, Change{"useInt3dIntrfce", "on"},
        Change{"logFile", "c:\\log files\\x.txt"}, Change{"maxSize", "7"}, Change{"tmp", "on"}})
    expected = textWith(key, value, expected); // nothing brings the version up to date
  EXPECT_EQ(expected, read());
}

TEST_F(SettingsFile, AValueAsLongAsItsColumnsLeavesNoBlankAndIsReadBack) {
  const std::string name(50, 'n'), logFile = "c:\\" + std::string(60, 'l');
  {
    Settings settings;
    settings.mName = name;
    settings.mLogPars.mLogFile = logFile;
  }
  EXPECT_NE(std::string::npos, read().find("= " + name + "# program's name\n"));
  EXPECT_NE(std::string::npos, read().find("= " + logFile + "# name of log file\n"));
  const Settings settings;
  EXPECT_EQ(name, settings.mName);
  EXPECT_EQ(logFile, settings.mLogPars.mLogFile);
}

} // namespace
