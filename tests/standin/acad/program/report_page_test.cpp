#include "report_page.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>

namespace {

using nlohmann::json;

/// What a browser would take for the element's text, which ends at the first "</script".
std::string elementText(const std::string& page) {
  const std::string start = "<script type=\"application/json\" id=\"session\">";
  const std::size_t from = page.find(start);
  EXPECT_NE(from, std::string::npos);
  const std::size_t to = page.find("</script", from);
  return page.substr(from + start.size(), to - from - start.size());
}

TEST(ReportPageTest, NothingInTheDataGetsOutOfItsElementOrStopsTheReport) {
  json session;
  session["log"] = {"</script><script>alert(1)</script>", "<!-- <script", "@@STYLE@@ @@SCRIPT@@ @@SESSION@@",
                    "]]>", "\"\\\n\x1b"};
  EXPECT_EQ(json::parse(elementText(program::reportPage(session))), session);
  session["log"] = {"a\xFF."}; // no text
  EXPECT_EQ(json::parse(elementText(program::reportPage(session)))["log"][0], "a\xEF\xBF\xBD.");
}

TEST(ReportPageTest, NeedsNothingFromElsewhere) {
  const std::string page = program::reportPage(json::object());
  EXPECT_EQ(page.find("@@"), std::string::npos) << "a place that was not filled";
  for (const char* const mark : {"http://", "https://", "src=", "@import", "url(", "<link", "import("})
    EXPECT_EQ(page.find(mark), std::string::npos) << mark;
}

TEST(ReportPageTest, RoundsThePictureAndLeavesTheRest) {
  json session;
  session["unix"] = 1700000000.123456;
  session["frames"] = {{{"t", 1.23456789012}, {"eye", {-0.000123456789, 1e300, 0.0}}, {"mode", 2}}};
  const json back = json::parse(elementText(program::reportPage(session)));
  EXPECT_EQ(back["unix"], session["unix"]);
  EXPECT_DOUBLE_EQ(back["frames"][0]["t"], 1.234568);
  EXPECT_DOUBLE_EQ(back["frames"][0]["eye"][0], -0.0001234568);
  // Not every system's library gets numbers of that size back to the last digit.
  EXPECT_NEAR(back["frames"][0]["eye"][1].get<double>() / 1e300, 1, 1e-9);
  EXPECT_EQ(back["frames"][0]["eye"][2], 0.0);
  EXPECT_EQ(back["frames"][0]["mode"], 2);
}

} // namespace
