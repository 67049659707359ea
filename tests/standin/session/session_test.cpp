#include "counted_writer.h"
#include "session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using session::Action;
using session::Verb;
using session::Who;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

TEST(SessionTest, BadLineNamesItsPlace) {
  const std::pair<const char*, const char*> cases[] = {
      {"abc device zoom", "number: \"abc\""},
      {"nan device zoom", "time is out of range"},
      {"0.9 device zoom", "time is before that of the line above"},
      {"1 cap zoom", "unknown player \"cap\""},
      {"1 device motion 1 2 3 4 5 # 6", "c is missing"},
      {"1 device motion 1 2 3 4 5 6 7", "more than expected"},
      {"1 device motion 32768 0 0 0 0 0", "x is out of range"},
      {"1 device view up", "unknown view \"up\"; known: back, bottom, front, left, right, top"},
      {"1 host look 0 0 5 0 0 0 0 0 2", "up lies along"},
      {"p2 host fit", "the line above counts seconds"},
      {"p0 host fit", "pass is out of range"},
      {"1 host tick", "only a session that counts passes has ticks"}};
  for (const auto& [line, reason] : cases) {
    const session::Session found = session::parse(std::string("1 host wait\n\n") + line + "\n", "s");
    EXPECT_TRUE(found.mActions.empty()) << "nothing is played: " << line;
    EXPECT_THAT(found.mErrors, ElementsAre(AllOf(StartsWith("s:3: "), HasSubstr(reason)))) << line;
  }
}

TEST(SessionTest, LinesMayCountPasses) {
  const auto found =
      session::parse("p1 host wait\np7 device motion 0 0 300 0 0 0 # see\np7 host tick\n", "s");
  ASSERT_TRUE(found.isGood()) << found.mErrors.front();
  EXPECT_TRUE(found.isCounted());
  EXPECT_EQ(found.mActions[2].mPass, 7);
  EXPECT_EQ(found.mActions[2].mVerb, Verb::tick);
  EXPECT_FALSE(session::parse("1 host wait", "s").isCounted());
  for (const auto& [line, reason] : {std::make_pair("p6 host tick", "time is before that of the line above"),
                                     {"8 host wait", "the line above counts passes"},
                                     {"p8 device away 1", "has the samples that come of it"}})
    EXPECT_THAT(session::parse("p7 host wait\n" + std::string(line), "s").mErrors,
                ElementsAre(AllOf(StartsWith("s:2: "), HasSubstr(reason))));
}

TEST(SessionTest, WrittenPassesReadBack) {
  using Pass = session::CountedWriter::Pass;
  session::CountedWriter writer;
  writer.pass({{}, 0, false, {}, true, false});
  writer.host("type _ZOOM #3 \xC3\xA4");
  writer.pass({{0, 0, 300}, 0, false, {}, false, false});
  writer.pass({{0, 0, 300}, 13, true, {0x20009, 0x20023, 0x2000C}, false, true});
  writer.pass({{0, 1, 300}, 13, true, {}, false, false});
  writer.pass(Pass());
  const auto found = session::parse(writer.text(), "s");
  ASSERT_TRUE(found.isGood()) << found.mErrors.front();
  std::vector<std::string> lines;
  for (const Action& one : found.mActions) {
    lines.push_back(std::to_string(one.mPass) + " " + one.mSource);
    if (one.mWho == Who::device) {
      EXPECT_EQ(session::deviceLine(one), one.mSource);
    }
  }
  EXPECT_THAT(lines, ElementsAre("1 type _ZOOM #3 \xC3\xA4", "1 motion 0 0 300 0 0 0",
                                 "2 rotation 13 zoomall", "2 view front", "2 key 3", "2 zoom", "3 tick",
                                 "3 motion 0 1 300 0 0 0", "4 rotation 0", "4 motion 0 0 0 0 0 0", "5 wait"));
}

} // namespace
