#include "taxonomy/taxonomy_store.h"

#include "taxonomy/missing_terms.h"
#include "taxonomy/taxonomy_files.h"

namespace selvane::tests {

using Nodes = std::vector<NodeNumber>;

class TaxonomyStoreTest : public FolderTest {
 protected:
  TaxonomyStoreTest() {
    LoadText(NodeLine("Diseases", "C") + NodeLine("Signs", "C2") +  // 1, 2
                 NodeLine("Crohn's", "C2.1;C23.7") +
                 NodeLine("Asthma", "C2.2;D9"),  // 3, 4 C.23, 5; 6, 7 D, 8
             "tax.mdb");
  }
};

TEST_F(TaxonomyStoreTest, FindsNodesAndPositions) {
  const TaxonomyStore store("tax.mdb");
  EXPECT_THROW(store.working().PositionOf(99), DatabaseError);
  EXPECT_EQ(store.AncestorsOfTerm("Asthma"), (Nodes{2, 1, 7}));
  EXPECT_EQ(store.TaxonomiesInUse(), Texts{"Diseases"});  // D has no name
  EXPECT_EQ(store.source().LargestNodeNamedIn("CxD"), 7);
  EXPECT_EQ(store.source().LargestNodeNamedIn(""), 0);
  // Children are found by name.
  EXPECT_EQ(store.Children(1).size(), 1U);  // the placeholder C.23 had no name to leave in its parent
  Texts codes;
  for (const auto& child : store.Children(2)) codes.push_back(child.code + child.term);
  EXPECT_EQ(codes, (Texts{"C.2.1Crohn s", "C.2.2Asthma"}));
}

TEST_F(TaxonomyStoreTest, MarksNodesUpToTheLargestAtOpening) {
  Database::Open("tax.mdb", OpenMode::kWritable)
      .Execute("UPDATE Taxonomy SET Index='2147483646' WHERE Canonical='Asthma' AND FatherId='D.9'");
  TaxonomyStore store("tax.mdb");
  SilentProgress progress;
  store.Prune({}, Nodes{7}, progress);  // the largest goes with D
  for (const NodeNumber node : {1, 8, 2147483646}) {
    EXPECT_FALSE(store.IsMarked(node)) << node;
    for (const bool marked : {true, false}) {
      store.Mark(node, marked);
      EXPECT_EQ(store.IsMarked(node), marked) << node;
    }
  }
  for (const NodeNumber node : {-1, 0, 2147483647}) {
    store.Mark(node, true);
    EXPECT_FALSE(store.IsMarked(node)) << node;
  }
  EXPECT_EQ(store.LargestIndex(), 2147483646);
}

TEST_F(TaxonomyStoreTest, TermThatStandsTwiceBelowANodeIsNamedTwice) {
  LoadText(NodeLine("Diseases", "C") + NodeLine("Fever", "C1;C2;D1"), "twice.mdb");
  const TaxonomyStore store("twice.mdb");
  const auto numbers = [](const std::vector<TaxonomyNode>& nodes) {
    Nodes found;
    for (const TaxonomyNode& node : nodes) found.push_back(node.number);
    return found;
  };
  EXPECT_EQ(numbers(store.Children(1)), (Nodes{2, 3, 2, 3}));
  EXPECT_EQ(numbers(store.DistinctChildren(1)), (Nodes{2, 3}));
}

TEST_F(TaxonomyStoreTest, WalksSubtreesByLevelsAndNotByTexts) {
  LoadText(NodeLine("Diseases", "C") + NodeLine("One", "C1") + NodeLine("Deep", "C1.2.3") +
               NodeLine("Twelve", "C12"),
           "deep.mdb");
  const TaxonomyStore store("deep.mdb");
  const std::tuple<const char*, int, Texts> cases[] = {
      {"C.1", 0, {"C.1", "C.1.2", "C.1.2.3"}},
      {"C.1", 1, {"C.1"}},
      {"C.1", 2, {"C.1", "C.1.2"}},
      {"C.12", 0, {"C.12"}},
      {"C", 2, {"C", "C.1", "C.12"}},
      {"", 1, {"C"}},
      {"", 0, {"C", "C.1", "C.1.2", "C.1.2.3", "C.12"}},
      {"C.", 0, {}},
  };
  for (const auto& [code, levels, expected] : cases) {
    Texts codes;
    store.working().ForEachBelow(code, levels, [&codes](const auto& node) { codes.push_back(node.code); });
    std::sort(codes.begin(), codes.end());
    EXPECT_EQ(codes, expected) << code << " " << levels;
  }
}

TEST_F(TaxonomyStoreTest, RendersWithTheLastAndCut) {
  const TaxonomyStore store("tax.mdb");
  const std::tuple<Nodes, std::string, std::string> cases[] = {
      {{6, 2}, "", "Asthma AND Signs  "},
      {{6}, "", "Asthma  "},
      {{2, 99}, "", "Signs  "},
      {{}, "", ""},
      {{99}, "prefilled", "prefilled"},
      {{99}, "An A here", "An ere"},  // the search for the last A does not know whose it is
  };
  for (auto [nodes, text, expected] : cases) {
    store.Render(nodes, text);
    EXPECT_EQ(text, expected);
  }
}

TEST_F(TaxonomyStoreTest, BringsBackWhatTermsNeed) {
  constexpr const char* kNodes = "SELECT Index,FatherId,Canonical FROM Taxonomy ORDER BY FatherId";
  const Texts before = Rows("tax.mdb", kNodes);
  Database::Open("tax.mdb", OpenMode::kWritable).Execute("DELETE * FROM Taxonomy WHERE FatherId Like 'C.2*'");
  const std::pair<Texts, Texts> cases[] = {
      {{}, {}},
      {{"Diseases", "Unknown"}, {}},  // one is there, the full taxonomy lacks the other
      {{"Signs", "Diseases", "Crohn's"}, {"Crohn s", "Signs"}},  // the last one missing first, each once
      {{"Crohn's", "Signs", "Crohn's"}, {"Signs", "Crohn s"}},
      {{"Asthma"}, {}},  // pruned at one position, it is still there at the other
  };
  {
    TaxonomyStore store("tax.mdb");
    SilentProgress progress;
    for (const auto& [terms, missing] : cases) EXPECT_EQ(FindMissingTerms(store, terms, progress), missing);
    { const RestoredTerms undone(store, {"Signs"}, progress); }
    EXPECT_EQ(FindMissingTerms(store, Texts{"Signs"}, progress), Texts{"Signs"});
    RestoredTerms(store, {"Signs"}, progress).Keep({});  // at C.2, whose text C.23 begins with too
    EXPECT_EQ(FindMissingTerms(store, Texts{"Signs", "Crohn's"}, progress), Texts{});
  }
  EXPECT_EQ(Rows("tax.mdb", kNodes), before);
  // They stand behind the others now, in the order of the full taxonomy.
  EXPECT_EQ(Rows("tax.mdb", "SELECT Index FROM Taxonomy ORDER BY rowid"),
            (Texts{"1", "7", "8", "2", "3", "4", "5", "6"}));
}

}  // namespace selvane::tests
