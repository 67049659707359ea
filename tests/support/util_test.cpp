#include "util.h"

#include <atomic>
#include <ctime>
#include <regex>
#include <thread>

#include <gtest/gtest.h>

#include "temp_folder.h"

#ifndef _WIN32
namespace {
std::atomic<std::time_t> gTime{0}; // what time() gives; 0: the truth
}

extern "C" {
std::time_t __real_time(std::time_t* result);
std::time_t __wrap_time(std::time_t* result);

std::time_t __wrap_time(std::time_t* result) {
  const std::time_t now = gTime != 0 ? gTime.load() : __real_time(nullptr);
  if (result)
    *result = now;
  return now;
}
}
#endif

namespace {

TEST(UtilTest, OnMeansThatTheTextHoldsOn) {
  for (const char* const text : {"on", "none", "only", "on ", " son", "oon"})
    EXPECT_TRUE(Util::isOn(text)) << text;
  for (const char* const text : {"off", "ON", "On", "1", "true", "", "no", "o n"})
    EXPECT_FALSE(Util::isOn(text)) << text;
  EXPECT_EQ("on", Util::onOffText(true));
  EXPECT_EQ("off", Util::onOffText(false));
}

TEST(UtilTest, WidensByteByByte) {
  EXPECT_EQ(L"plain ASCII~\n", Util::toWide("plain ASCII~\n"));
  const std::wstring wide = Util::toWide(std::string("\x7F\x80\xC3\xFF\0x", 6));
  ASSERT_EQ(6u, wide.size());
  // Bytes are signed characters, and the sign goes up to the sixteenth bit and no further.
  const unsigned kExpected[] = {0x7F, 0xFF80, 0xFFC3, 0xFFFF, 0, 'x'};
  for (std::size_t i = 0; i < wide.size(); ++i)
    EXPECT_EQ(kExpected[i], static_cast<unsigned>(wide[i])) << i;
}

TEST(UtilTest, NarrowsWhatIsShortEnough) {
  EXPECT_EQ("SysTreeView32", Util::toNarrow(L"SysTreeView32"));
  EXPECT_EQ("", Util::toNarrow(L""));
  EXPECT_EQ("a b", Util::toNarrow(L"a\x4E2D"
                                  L"b"));
  const std::wstring longest(259, L'x');
  EXPECT_EQ(std::string(259, 'x'), Util::toNarrow(longest.c_str()));
  EXPECT_EQ("", Util::toNarrow((longest + L"x").c_str()));
}

TEST(UtilTest, TellsFilesFromFolders) {
  const rig::TempFolder folder;
  folder.write("plain.txt", "x");
  folder.makeFolder("sub folder");
  folder.makeFolder("dotted.folder");
  const struct {
    const char* name;
    bool isFile, isFolder;
  } kNames[] = {
      {"plain.txt", true, false},       {"sub folder", false, true},
      {"dotted.folder\\", false, true}, {"sub folder\\..\\plain.txt", true, false},
      {"missing", false, false},        {"missing\\plain.txt", false, false},
      {"plain.txt\\", false, false},
  };
  for (const auto& entry : kNames) {
    const std::string path = folder.backslashed() + "\\" + entry.name;
    EXPECT_EQ(entry.isFile, Util::fileExists(path)) << path;
    EXPECT_EQ(entry.isFolder, Util::folderExists(path)) << path;
  }
  EXPECT_FALSE(Util::fileExists(""));
  EXPECT_FALSE(Util::folderExists(""));
}

TEST(UtilTest, TheDateHasFifteenColumnsAndThoseOfTwoThreadsDontMix) {
  EXPECT_TRUE(std::regex_match(Util::getDate(), std::regex("[A-Z][a-z]{2} [A-Z][a-z]{2} [ \\d]\\d \\d{4}")));
#ifndef _WIN32
  // Noon, so that every time zone but a few is on the same day.
  gTime = 1793880000; // Thu Nov  5 2026, 12:00 UTC
  EXPECT_EQ("Thu Nov  5 2026", Util::getDate());
  gTime = 0;
#endif
  std::atomic<int> torn{0};
  const auto ask = [&] {
    for (int i = 0; i < 500; ++i)
      torn += Util::getDate().size() != 15;
  };
  std::thread other(ask);
  ask();
  other.join();
  EXPECT_EQ(0, torn);
}

TEST(UtilTest, ThePrefixHasThreeColumns) {
  const std::string method32 = "Class::" + std::string(25, 'm');
  const auto prefix = [](const char* file, int line, const char* className, const std::string& method) {
    return Util::logPrefix(file, line, className, method.c_str());
  };
  EXPECT_EQ("        util.cpp|    7| Global::f                       ",
            prefix("c:\\src\\util.cpp", 7, "Global", "f"));
  // Sixteen characters stand, seventeen don't; nor do 33 of the method.
  EXPECT_EQ("0123456789.hijkl| 1234| A::b                            ",
            prefix("a\\0123456789.hijkl", 1234, "A", "b"));
  EXPECT_EQ("*23456789.hijklm| 1234| A::b                            ",
            prefix("a\\0123456789.hijklm", 1234, "A", "b"));
  const std::string m25(25, 'm');
  EXPECT_EQ("               f|    1| Class::" + m25, prefix("f", 1, "Class", m25));
  EXPECT_EQ("               f|    1| *ass::" + m25 + "n", prefix("f", 1, "Class", m25 + "n"));
  // A slash is a character of the name here.
  EXPECT_EQ("    src/util.cpp| 12345| ::                              ",
            prefix("src/util.cpp", 12345, "", ""));
}

} // namespace
