#include "base/text.h"

#include <gtest/gtest.h>

#include "base/shown_text.h"

namespace selvane::tests {

TEST(Text, DecodesEveryKindOfInput) {
  const std::pair<std::string, std::string> cases[] = {
      {"plain", "plain"},
      {"\xEF\xBB\xBFwith mark", "with mark"},
      {"Sj\xC3\xB6gren", "Sj\xC3\xB6gren"},
      {"Sj\xF6gren", "Sj\xC3\xB6gren"},  // code page 1252
      {"\x80 \x93q\x94", "\xE2\x82\xAC \xE2\x80\x9Cq\xE2\x80\x9D"},
      {"cut \xC3", "cut \xC3\x83"},                      // a sequence without its end is no UTF-8
      {"\xC0\xAF", "\xC3\x80\xC2\xAF"},                  // nor is one longer than it need be
      {"\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xE2\x82\xAC"},  // nor a surrogate
      {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
      {std::string("\xFF\xFES\0\xF6\0=\xD8\0\xDE", 10), "S\xC3\xB6\xF0\x9F\x98\x80"},
      {std::string("\xFE\xFF\0S\x20\xAC\xD8=\0", 9), "S\xE2\x82\xAC\xEF\xBF\xBD\xEF\xBF\xBD"},
  };
  for (const auto& [bytes, utf8] : cases) EXPECT_EQ(DecodeInput(bytes), utf8);
}

TEST(Text, EachEncodingHoldsWhatItCanAndMarksTheRest) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"\x7F", "\x7F", "\x7F"},
      {"\xC2\x80", "?", "\x80"},     // the byte of the euro sign in code page 1252
      {"\xC2\x81", "\x81", "\x81"},  // one that has no sign there
      {"\xC2\x9F\xC2\xA0\xC3\xBF", "?\xA0\xFF", "\x9F\xA0\xFF"},
      {"\xC4\x80", "?", "&#256;"},  // U+0100, whose low byte is 0
      {"\xC5\x92\xE2\x82\xAC", "\x8C\x80", "&#338;&#8364;"},
      {"a\xFF", "a?", "a?"}};
  for (const auto& [utf8, code_page_1252, latin1] : cases) {
    EXPECT_EQ(ToCodePage1252(utf8), code_page_1252) << latin1;
    EXPECT_EQ(ToLatin1(utf8), latin1);
  }
}

TEST(Text, IsShownWithoutPowerOverTerminalsAndSpreadsheets) {
  const std::pair<const char*, const char*> visible[] = {
      {"a\tb\n \xC5\xBC", "a\tb\n \xC5\xBC"},
      {"\x1B[2J\r\x7F", "\\x1b[2J\\x0d\\x7f"},
      {"\xC2\x9B\xC2\xA0\x9B\xC5", "\\x9b\xC2\xA0\\x9b\\xc5"}};
  for (const auto& [text, shown] : visible) EXPECT_EQ(Visible(text), shown);
  for (const char* const text : {"=1", "+a", "-inf", "-0.5 AND x", "@a", "\ta", "\ra", "\na"})
    EXPECT_EQ(Guarded(text), "'" + std::string(text));
  for (const char* const text : {"", "-0.5", "+1,5", "a=1", " -a"}) EXPECT_EQ(Guarded(text), text);
  const std::string longest(120, 'x');
  EXPECT_EQ(Shortened(longest), longest);
  EXPECT_EQ(Shortened(longest.substr(1) + "\xC5\xBC"), longest.substr(1) + "...");
}

TEST(Text, ListsNameThirtyAndCountTheRest) {
  const std::vector<std::string> names(32, "a, b");
  const auto listed = [&names](std::size_t count) { return Listed(std::span(names).first(count)); };
  EXPECT_EQ(listed(0), "");
  EXPECT_EQ(listed(2), "a, b; a, b");
  EXPECT_EQ(listed(30).size(), 30 * 6 - 2U);
  EXPECT_EQ(listed(31), listed(30) + " and 1 more");
  EXPECT_EQ(listed(32), listed(30) + " and 2 more");
}

TEST(Text, NumbersAreReadWithEitherSignAndWrittenWithTheUsers) {
  for (const char* const text : {"0.05", "0,05", " +5e-2 "}) EXPECT_EQ(NumberOf(text), 0.05) << text;
  for (const char* const text : {"", "1.2.3", "x", "0.5 of it", "+-1"}) EXPECT_FALSE(NumberOf(text)) << text;
  EXPECT_EQ(SingleText(0.05F), "0.05");
  EXPECT_EQ(SingleText(1.0F / 3, ','), "0,3333333");
  EXPECT_EQ(SingleText(1), "1");
  EXPECT_FALSE(Int32Of("2147483648"));
  EXPECT_FALSE(Int32Of("12a"));
  EXPECT_EQ(Int32Of(" -12"), -12);
}

}  // namespace selvane::tests
