#include "taxonomy/term_finder.h"

#include "base/error.h"
#include "taxonomy/taxonomy_files.h"
#include "taxonomy/term_search.h"

namespace selvane::tests {

class TermFinderTest : public FolderTest {
 protected:
  // With a pruned term, and with entry terms and records that several headings share.
  TermFinderTest() {
    LoadText(NodeLine("Asthma", "C8.1;C9") + NodeLine("Crohn's", "C6") + NodeLine("Fever", "C23"), "tax.mdb");
    {
      Database database = Database::Open("tax.mdb", OpenMode::kWritable);
      HeadingWriter writer(database);
      writer.AddHeading({"D1", "Asthma", "Asthma", 1});
      writer.AddHeading({"D2", "Crohn s", "Crohn's", 1});
      writer.AddHeading({"D3", "Fever", "Fever", 1});
      for (const char* id : {"D1", "D2"}) writer.AddEntryTerm(id, "Shared's");
      writer.AddEntryTerm("D2", "Fever");
      for (const char* to : {"D2", "D3", "D9", "D1"}) writer.AddSupplementary("C1", "Syndrome", to);
      writer.AddSupplementary("C2", "Fever", "D1");
      for (const char* to : {"", "C1"}) writer.AddSupplementary("C3", "Nothing", to);
    }
    SilentProgress progress;
    TaxonomyStore store("tax.mdb");
    store.Prune({}, store.working().NodesOfTerm("Fever"), progress);
  }
  // "D1=Fever" for each term, "?pruned" and the like where there is none.
  static std::string Found(TermFinder& finder, const Texts& ids, std::string_view name) {
    const FoundTerms found = finder.Find(ids, name);
    std::string text;
    for (const TermNumber term : found.terms) text += (text.empty() ? "" : "; ") + finder.Text(term);
    const char* const misses[] = {"", "?id", "?name", "?no heading", "?pruned"};
    return text + misses[static_cast<int>(found.miss)];
  }
};

TEST_F(TermFinderTest, FindsByIdentifierThenByNameAndSaysWhyNot) {
  TermFinder finder(TaxonomyStore("tax.mdb"));
  struct {
    Texts ids;
    const char* name;
    const char* found;
  } const cases[] = {
      {{"D2"}, "Asthma", "Crohn s"},
      {{"D9", "D1", "D2", "D1"}, "", "Asthma; Crohn s"},
      {{"D9"}, "Crohn's", "Crohn s"},
      {{}, "Shared's", "Asthma"},
      {{"C1"}, "", "Crohn s; Asthma"},
      {{}, "Syndrome", "Crohn s; Asthma"},
      {{}, "Fever", "?pruned"},
      {{"D3"}, "Asthma", "?pruned"},
      {{"C3"}, "Asthma", "?no heading"},
      {{"D9"}, "", "?id"},
      {{"OMIM:1"}, "asthma", "?id"},
      {{}, "asthma", "?name"},
      {{"D3", "C2"}, "Crohn's", "Asthma"},
  };
  for (const auto& [ids, name, found] : cases)
    EXPECT_EQ(Found(finder, ids, name), found) << testing::PrintToString(ids) << name;
}

TEST_F(TermFinderTest, SearchesByAnythingThatIsKnownOfATerm) {
  const std::pair<const char*, const char*> cases[] = {
      {"c8.1", "Asthma:position C8.1"},
      {" C.23 ", "Fever:position C23"},
      {"d2", "Crohn s:identifier D2"},
      {"ASTH", "Asthma:part of name Asthma"},
      {"crohn's", "Crohn s:name Crohn s"},
      {"fever", "Fever:name Fever; Crohn s:entry term Fever; Asthma:supplementary Fever"},
      {"c1", "Asthma:supplementary Syndrome; Crohn s:supplementary Syndrome; Fever:supplementary Syndrome"},
      {"hared", "Asthma:part of entry term Shared's; Crohn s:part of entry term Shared's"},
      {"D9", ""},
  };
  const char* const ways[] = {"position",     "identifier",        "name", "entry term", "supplementary",
                              "part of name", "part of entry term"};
  const TaxonomyStore store("tax.mdb");
  for (const auto& [text, expected] : cases) {
    std::string found;
    for (const SearchedTerm& term : SearchTerms(store, text))
      found += (found.empty() ? "" : "; ") + term.term + ":" + ways[static_cast<int>(term.found_by)] + " " +
               term.found;
    EXPECT_EQ(found, expected) << text;
  }
  const SearchedTerm fever = SearchTerms(store, "fever").front();
  EXPECT_TRUE(fever.positions.front().is_pruned);
  EXPECT_FALSE(SearchTerms(store, "asthma").front().positions.back().is_pruned);
  EXPECT_THROW(SearchTerms(store, " "), InputError);
}

}  // namespace selvane::tests
