#include "session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using session::Action;
using session::Verb;
using session::Who;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// The one action of a line that has to be good.
Action action(const std::string& line) {
  const session::Session found = session::parse(line, "s");
  EXPECT_THAT(found.mErrors, ElementsAre()) << line;
  EXPECT_EQ(found.mActions.size(), 1u) << line;
  return found.mActions.empty() ? Action{} : found.mActions.front();
}

/// The one error of a text that has to be bad; checks that nothing of it would be played.
std::string errorOf(const std::string& text) {
  const session::Session found = session::parse(text, "s");
  EXPECT_TRUE(found.mActions.empty()) << text;
  EXPECT_EQ(found.mErrors.size(), 1u) << text;
  return found.mErrors.empty() ? "" : found.mErrors.front();
}

TEST(SessionTest, keepsOrderPlayersTimesAndLineNumbers) {
  const auto found = session::parse("\xEF\xBB\xBF# a comment\r\n"
                                    "\r\n"
                                    "0.5\tdevice  motion 0 -1 300 32767 -32768 7   # comment\r\n"
                                    "0.5 host wait\n"
                                    "  6e0 host fit",
                                    "s");
  ASSERT_TRUE(found.isGood()) << found.mErrors.front();
  ASSERT_EQ(found.mActions.size(), 3u);
  EXPECT_EQ(found.mActions[0].mLine, 3);
  EXPECT_EQ(found.mActions[2].mLine, 5);
  EXPECT_EQ(found.mActions[0].mSeconds, 0.5);
  EXPECT_EQ(found.mActions[2].mSeconds, 6.0);
  EXPECT_THAT(found.mActions[0].mAxes, ElementsAre(0, -1, 300, 32767, -32768, 7));
  ASSERT_EQ(found.actionsOf(Who::host).size(), 2u);
  EXPECT_EQ(found.actionsOf(Who::host)[1].mVerb, Verb::fit);
  EXPECT_EQ(found.actionsOf(Who::device).size(), 1u);
}

TEST(SessionTest, deviceVerbsCarryTheirEventCodes) {
  const std::pair<const char*, int> cases[] = {
      {"view front", 0x20009},  {"view right", 0x2000A},
      {"view top", 0x2000B},    {"zoom", 0x2000C},
      {"mode", 0x20013},        {"view back", 0x20016},
      {"view left", 0x20017},   {"view bottom", 0x20018},
      {"key 0", 0x20020},       {"key 100000", 231104},
      {"rotation 13", 0x20001}, {"event 0x2001F", 131103},
      {"event 0", 0},           {"event 0x7fffffff", 2147483647},
  };
  for (const auto& [text, code] : cases)
    EXPECT_EQ(action(std::string("1 device ") + text).mEventCode, code) << text;
  const std::pair<int, const char*> names[] = {
      {0x20016, "back"}, {0x2000C, "zoom"}, {0x20020, "key 0"}, {0x2001F, "0x2001f"}, {0, "0x0"}};
  for (const auto& [code, name] : names)
    EXPECT_EQ(session::eventName(code), name);

  EXPECT_EQ(action("1 device rotation 13").mRotationCode, 13);
  EXPECT_FALSE(action("1 device rotation 13").mIsOn);
  EXPECT_TRUE(action("1 device rotation -2 zoomall # now").mIsOn);
  EXPECT_EQ(action("1 device away 0.25").mDuration, 0.25);
}

TEST(SessionTest, hostVerbsCarryTheirArguments) {
  EXPECT_THAT(action("1 host select 4 1 # two").mObjects, ElementsAre(4, 1));
  EXPECT_EQ(action("1 host select 4").mSelection, session::Selection::objects);
  EXPECT_EQ(action("1 host select all").mSelection, session::Selection::all);
  EXPECT_EQ(action("1 host select none").mSelection, session::Selection::none);
  EXPECT_EQ(action("1 host select line").mSelection, session::Selection::line);
  EXPECT_EQ(action("1 host type  _ZOOM #3  \xC3\xA4 \t").mText, "_ZOOM #3  \xC3\xA4");
  EXPECT_EQ(action("1 host caption #1 push").mText, "#1 push");
  EXPECT_TRUE(action("1 host layout on").mIsOn);
  EXPECT_FALSE(action("1 host perspective off").mIsOn);
  EXPECT_EQ(action("1 host pointer wheel").mPointer, session::Pointer::wheel);
  EXPECT_THAT(action("1 host look 1 2 3 0 0 -1.5 0 1 0").mLook, ElementsAre(1, 2, 3, 0, 0, -1.5, 0, 1, 0));
}

TEST(SessionTest, aBadLineNamesFileLineAndReason) {
  const std::pair<const char*, const char*> cases[] = {
      {"abc device zoom", "time is no number: \"abc\""},
      {"-1 device zoom", "time is out of range"},
      {"nan device zoom", "time is out of range"},
      {"86401 device zoom", "time is out of range"},
      {"1", "player is missing"},
      {"1 cap zoom", "unknown player \"cap\""},
      {"1 device", "verb is missing"},
      {"1 device wobble", "unknown device verb \"wobble\""},
      {"1 host key 1", "unknown host verb \"key\""},
      {"1 device motion 1 2 3 4 5 # 6", "c is missing"},
      {"1 device motion 1 2 3 4 5 6 7", "more than expected"},
      {"1 device motion 32768 0 0 0 0 0", "x is out of range"},
      {"1 device motion 0 1.5 0 0 0 0", "y is no whole number"},
      {"1 device key 100001", "key is out of range"},
      {"1 device event 0x80000000", "event code is out of range"},
      {"1 device event 0x", "event code is no whole number"},
      {"1 device event 99999999999999999999", "event code is out of range"},
      {"1 device rotation 1 zoom", "unknown option \"zoom\"; known: zoomall"},
      {"1 device view up", "unknown view \"up\"; known: back, bottom, front, left, right, top"},
      {"1 device away -1", "seconds is out of range"},
      {"1 host select", "object number, all, none or line is missing"},
      {"1 host select 1 all", "object number is no whole number"},
      {"1 host select 0", "object number is out of range"},
      {"1 host layout On", "unknown state \"On\""},
      {"1 host type", "text is missing"},
      {"1 host look 1 2 3 4 5 6 7 8", "up z is missing"},
      {"1 host look 1 2 3 1 2 3 0 0 1", "same point"},
      {"1 host look 0 0 5 0 0 0 0 0 0", "up has no length"},
      {"1 host look 0 0 5 0 0 0 0 0 2", "up lies along"},
      {"1 host type a\x01z", "control character 1"},
      {"1 host type \xC3(", "no UTF-8"},
      {"1 host type \xED\xA0\x80", "no UTF-8"},
      {"1 host type \xC3", "no UTF-8"},
  };
  for (const auto& [line, reason] : cases) {
    const std::string error = errorOf(std::string("0 host wait\n\n") + line + "\n");
    EXPECT_THAT(error, StartsWith("s:3: ")) << line;
    EXPECT_THAT(error, HasSubstr(reason)) << line;
  }
}

TEST(SessionTest, whatManyLinesOrLongOnesDo) {
  EXPECT_THAT(errorOf("2 host wait\n1.9 device zoom\n2 host fit\n"), StartsWith("s:2: time is before"));
  std::string text = "0 host wait\n";
  for (int i = 0; i < 30; ++i)
    text += "1 device wobble\n";
  const auto found = session::parse(text, "s");
  EXPECT_TRUE(found.mActions.empty());
  ASSERT_EQ(found.mErrors.size(), 20u);
  EXPECT_THAT(found.mErrors[19], StartsWith("s:21: "));
  std::string word = "a";
  for (int i = 0; i < 5000; ++i)
    word += "\xC3\xA4"; // the cut would fall between these two bytes
  const std::string error = errorOf("1 device " + word);
  EXPECT_LT(error.size(), 100u);
  EXPECT_THAT(error, HasSubstr("\xC3\xA4...\""));
}

TEST(SessionFileTest, readsAFileAndNamesItInErrors) {
  const auto folder = std::filesystem::temp_directory_path();
  const std::string path = (folder / "ov_session_test").string();
  const auto readBack = [&path](const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
    return session::read(path);
  };
  std::string full = "1 device zoom\n";
  full.resize(session::kMaxFileBytes, '\n');
  EXPECT_EQ(readBack(full).mActions.size(), 1u);
  EXPECT_THAT(readBack(full + "\n").mErrors, ElementsAre(HasSubstr("larger than 10 MB")));
  EXPECT_THAT(readBack("1 device zoom\noops\n").mErrors, ElementsAre(StartsWith(path + ":2: ")));
  EXPECT_THAT(readBack(std::string("a\0\n1 device zoom\n", 17)).mErrors,
              ElementsAre(HasSubstr("not a text file")));
  std::filesystem::remove(path);
  EXPECT_THAT(session::read(path).mErrors, ElementsAre(HasSubstr("can't be opened")));
  EXPECT_THAT(session::read(folder.string()).mErrors, ElementsAre(HasSubstr("is a folder")));
  EXPECT_TRUE(session::parse("", "s").isGood());
}

TEST(SessionDeviceLineTest, readsDeviceLinesWithoutTime) {
  Action found;
  std::string error = "old";
  ASSERT_TRUE(session::parseDeviceLine("motion 1 2 3 4 5 6\r", found, error));
  EXPECT_EQ(error, "");
  const std::pair<const char*, const char*> cases[] = {{"  # nothing", ""},
                                                       {"key x", "key is no whole number: \"x\""},
                                                       {"fit", "unknown device verb \"fit\""}};
  for (const auto& [line, reason] : cases) {
    EXPECT_FALSE(session::parseDeviceLine(line, found, error));
    EXPECT_EQ(error, reason);
  }
  EXPECT_THAT(found.mAxes, ElementsAre(1, 2, 3, 4, 5, 6)) << "a bad line leaves the action as it was";
}

} // namespace
