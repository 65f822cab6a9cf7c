#include "mining/apriori_extraction.h"

#include <fmt/format.h>

#include "rules/rules_info.h"
#include "support/random_tables.h"

namespace selvane::tests {

using Texts = std::vector<std::string>;

class ExtractionTest : public FolderTest {
 protected:
  static constexpr const char* kTaxonomy =
      "<n canonical=\"Diseases\" type=\"c\" tree=\"C\"/>\n<n canonical=\"Lung\" type=\"d\" tree=\"C1\"/>\n"
      "<n canonical=\"Asthma\" type=\"d\" tree=\"C1.1\"/>\n<n canonical=\"Drugs\" type=\"c\" tree=\"D\"/>\n"
      "<n canonical=\"Steroid\" type=\"d\" tree=\"D1\"/>\n<n canonical=\"Smoking\" type=\"d\" "
      "tree=\"F1\"/>\n";
  ExtractionTest() {
    LoadText(kTaxonomy, "tax.mdb");
    MakeForeignDatabase("terms.mdb", R"(
        CREATE TABLE T("Index" SMALLINT, Asthma SMALLINT, Steroid SMALLINT, Smoking SMALLINT);
        INSERT INTO T VALUES (1,1,1,0),(2,1,1,0),(3,1,0,1),(4,0,1,0);)");
    hooks_.choose_output = [this] { return output_; };
    std::filesystem::remove("load.xml");
  }

  AprioriReport Extract(Progress& progress) {
    ItemsetFileHold hold(folder() / "state");
    TransactionSource source;
    source.Open("terms.mdb");
    TaxonomyStore taxonomy("tax.mdb");
    return ExtractRules(source, taxonomy, hold, {.run = request_}, hooks_, progress);
  }

  ExtractionRequest request_{.table = "T"};
  ExtractionHooks hooks_;
  RulesOutput output_{"Run.mdb"};
  RecordingProgress progress_;
};

TEST_F(ExtractionTest, StoresRulesAndTellsOfTheRun) {
  request_.min_support = 0.5F;
  request_.decimal_sign = ',';
  request_.itemset_copy = "copy.dat";
  Texts lines;
  hooks_.rule_line = [&lines](std::string_view line) { lines.emplace_back(line); };
  const ExtractionReport report = Extract(progress_).run;
  EXPECT_EQ(report.end, ExtractionEnd::kRules);
  EXPECT_EQ(lines.size(), static_cast<std::size_t>(report.rules_stored));
  EXPECT_EQ(lines.front(), "Steroid   => Asthma  ");
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
  EXPECT_GT(std::filesystem::file_size("copy.dat"), 50U);
}

TEST_F(ExtractionTest, LimitsAreNamedBeforeAnythingIsWritten) {
  const auto message = [this] { return MessageOf<InputError>([this] { Extract(progress_); }); };
  for (const float bad : {0.0F, -1.0F, 1.5F, std::nanf("")}) {
    request_.min_support = bad;
    EXPECT_NE(message().find("minimum support"), std::string::npos);
    request_ = {.table = "T", .min_support = 0.5F, .min_confidence = bad};
    EXPECT_NE(message().find("minimum confidence"), std::string::npos);
    request_ = {.table = "T"};
  }
  Database::Open("tax.mdb", OpenMode::kWritable)
      .Execute("UPDATE Taxonomy SET Index='100000' WHERE Canonical='Asthma'");
  EXPECT_NE(message().find("100000"), std::string::npos);
  for (const auto& [rows, told] : {std::pair(32767, "100000"), std::pair(32768, "32768 rows")}) {
    std::filesystem::remove("terms.mdb");
    MakeForeignDatabase("terms.mdb", fmt::format(R"(CREATE TABLE T("Index" SMALLINT, Asthma SMALLINT);
        WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < {})
        INSERT INTO T SELECT 1, 1 FROM n;)",
                                                 rows)
                                         .c_str());
    EXPECT_NE(message().find(told), std::string::npos) << rows;
  }
  EXPECT_FALSE(std::filesystem::exists("Run.mdb"));
  EXPECT_FALSE(std::filesystem::exists("InfoRun.dat"));
}

TEST_F(ExtractionTest, InterruptionsLeaveNothingHalfMade) {
  int ended = 0;
  for (int pulse = 0; ended == 0; ++pulse) {
    RecordingProgress stopping;
    stopping.interrupt_at = pulse;
    try {
      Extract(stopping);
      ++ended;
    } catch (const Interrupted&) {
      for (const std::string& name : FileNames(".")) {
        EXPECT_TRUE(name == "frequentItemset2.dat" || name == "state" || name == "tax.mdb" ||
                    name == "terms.mdb")
            << name << " at pulse " << pulse;
      }
      EXPECT_EQ(FileNames("state"), Texts{"ItemSets.lock"});
    }
    ASSERT_LT(pulse, 1000);
  }
}

TEST_F(ExtractionTest, OneRunAtATime) {
  const ItemsetFileHold first(folder() / "state");
  WriteText(first.path(), "of the first run");
  EXPECT_NE(MessageOf<FileError>([this] { Extract(progress_); }).find("another extraction"),
            std::string::npos);
  EXPECT_TRUE(std::filesystem::exists(first.path()));
}

}  // namespace selvane::tests
