// A table of rows and one of sets that hold the same give the same files, to the byte.
#include "support/set_tables.h"

#include "filters/cover_filter.h"
#include "filters/rules_opening.h"
#include "mining/extraction_fixture.h"

namespace selvane::tests {

class SetTablesTest : public ExtractionTest {
 protected:
  // What either extraction and the cover filter make of terms.mdb, by names of files.
  std::map<std::string, std::string> Made() {
    std::map<std::string, std::string> made;
    for (const std::string run : {"general ", "direct ", "closed "}) {
      fs::copy_file("fresh.mdb", "tax.mdb", fs::copy_options::overwrite_existing);
      ExtractionReport report;
      if (run == "closed ") {
        report = ExtractBases(progress_).run;
      } else {
        report = ExtractAll(progress_, run == "general ").run;
        if (report.end == ExtractionEnd::kRules) made[run + "covers"] = Covers();
      }
      made[run] = fmt::format("{} rows, {} items, {} rules, end {}, {}", report.rows, report.items,
                              report.rules_found, static_cast<int>(report.end), fmt::join(lines_, ";"));
      for (const std::string& name : FileNames(".")) {
        if (name == "terms.mdb" || name == "fresh.mdb" || name == "state") continue;
        made[run + name] = ReadFile(name);
        fs::remove(name);
      }
    }
    return made;
  }
  std::string Covers() {
    RulesStore store;
    const TaxonomyStore taxonomy("tax.mdb");
    const RulesInfo info = OpenRulesForFiltering(store, taxonomy, "Run.mdb");
    store.SetSourceTable("Extracted");
    const RuleList rules(store, progress_);
    const ItemRegistry items = ReadTermTable("terms.mdb", info, {}, taxonomy, progress_);
    std::string text;
    for (const CoverFilter::Cover& cover : CoverFilter(rules, items).Run(progress_))
      text += fmt::format("{}: {};", cover.rows, fmt::join(cover.rules, ","));
    return text;
  }
};

TEST_F(SetTablesTest, GiveWhatTablesOfRowsGive) {
  request_.itemset_copy = "Copy.dat";
  std::set<std::string> seen;
  for (unsigned seed = 0; seed < 20; ++seed) {
    const std::string input = MakeRandomInput(seed);
    // Sets number their rows without a gap and once each.
    Database::Open("terms.mdb", OpenMode::kWritable).Execute("UPDATE T SET Index = rowid");
    fs::rename("tax.mdb", "fresh.mdb");
    request_.min_support = 0.1F * static_cast<float>(1 + seed % 5);
    const auto of_rows = Made();
    fs::rename("terms.mdb", "rows.mdb");
    MakeSetsOf("rows.mdb", "T", "terms.mdb");
    fs::remove("rows.mdb");
    ASSERT_EQ(Made(), of_rows) << input;
    for (const auto& [name, bytes] : of_rows) seen.insert(name);
  }
  EXPECT_EQ(seen.size(), 24U) << fmt::format("{}", fmt::join(seen, ","));
}

}  // namespace selvane::tests
