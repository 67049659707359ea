// The settings, and the file that keeps them.

#include <iostream>
#include <regex>

#include <gtest/gtest.h>

#include "environment.h"
#include "logging.h"
#include "settings.h"
#include "stream_capture.h"
#include "temp_folder.h"

namespace {

using Texts = std::vector<std::string>;
constexpr char kFile[] = "Orvaner/Applications/autocad_addin.ini";

/// A user's home folder, with the folders that the device's driver makes. The log goes to a captured console when a
/// test turns it on.
class SettingsTest : public testing::Test {
protected:
  SettingsTest() : mOut(std::cout) {
    mHome.makeFolder("Orvaner/Applications");
    rig::setEnvironment("USERPROFILE", mHome.backslashed());
    std::ifstream file(DEFAULT_SETTINGS, std::ios::binary);
    mDefaults.assign(std::istreambuf_iterator<char>(file), {});
    const std::regex line("\t(\\w+) ");
    for (std::sregex_iterator i(mDefaults.begin(), mDefaults.end(), line), end; i != end; ++i)
      mKeys.push_back((*i)[1]);
    EXPECT_EQ(mKeys.size(), 23u);
  }
  ~SettingsTest() override { gLogging.mIsLogToCnsl = false; }

  /// Returns the default text with another value of a key, in the columns of the others.
  std::string textWith(const std::string& key, const std::string& value) const {
    const std::size_t start = mDefaults.find("= ", mDefaults.find("\t" + key + " ")) + 2;
    return std::string(mDefaults).replace(start, 50, value + std::string(50 - value.size(), ' '));
  }
  std::string textWithout(const std::string& key) const {
    return std::regex_replace(mDefaults, std::regex("\t" + key + " .*\n"), "");
  }
  void write(const std::string& text) const { mHome.write(kFile, text); }
  std::string read() const { return mHome.read(kFile); }
  /// Reads the file into the settings and returns the result with the records that were left.
  std::string readInto(Settings& settings) {
    gLogging.mIsLogToCnsl = true;
    const int code = settings.readSettingsFile(mHome.backslashed(kFile));
    gLogging.mIsLogToCnsl = false;
    return std::to_string(code) + std::regex_replace(mOut.take(), std::regex(".*?\\|(ERR)\\|.*\\| "), " ");
  }

  rig::TempFolder mHome;
  rig::StreamCapture mOut;
  std::string mDefaults; // the file's text
  Texts mKeys;           // of the file, in order
};

TEST_F(SettingsTest, FirstRunWritesDefaults) {
  for (int run = 0; run < 3; ++run) {
    {
      const Settings settings;
      EXPECT_EQ(read(), mDefaults) << run;
      if (run < 2)
        mHome.remove(kFile);
    }
    EXPECT_EQ(read(), mDefaults) << run; // written again at the end
  }
}

TEST_F(SettingsTest, MissingKeyRestoresAllDefaults) {
  for (const std::string& key : mKeys) {
    std::string text = textWithout(key);
    for (const auto& [value, other] :
         {std::pair("= on ", "= no "), {"= off", "= on "}, {"= [A-Za-z]*[0-9]+", "= 33"}})
      text = std::regex_replace(text, std::regex(value), other);
    write(text);
    const Settings settings;
    EXPECT_EQ(settings.mTraSensBase, 20000) << key;
    EXPECT_EQ(read(), mDefaults) << key;
  }
  EXPECT_EQ(mOut.take(), "") << "the log isn't set up so early";
}

TEST_F(SettingsTest, MissingKeyIsReportedByName) {
  Settings settings;
  const std::string file = " (" + mHome.backslashed(kFile) + ")\n Error reading settings file!\n";
  write(textWithout("rotSensBase"));
  EXPECT_EQ(readInto(settings), "-2 Parameter 'rotSensBase' in section 'PROGRAM' not found!" + file);
  write(textWithout("tmp"));
  EXPECT_EQ(readInto(settings), "-2 Parameter 'tmp' in section 'LOGGING' not found!" + file);
  write(mDefaults.substr(0, mDefaults.find("[LOGGING]"))); // each key of the section is missing
  const std::string all = readInto(settings);
  EXPECT_EQ(all.find("-2 Section 'LOGGING' not found!\n"), 0u);
  EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 14);
  settings.mTraSensBase = 77;
  mHome.remove(kFile);
  EXPECT_EQ(readInto(settings), "-1") << "a missing file is no error";
  EXPECT_EQ(settings.mTraSensBase, 77);
}

TEST_F(SettingsTest, EachKeyHasItsOwnField) {
  const auto fields = [] {
    const std::string dump = Settings().dump();
    const std::regex value(": (.*)");
    Texts found;
    for (std::sregex_iterator i(dump.begin(), dump.end(), value), end; i != end; ++i)
      found.push_back((*i)[1]);
    return found;
  };
  const std::string edited = "# mine\r\n" + textWith("maxSize", "7");
  write(edited);
  {
    const Settings settings;
    EXPECT_EQ(read(), edited) << "a file that was read isn't written before the end";
  }
  EXPECT_EQ(read(), textWith("maxSize", "7"));
  write(mDefaults);
  const Texts before = fields();
  for (std::size_t i = 0; i < mKeys.size(); ++i) {
    const bool isOn = textWith(mKeys[i], "on") == mDefaults, isOff = textWith(mKeys[i], "off") == mDefaults;
    write(textWith(mKeys[i], isOn ? "off" : isOff ? "on" : "7"));
    Texts expected = before;
    expected.at(i < 10 ? i : i + 2) = isOn ? "0" : isOff ? "1" : "7"; // two fields between have no key
    EXPECT_EQ(fields(), expected) << mKeys[i];
    EXPECT_EQ(read(), textWith(mKeys[i], isOn ? "off" : isOff ? "on" : "7")) << mKeys[i];
  }
}

} // namespace
