#include "utf8.h"

#include <gtest/gtest.h>

namespace {

using program::narrowed;
using program::widened;

TEST(Utf8Test, CharactersOfEachLengthGoThereAndBack) {
  const std::string text =
      "A\x7f \xC2\x80\xC3\xBC\xDF\xBF \xE0\xA0\x80\xE2\x82\xAC\xEF\xBF\xBF \xF0\x90\x80\x80\xF4\x8F\xBF\xBF";
  EXPECT_EQ(narrowed(widened(text)), text);
  EXPECT_EQ(widened("\xE2\x82\xAC"), std::wstring(1, static_cast<wchar_t>(0x20AC)));
}

TEST(Utf8Test, WhatIsNoCharacterIsReplaced) {
  const std::string mark = "\xEF\xBF\xBD";
  EXPECT_EQ(narrowed(widened("a\xFF.")), "a" + mark + ".");
  EXPECT_EQ(narrowed(widened("a\xE2\x82")), "a" + mark) << "cut off at the end";
  EXPECT_EQ(narrowed(widened("\xC3(")), mark + "(") << "the character behind stays";
  EXPECT_EQ(narrowed(widened("\xC0\xAF")), mark + mark) << "a longer form than needed is none";
  EXPECT_EQ(narrowed(widened("\xED\xA0\x80")), mark) << "half a pair in UTF-8";
  EXPECT_EQ(narrowed(std::wstring(1, static_cast<wchar_t>(0xD800))), mark) << "half a pair in wide text";
}

} // namespace
