#include "mining/apriori_extraction.h"

#include "mining/extraction_fixture.h"

namespace selvane::tests {

class AprioriExtractionTest : public ExtractionTest {
 protected:
  AprioriExtractionTest() {
    LoadText(NodeLine("Diseases", "C") + NodeLine("Lung", "C1") + NodeLine("Asthma", "C1.1") +
                 NodeLine("Drugs", "D") + NodeLine("Steroid", "D1") + NodeLine("Smoking", "F1"),
             "tax.mdb");
    MakeTerms(R"(CREATE TABLE T("Index" SMALLINT, Asthma SMALLINT, Steroid SMALLINT, Smoking SMALLINT);
        INSERT INTO T VALUES (1,1,1,0),(2,1,1,0),(3,1,0,1),(4,0,1,0);)");
  }
  void Refuses(const char* part) {
    ExpectFault<InputError>(part, [this] { ExtractAll(progress_); });
  }
};

TEST_F(AprioriExtractionTest, StoresRulesAndTellsOfTheRun) {
  request_.min_support = 0.5F;
  request_.decimal_sign = ',';
  request_.itemset_copy = "copy.dat";
  const ExtractionReport report = ExtractAll(progress_).run;
  EXPECT_EQ(report.end, ExtractionEnd::kRules);
  EXPECT_EQ(lines_.size(), static_cast<std::size_t>(report.rules_stored));
  EXPECT_EQ(lines_.front(), "Steroid   => Asthma  ");
  EXPECT_EQ(progress_.statuses, (Texts{"Checking items presence ...", "Searching for frequent itemsets...",
                                       "Completed!!", "Generating rules ....", "Completed!!"}));
  const RulesInfo info = ReadRulesInfo("Run.mdb");
  EXPECT_EQ((Texts{info.term_table, info.rows, info.min_support, info.min_confidence}),
            (Texts{"T", "4", "0,5", "0,5"}));
  EXPECT_EQ(info.taxonomies, (Texts{"Diseases", "Drugs"}));
  EXPECT_EQ(ItemsOfMap(info.first_map).size(), 3U);
  EXPECT_EQ(ItemsOfMap(info.second_map).size(), 4U);
  EXPECT_EQ(FileNames("."), (Texts{"InfoRun.dat", "Run.mdb", "copy.dat", "frequentItemset2.dat", "state",
                                   "tax.mdb", "terms.mdb"}));
  EXPECT_EQ(FileNames("state"), Texts{"ItemSets.lock"});
  EXPECT_GT(fs::file_size("copy.dat"), 50U);
}

TEST_F(AprioriExtractionTest, LimitsAreNamedBeforeAnythingIsWritten) {
  for (const float bad : {0.0F, -1.0F, 1.5F, std::nanf("")}) {
    request_.min_support = bad;
    Refuses("minimum support");
    request_ = {.table = "T", .min_support = 0.5F, .min_confidence = bad};
    Refuses("minimum confidence");
    request_ = {.table = "T"};
  }
  Database::Open("tax.mdb", OpenMode::kWritable)
      .Execute("UPDATE Taxonomy SET Index='100000' WHERE Canonical='Asthma'");
  Refuses("100000");
  for (const auto& [rows, told] : {std::pair(32767, "100000"), std::pair(32768, "32768 rows")}) {
    MakeTerms(
        fmt::format(R"(CREATE TABLE T("Index" SMALLINT, Asthma SMALLINT); WITH RECURSIVE n(i) AS (SELECT 1
        UNION ALL SELECT i + 1 FROM n WHERE i < {}) INSERT INTO T SELECT 1, 1 FROM n;)",
                    rows));
    Refuses(told);
  }
  EXPECT_FALSE(fs::exists("Run.mdb") || fs::exists("InfoRun.dat"));
}

TEST_F(AprioriExtractionTest, InterruptionsAndOtherRunsLeaveNothingHalfMade) {
  constexpr const char* kPrune = "DELETE * FROM Taxonomy WHERE Canonical='Asthma'";
  constexpr const char* kPruned = "SELECT Index FROM Taxonomy WHERE Canonical='Asthma'";
  Texts restored;
  hooks_.restored = [&restored](const std::string& term) { restored.push_back(term); };
  Database::Open("tax.mdb", OpenMode::kWritable).Execute(kPrune);
  output_.path.clear();  // told of after the search
  ExpectFault<DatabaseError>("no file was named", [this] { ExtractAll(progress_); });
  EXPECT_EQ(Rows("tax.mdb", kPruned), Texts{});
  output_.path = "Run.mdb";
  EXPECT_EQ(StagesInterrupted([this](Progress& stopping) { ExtractAll(stopping); }).size(), 3U);
  EXPECT_EQ(Rows("tax.mdb", kPruned), Texts{"3"});
  Database::Open("tax.mdb", OpenMode::kWritable).Execute(kPrune);
  request_.min_support = 1;  // nothing to extract
  ExtractAll(progress_);
  EXPECT_EQ(Rows("tax.mdb", kPruned), Texts{"3"});
  EXPECT_EQ(restored, (Texts{"Asthma", "Asthma"}));
  const ItemsetFileHold first(folder() / "state");
  WriteText(first.path(), "of the first run");
  ExpectFault<FileError>("another extraction", [this] { ExtractAll(progress_); });
  EXPECT_TRUE(fs::exists(first.path()));
}

}  // namespace selvane::tests
