#ifndef SETTINGS_FIXTURE_H
#define SETTINGS_FIXTURE_H

#include <fstream>
#include <iostream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "environment.h"
#include "logging.h"
#include "settings.h"
#include "stream_capture.h"
#include "temp_folder.h"

/// A user's home folder with the folders in it that the device's driver makes. The log goes to a captured
/// console when a test turns it on.
class SettingsFixture : public testing::Test {
protected:
  using Texts = std::vector<std::string>;

  SettingsFixture() : mOut(std::cout) {
    mHome.makeFolder("Orvaner\\Applications");
    rig::setEnvironment("USERPROFILE", mHome.backslashed());
  }
  ~SettingsFixture() override { gLogging.mIsLogToCnsl = gLogging.mIsCreation = gLogging.mIsTrace = false; }

  /// Text of the file with all values at their defaults.
  static std::string defaultText() {
    std::ifstream file(DEFAULT_SETTINGS, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    EXPECT_FALSE(text.empty());
    return text;
  }
  /// The keys of the file, in order.
  static Texts keys() {
    Texts all;
    const std::string text = defaultText();
    const std::regex line("\t(\\w+) ");
    for (std::sregex_iterator i(text.begin(), text.end(), line), end; i != end; ++i)
      all.push_back((*i)[1]);
    EXPECT_EQ(23u, all.size());
    return all;
  }
  /// The text with another value of a key, in the columns of the others.
  static std::string textWith(const std::string& key, const std::string& value,
                              std::string text = defaultText()) {
    const std::size_t start = text.find("= ", text.find("\t" + key + " ")) + 2;
    return text.replace(start, 50, value + std::string(50 - value.size(), ' '));
  }
  static std::string textWithout(const std::string& key) {
    std::string text = defaultText();
    const std::size_t start = text.find("\t" + key + " ");
    return text.erase(start, text.find('\n', start) + 1 - start);
  }

  void write(const std::string& text) const { mHome.write(kFile, text); }
  std::string read() const { return mHome.read(kFile); }
  std::string path() const { return mHome.backslashed(kFile); }

  static void turnLogOn() { gLogging.mIsLogToCnsl = gLogging.mIsCreation = gLogging.mIsTrace = true; }
  /// The records since the last call, each as "ERR text".
  Texts records() {
    Texts all;
    const std::regex start(
        "\\d\\d:\\d\\d:\\d\\d\\.\\d{3}\\|([A-Z]{3})\\| *\\d+\\|.{16}\\|.{5}\\|.{33}\\| (.*)");
    std::istringstream text(mOut.take());
    std::smatch parts;
    for (std::string line; std::getline(text, line);) {
      if (std::regex_match(line, parts, start))
        all.push_back(parts[1].str() + " " + parts[2].str());
      else if (!all.empty())
        all.back() += "\n" + line;
    }
    return all;
  }

  static constexpr char kFile[] = "Orvaner\\Applications\\autocad_addin.ini";
  rig::TempFolder mHome;
  rig::StreamCapture mOut;
};

#endif
