#include "cnfg.h"
#include "settings_fixture.h"

namespace {

using Texts = std::vector<std::string>;

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
  std::vector<std::string> keys;
  const std::string text = defaultText();
  const std::regex line("\t(\\w+) ");
  for (std::sregex_iterator i(text.begin(), text.end(), line), end; i != end; ++i)
    keys.push_back((*i)[1]);
  ASSERT_EQ(23u, keys.size());
  for (const std::string& key : keys) {
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

TEST_F(SettingsFile, WithoutItsFolderTheDefaultsServe) {
  mHome.remove("Orvaner");
  turnLogOn();
  Texts all;
  {
    Settings settings;
    EXPECT_EQ(20000, settings.mTraSensBase);
    EXPECT_EQ("autocad_addin_log.txt", settings.mLogPars.mLogFile);
    all = records();
    EXPECT_EQ(-1, settings.writeSettingsFile(path()));
    EXPECT_EQ((Texts{"TRC Writing new default settings file ...",
                     "ERR Writing default settings file 'autocad_addin.ini' failed!"}),
              records());
  }
  EXPECT_EQ("ERR Writing default settings file 'autocad_addin.ini' failed!", all.at(2));
  EXPECT_FALSE(mHome.exists("Orvaner"));
  EXPECT_EQ("CRT Destructed.", records().back());
}

TEST_F(SettingsFile, LogsItsLife) {
  turnLogOn();
  gLogging.mIsInfo = true;
  std::string dump;
  {
    const Settings settings;
    dump = settings.dump();
    dump.pop_back(); // the record's own line feed follows it
    EXPECT_EQ((Texts{"CRT Constructing ...", "INF Settings file not found - using default values ...",
                     "TRC Writing new default settings file ...", "TRC Default settings file written.",
                     "INF \n" + dump + "\n", "CRT Constructed."}),
              records());
  }
  gLogging.mIsInfo = false;
  EXPECT_EQ((Texts{"TRC Writing new default settings file ...", "TRC Default settings file written.",
                   "CRT Destructed."}),
            records());
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
    EXPECT_EQ("My Plug-in", settings.mName);
    EXPECT_EQ("1.0", settings.mVersion); // nothing brings it up to date
    EXPECT_EQ(-5, settings.mMinThreshold);
    EXPECT_EQ("c:\\log files\\x.txt", settings.mLogPars.mLogFile);
    EXPECT_TRUE(settings.mUseInt3dIntrfce && settings.mToggleRotationAxis && settings.mLogPars.mIsTmp);
    EXPECT_FALSE(settings.mScrollTreeAndList || settings.mToggleRotationCenter);
  }
  std::string expected = defaultText();
  for (const auto& change :
       std::vector<std::pair<std::string, std::string>>{{"name", "My Plug-in"},
                                                        {"version", "1.0"},
                                                        {"transSensBase", "9"},
                                                        {"rotSensBase", "8"},
                                                        {"minThreshold", "-5"},
                                                        {"maxContMoveTime", "100"},
                                                        {"toggleRotationCenter", "off"},
                                                        {"toggleRotationAxis", "on"},
                                                        {"scrollTreeAndList", "off"},
                                                        {"useInt3dIntrfce", "on"},
                                                        {"logFile", "c:\\log files\\x.txt"},
                                                        {"maxSize", "7"},
                                                        {"tmp", "on"}}) {
    const std::size_t start = expected.find("= ", expected.find("\t" + change.first + " ")) + 2;
    expected.replace(start, 50, change.second + std::string(50 - change.second.size(), ' '));
  }
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
