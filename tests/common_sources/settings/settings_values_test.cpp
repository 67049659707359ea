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
  using Number = std::pair<const char*, std::int32_t>;
  for (const auto& [text, number] :
       {Number{"none", 0}, Number{"", 0}, Number{"12 mm", 12}, Number{"7.9", 7}, Number{"-3", -3},
        Number{"+4", 4}, Number{"0x10", 0}, Number{"99999999999999999999", 2147483647},
        Number{"-4294967296", -2147483647 - 1}}) {
    write(textWith("transSensBase", text));
    EXPECT_EQ(number, Settings().mTraSensBase) << text;
    EXPECT_EQ(textWith("transSensBase", std::to_string(number)), read()) << text;
  }
}

TEST_F(SettingsValues, EveryKeyGoesToItsOwnField) {
  const auto lines = [](const std::string& text) {
    Texts found;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
      found.push_back(line);
    return found;
  };
  write(defaultText());
  const Texts before = lines(Settings().dump()), all = keys();
  for (std::size_t i = 0; i < all.size(); ++i) {
    const bool isOn = textWith(all[i], "on") == defaultText();
    const bool isOff = textWith(all[i], "off") == defaultText();
    const char* const value = isOn ? "off" : isOff ? "on" : "7";
    write(textWith(all[i], value));
    // Off its default alone. Between the sections the dump has three lines that no key fills.
    Texts expected = before;
    std::string& line = expected.at(i < 10 ? i : i + 3);
    line.replace(line.find(": ") + 2, std::string::npos, isOn ? "0" : isOff ? "1" : "7");
    EXPECT_EQ(expected, lines(Settings().dump())) << all[i];
    EXPECT_EQ(textWith(all[i], value), read()) << all[i];
  }
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
