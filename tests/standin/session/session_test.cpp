#include "session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using session::Verb;
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

} // namespace
