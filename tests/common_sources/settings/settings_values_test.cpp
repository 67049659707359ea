#include "settings_fixture.h"

namespace {

class SettingsValues : public SettingsFixture {};

TEST_F(SettingsValues, PathsLieBelowTheHomeFolder) {
  write(defaultText());
  const Settings settings;
  const std::string home = mHome.backslashed();
  EXPECT_EQ(home, settings.mHomeDir);
  EXPECT_EQ(home + "\\Orvaner\\Applications", settings.mApplicationsDirPath);
  EXPECT_EQ(home + "\\Orvaner\\Applications\\autocad_addin.ini", settings.mSettingsFilePath);
  // The log lies beside the folder, not in it.
  EXPECT_EQ(home + "\\Orvaner", gLogging.mSettingsDirPath);
  EXPECT_EQ(home + "\\Orvaner", settings.mLogPars.mSettingsDirPath);
}

TEST_F(SettingsValues, NumbersAreReadAsFarAsTheyGo) {
  const struct {
    const char* text;
    std::int32_t number;
  } kTexts[] = {
      {"none", 0},
      {"", 0},
      {"12 mm", 12},
      {"7.9", 7},
      {"-3", -3},
      {"+4", 4},
      {"0x10", 0},
      {"2147483647", 2147483647},
      {"-2147483648", -2147483647 - 1},
      {"99999999999999999999", 2147483647},
      {"-4294967296", -2147483647 - 1},
  };
  for (const auto& entry : kTexts) {
    write(textWith("transSensBase", entry.text));
    {
      const Settings settings;
      EXPECT_EQ(entry.number, settings.mTraSensBase) << entry.text;
    }
    EXPECT_EQ(textWith("transSensBase", std::to_string(entry.number)), read()) << entry.text;
  }
}

TEST_F(SettingsValues, EveryKeyGoesToItsOwnField) {
  // One value off its default at a time; the dump tells which field has moved.
  const struct {
    const char *key, *value, *label;
  } kKeys[] = {
      {"name", "N", "(AutoCAD Plug-in) mName: N"},
      {"version", "V", "               mVersion: V"},
      {"transSensBase", "1", "           mTraSensBase: 1"},
      {"rotSensBase", "2", "           mRotSensBase: 2"},
      {"minThreshold", "3", "          mMinThreshold: 3"},
      {"maxContMoveTime", "4", "       mMaxContMoveTime: 4"},
      {"toggleRotationCenter", "off", "  mToggleRotationCenter: 0"},
      {"toggleRotationAxis", "on", "    mToggleRotationAxis: 1"},
      {"scrollTreeAndList", "off", "     mScrollTreeAndList: 0"},
      {"useInt3dIntrfce", "on", "       mUseInt3dIntrfce: 1"},
      {"logFile", "L", "            mLogFile: L"},
      {"maxSize", "5", "            mMaxSize: 5"},
      {"logToFile", "off", "        mIsLogToFile: 0"},
      {"logToCnsl", "on", "        mIsLogToCnsl: 1"},
      {"warning", "on", "          mIsWarning: 1"},
      {"creation", "off", "         mIsCreation: 0"},
      {"trace", "on", "            mIsTrace: 1"},
      {"devcom", "on", "           mIsDevCom: 1"},
      {"intcom", "on", "           mIsIntCom: 1"},
      {"info", "off", "             mIsInfo: 0"},
      {"debug", "on", "            mIsDebug: 1"},
      {"tmp", "on", "              mIsTmp: 1"},
      {"fileToLog", "f.cpp", "      mExclFileToLog: f.cpp"},
  };
  const auto lines = [](const std::string& text) {
    std::vector<std::string> all;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
      all.push_back(line);
    return all;
  };
  write(defaultText());
  const std::vector<std::string> before = lines(Settings().dump());
  for (const auto& entry : kKeys) {
    write(textWith(entry.key, entry.value));
    std::vector<std::string> moved;
    {
      const std::vector<std::string> after = lines(Settings().dump());
      ASSERT_EQ(before.size(), after.size());
      for (std::size_t i = 0; i < after.size(); ++i) {
        if (after[i] != before[i])
          moved.push_back(after[i]);
      }
    }
    EXPECT_EQ(std::vector<std::string>{entry.label}, moved) << entry.key;
    EXPECT_EQ(textWith(entry.key, entry.value), read()) << entry.key;
  }
}

TEST_F(SettingsValues, DumpsAllValues) {
  Settings settings;
  settings.mLogPars.mSettingsDirPath = "c:\\folder";
  EXPECT_EQ("(AutoCAD Plug-in) mName: AutoCAD Plug-in\n"
            "               mVersion: 2.9.0\n"
            "           mTraSensBase: 20000\n"
            "           mRotSensBase: 10000\n"
            "          mMinThreshold: 0\n"
            "       mMaxContMoveTime: 500\n"
            "  mToggleRotationCenter: 1\n"
            "    mToggleRotationAxis: 0\n"
            "     mScrollTreeAndList: 1\n"
            "       mUseInt3dIntrfce: 0\n"
            "               mLogPars:\n"
            "        mSectionName: LOGGING\n"
            "    mSettingsDirPath: c:\\folder\n"
            "            mLogFile: autocad_addin_log.txt\n"
            "            mMaxSize: 5000\n"
            "        mIsLogToFile: 1\n"
            "        mIsLogToCnsl: 0\n"
            "          mIsWarning: 0\n"
            "         mIsCreation: 1\n"
            "            mIsTrace: 0\n"
            "           mIsDevCom: 0\n"
            "           mIsIntCom: 0\n"
            "             mIsInfo: 1\n"
            "            mIsDebug: 0\n"
            "              mIsTmp: 0\n"
            "      mExclFileToLog: \n",
            settings.dump());
}

TEST_F(SettingsValues, DefaultsReplaceEveryValueAndNoPath) {
  Settings settings;
  const std::string defaults = settings.dump();
  const std::string filePath = settings.mSettingsFilePath;
  settings.mName = settings.mVersion = "x";
  settings.mTraSensBase = settings.mRotSensBase = settings.mMinThreshold = settings.mMaxContMoveTime = -1;
  settings.mToggleRotationCenter = settings.mScrollTreeAndList = false;
  settings.mToggleRotationAxis = settings.mUseInt3dIntrfce = true;
  settings.mLogPars.mMaxSize = 1;
  settings.mLogPars.mExclFileToLog = "x";
  settings.setDefaults();
  EXPECT_EQ(defaults, settings.dump());
  EXPECT_EQ(filePath, settings.mSettingsFilePath);
}

} // namespace
