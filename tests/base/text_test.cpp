#include "base/text.h"

#include <gtest/gtest.h>

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
  };
  for (const auto& [bytes, utf8] : cases) EXPECT_EQ(DecodeInput(bytes), utf8);
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
