#include "util.h"

#include <ctime>

#include <gtest/gtest.h>

#include "temp_folder.h"

namespace {

TEST(UtilTest, OnIsAnyTextWithOn) {
  for (const char* const text : {"on", "none", " son"})
    EXPECT_TRUE(Util::isOn(text)) << text;
  for (const char* const text : {"off", "ON", "1", "", "no", "o n"})
    EXPECT_FALSE(Util::isOn(text)) << text;
  EXPECT_EQ("on off", Util::onOffText(true) + ' ' + Util::onOffText(false));
}

TEST(UtilTest, WidensByteByByte) {
  std::wstring expected = L"a~\x7F";
  for (const int c : {0xFF80, 0xFFC3, 0xFFFF, 0, 0x78}) // the sign fills sixteen bits
    expected += static_cast<wchar_t>(c);
  EXPECT_EQ(expected, Util::toWide(std::string("a~\x7F\x80\xC3\xFF\0x", 8)));
}

TEST(UtilTest, NarrowsShortTexts) {
  EXPECT_EQ("a b", Util::toNarrow(L"a\x4E2D\x62"));
  const std::wstring longest(259, L'x');
  EXPECT_EQ(std::string(259, 'x'), Util::toNarrow(longest.c_str()));
  EXPECT_EQ("", Util::toNarrow((longest + L"x").c_str()));
}

TEST(UtilTest, DistinguishesFilesFromFolders) {
  const rig::TempFolder folder;
  folder.write("plain.txt", "x");
  folder.makeFolder("a folder");
  const struct {
    const char* name;
    bool isFile, isFolder;
  } kNames[] = {{"\\plain.txt", true, false},
                {"\\a folder", false, true},
                {"\\a folder\\", false, true},
                {"\\missing", false, false},
                {"\\plain.txt\\", false, false}};
  for (const auto& entry : kNames) {
    EXPECT_EQ(entry.isFile, Util::fileExists(folder.backslashed() + entry.name)) << entry.name;
    EXPECT_EQ(entry.isFolder, Util::folderExists(folder.backslashed() + entry.name)) << entry.name;
  }
}

TEST(UtilTest, DateHasFifteenColumns) {
  const std::time_t now = std::time(nullptr);
  std::string expected = std::asctime(std::localtime(&now));
  EXPECT_EQ(expected.erase(11, 9).substr(0, 15), Util::getDate());
}

TEST(UtilTest, PrefixHasThreeColumns) {
  const std::string m25(25, 'm');
  const struct {
    const char* file;
    int line;
    std::string className, method, prefix;
  } kCases[] = {
      {"c:\\src\\util.cpp", 7, "Global", "f", "        util.cpp|    7| Global::f                       "},
      {"src/util.cpp", 12345, "", "", "    src/util.cpp| 12345| ::                              "},
      {"a\\0123456789.hijkl", 1, "Class", m25, "0123456789.hijkl|    1| Class::" + m25},
      {"a\\0123456789.hijklm", 1, "Class", m25 + "n", "*23456789.hijklm|    1| *ass::" + m25 + "n"}};
  for (const auto& c : kCases)
    EXPECT_EQ(c.prefix, Util::logPrefix(c.file, c.line, c.className.c_str(), c.method.c_str()));
}

} // namespace
