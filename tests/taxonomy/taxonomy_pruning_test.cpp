#include "taxonomy/taxonomy_files.h"

namespace selvane::tests {

// What stays of the codes when each chosen node is pruned in turn, by walking all rows.
Texts PlainPrune(const std::vector<TaxonomyNode>& rows, const std::vector<NodeNumber>& chosen, bool upward) {
  std::vector<TaxonomyNode> left = rows;
  for (const NodeNumber number : chosen) {
    const auto node =
        std::find_if(left.begin(), left.end(), [&](const auto& row) { return row.number == number; });
    if (node == left.end()) continue;
    const std::string code = node->code;
    std::erase_if(left, [&](const TaxonomyNode& row) {
      return (upward ? code.find(row.code) : row.code.find(code)) != std::string::npos;
    });
  }
  Texts codes;
  codes.reserve(left.size());
  for (const auto& row : left) codes.push_back(row.code);
  return codes;
}

class TaxonomyPruningTest : public FolderTest {};

TEST_F(TaxonomyPruningTest, EqualsWalkingAllRowsAndRestores) {
  SilentProgress progress;
  for (unsigned seed = 0; seed < 40; ++seed) {
    std::mt19937 random(seed);
    const std::string lines = RandomTaxonomy(random, 15);
    LoadText(lines, "tax.mdb");
    const bool upward = seed % 2 == 0;
    const Texts before = Rows("tax.mdb", "SELECT * FROM Taxonomy");
    std::vector<TaxonomyNode> rows;
    std::vector<NodeNumber> chosen;
    {
      TaxonomyStore store("tax.mdb");
      store.working().ForEachNode([&rows](const TaxonomyNode& node) { rows.push_back(node); });
      for (int i = 0; i < 3; ++i) chosen.push_back(rows[random() % rows.size()].number);
      const std::vector<NodeNumber> none;
      store.Prune(upward ? chosen : none, upward ? none : chosen, progress);
    }
    ASSERT_EQ(Rows("tax.mdb", "SELECT FatherId FROM Taxonomy ORDER BY rowid"),
              PlainPrune(rows, chosen, upward))
        << "seed " << seed << "\n"
        << lines;
    RestoreTaxonomy("tax.mdb", progress);
    ASSERT_EQ(Rows("tax.mdb", "SELECT * FROM Taxonomy"), before) << "seed " << seed;
  }
}

TEST_F(TaxonomyPruningTest, ParentForgetsItsPrunedSon) {
  LoadText(
      NodeLine("Diseases", "C") + NodeLine("Fever", "C1") + NodeLine("Cough", "C2") + NodeLine("Pain", "C3"),
      "tax.mdb");
  {
    TaxonomyStore store("tax.mdb");
    SilentProgress progress;
    const NodeNumber cough = store.working().NodesOfTerm("Cough").at(0);
    EXPECT_EQ(store.Prune({}, std::vector<NodeNumber>{cough, 99}, progress), 1);
    EXPECT_EQ(store.Children(1).size(), 2U);
  }
  EXPECT_EQ(Rows("tax.mdb", "SELECT SON1,SON2,SON3 FROM Taxonomy WHERE FatherId='C'"), Texts{"Fever||Pain"});
  EXPECT_EQ(Rows("tax.mdb", "SELECT SON2 FROM Source WHERE FatherId='C'"), Texts{"Cough"});
}

TEST_F(TaxonomyPruningTest, InterruptedPruningAndRestoringChangeNothing) {
  LoadText(NodeLine("Diseases", "C") + NodeLine("Fever", "C1") + NodeLine("Cough", "C2"), "tax.mdb");
  RecordingProgress stopping;
  stopping.interrupt_at = 1;
  TaxonomyStore store("tax.mdb");
  EXPECT_THROW(store.Prune({}, std::vector<NodeNumber>{2, 3}, stopping), Interrupted);
  EXPECT_EQ(store.working().Count(), 3);
  SilentProgress progress;
  store.Prune({}, std::vector<NodeNumber>{2}, progress);
  RecordingProgress again;
  again.interrupt_at = 50;
  EXPECT_THROW(store.Rebuild(again), Interrupted);
  EXPECT_EQ(store.working().Count(), 2);
}

TEST_F(TaxonomyPruningTest, DamagedTablesLoseNothingAndCostNothing) {
  SilentProgress progress;
  LoadText(NodeLine("Diseases", "C") + NodeLine("Fever", "C1") + NodeLine("Cough", "C2"), "tax.mdb");
  Database::Open("tax.mdb", OpenMode::kWritable)
      .Execute("UPDATE Taxonomy SET FatherId='C.1'',FatherId) OR 1<(''1' WHERE Index='2'");
  EXPECT_EQ(TaxonomyStore("tax.mdb").Prune({}, std::vector<NodeNumber>{2}, progress), 1);
  Database::Open("tax.mdb", OpenMode::kWritable).Execute("DELETE * FROM Source");
  ExpectFault<DatabaseError>("Source is empty", [&] { RestoreTaxonomy("tax.mdb", progress); });
  EXPECT_EQ(Rows("tax.mdb", "SELECT Canonical FROM Taxonomy"), (Texts{"Cough", "Diseases"}));

  MakeForeignDatabase("long.mdb", R"(CREATE TABLE Source("Index", FatherId, Canonical);
      INSERT INTO Source VALUES ('1', 'C' || replace(hex(zeroblob(600)), '00', '.1'), 'Fever');
      CREATE TABLE Taxonomy AS SELECT * FROM Source;)");
  const TaxonomyStore store("long.mdb", OpenMode::kShared);
  const std::function<void()> calls[] = {[&] { store.AncestorsOfTerm("Fever"); },
                                         [&] { store.working().PositionOf(1); },
                                         [&] { store.working().Categories(); }};
  for (const auto& call : calls) ExpectFault<DatabaseError>("of 1201 bytes; at most 1000", call);
}

}  // namespace selvane::tests
