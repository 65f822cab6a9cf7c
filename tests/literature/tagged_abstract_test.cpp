#include "literature/tagged_abstract.h"

#include <gtest/gtest.h>

#include <random>

#include "base/text.h"

namespace selvane::tests {

using Terms = std::vector<std::string>;

Terms TermsOf(const std::string& bytes) {
  Terms terms;
  ForEachTaggedTerm(bytes, [&terms](std::string_view term) { terms.emplace_back(term); });
  return terms;
}

// The same line by line: a mark that is not complete takes in the following lines, and only a line that is
// read while looking for a mark can end the abstract.
Terms PlainTermsOf(const std::string& bytes) {
  Terms lines;
  for (std::string_view rest = bytes; !rest.empty();) lines.emplace_back(NextLine(rest));
  Terms terms;
  std::size_t i = 0;
  while (i < lines.size() && lines[i].substr(0, 6) != "AB  - ") ++i;
  std::string line = i < lines.size() ? lines[i] : "";
  std::size_t at = 0;
  while (i < lines.size()) {
    const std::size_t mark = line.find("<DictTerm", at);
    if (mark == std::string::npos) {
      if (++i >= lines.size() || lines[i].substr(0, 6) == "AD  - ") break;
      line = lines[i];
      at = 0;
      continue;
    }
    std::size_t close = line.find("</DictTerm>", mark);
    while (close == std::string::npos && i + 1 < lines.size()) {
      line += "\n" + lines[++i];
      close = line.find("</DictTerm>", mark);
    }
    if (close == std::string::npos) break;
    const std::string element = line.substr(mark, close - mark);
    at = close + 11;
    const std::size_t attribute = element.find("DictCanon=");
    if (attribute == std::string::npos || attribute + 11 > element.size()) continue;
    const std::size_t end = element.find('"', attribute + 11);
    if (end == std::string::npos || end == attribute + 11) continue;
    terms.push_back(element.substr(attribute + 11, end - attribute - 11));
  }
  return terms;
}

TEST(TaggedAbstract, EqualsReadingLineByLine) {
  Terms pieces;  // parted by bars
  for (std::string_view rest =
           "\nAB  - |\nAD  - |\n      |<DictTerm DictCanon=\"A b\">|x</DictTerm>|</DictTerm>|<DictTerm|"
           ">| DictCanon=\"C\"|text < y|\n|\r\n|\"|AD  - |DictCanon=|";
       !rest.empty(); rest.remove_prefix(pieces.back().size() + 1))
    pieces.emplace_back(rest.substr(0, rest.find('|')));
  for (unsigned seed = 0; seed < 4000; ++seed) {
    std::mt19937 random(seed);
    std::string bytes = random() % 4 == 0 ? "AB  - " : "PMID- 1\nAB  - ";
    for (auto count = random() % 25; count > 0; --count) bytes += pieces[random() % pieces.size()];
    const Terms plain = PlainTermsOf(bytes);
    // A form over several lines is compared where it was wrapped in no odd place.
    const auto is_odd = [](const auto& t) { return t.find('\n') != t.npos || t[0] == ' '; };
    if (std::any_of(plain.begin(), plain.end(), is_odd)) continue;
    ASSERT_EQ(TermsOf(bytes), plain) << "seed " << seed << "\n" << bytes;
  }
}

TEST(TaggedAbstract, CleansForms) {
  const auto mark = [](const std::string& form) {
    return "AB  - \n<DictTerm DictCanon=\"" + form + "\">x</DictTerm>\n";
  };
  EXPECT_EQ(TermsOf(mark("Crohn's")), Terms{"Crohn s"});
  EXPECT_EQ(TermsOf(mark("Metabolic\r\n      Syndrome")), Terms{"Metabolic Syndrome"});
  EXPECT_EQ(TermsOf(mark("Sj\xF6gren")), Terms{"Sj\xC3\xB6gren"});
  EXPECT_EQ(TermsOf(mark("Sj\xC3\xB6gren")), Terms{"Sj\xC3\xB6gren"});
  EXPECT_EQ(TermsOf("\xEF\xBB\xBF" + mark("A")), Terms{"A"});
  std::string utf16 = "\xFF\xFE";
  for (const char c : mark("Sj\xF6gren")) utf16 += {c, '\0'};
  EXPECT_EQ(TermsOf(utf16), Terms{"Sj\xC3\xB6gren"});
  EXPECT_EQ(TermsOf(mark("A") + "AD  - \nAB  - \n" + mark("B")), Terms{"A"});  // the first abstract only
  EXPECT_EQ(TermsOf("no abstract <DictTerm DictCanon=\"A\">x</DictTerm>"), Terms{});
}

}  // namespace selvane::tests
