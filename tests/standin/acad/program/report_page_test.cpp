#include "report_page.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

TEST(ReportPageTest, DataStaysInItsElement) {
  for (const char* const text : {"</script><script>alert(1)</script>", "<!-- <script",
                                 "@@SCRIPT@@ @@SESSION@@", "\"\\\n\x1b", "not UTF-8: \xFF"}) {
    const std::string page = program::pageWith({{"log", text}});
    // A browser takes the text up to the first "</script".
    const std::string start = "<script type=\"application/json\" id=\"session\">";
    const std::size_t from = page.find(start) + start.size();
    const json back = json::parse(page.substr(from, page.find("</script", from) - from));
    const std::string log = back["log"];
    EXPECT_EQ(log, std::string(text).back() == '\xFF' ? "not UTF-8: \xEF\xBF\xBD" : text);
  }
}

TEST(ReportPageTest, NeedsNothingFromElsewhere) {
  const std::string page = program::pageWith(json::object());
  for (const char* const mark : {"@@", "https://", "src=", "@import", "url(", "import("})
    EXPECT_EQ(page.find(mark), std::string::npos) << mark;
  // The browser refuses whatever else would be fetched.
  EXPECT_NE(
      page.find(
          "default-src 'none'; script-src 'unsafe-inline'; style-src 'unsafe-inline'; img-src data: blob:"),
      std::string::npos);
}

} // namespace
