#include "taxonomy/term_finder.h"

#include "taxonomy/taxonomy_files.h"

namespace selvane::tests {

class TermFinderTest : public FolderTest {
 protected:
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
  LoadText(NodeLine("Asthma", "C8.1;C9") + NodeLine("Crohn's", "C6") + NodeLine("Fever", "C23"), "tax.mdb");
  {
    Database database = Database::Open("tax.mdb", OpenMode::kWritable);
    HeadingWriter writer(database);
    writer.AddHeading({"D1", "Asthma", "Asthma", 1});
    writer.AddHeading({"D2", "Crohn s", "Crohn's", 1});
    writer.AddHeading({"D3", "Fever", "Fever", 1});
    for (const char* id : {"D1", "D2"}) writer.AddEntryTerm(id, "Shared's");
    writer.AddEntryTerm("D2", "Fever");
    for (const char* heading : {"D2", "D3", "D9", "D1", "C1"})
      writer.AddSupplementary("C1", "Syndrome", heading);
    writer.AddSupplementary("C2", "Fever", "D1");
    writer.AddSupplementary("C3", "Nothing", "");
  }
  {
    SilentProgress progress;
    TaxonomyStore store("tax.mdb");
    store.Prune({}, store.working().NodesOfTerm("Fever"), progress);
  }
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

}  // namespace selvane::tests
