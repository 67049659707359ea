#include <windows.h>

#include <gtest/gtest.h>

TEST(TextTest, ReplacesWhatHasNoByte) {
  char narrow[5] = "####";
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"\xFC\u20ACy", -1, narrow, 4, " ", nullptr), 4);
  EXPECT_STREQ(narrow, "\xFC y");
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"abcd", -1, narrow, 4, " ", nullptr), 0) << "doesn't fit";
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"bcd", 1, narrow, 4, " ", nullptr), 1);
  EXPECT_STREQ(narrow, "b y") << "no terminator";
}
