// What tests of both extractions share: terms.mdb with the table T, tax.mdb, and what a run tells and leaves.
#pragma once

#include "mining/apriori_extraction.h"
#include "mining/closed_extraction.h"
#include "rules/rules_info.h"
#include "support/random_tables.h"

namespace selvane::tests {

using Items = std::vector<std::int32_t>;

class ExtractionTest : public FolderTest {
 protected:
  ExtractionTest() {
    hooks_.choose_output = [this] { return output_; };
    hooks_.rule_line = [this](std::string_view line) { lines_.emplace_back(line); };
  }
  auto WithInput(const auto& extract) {
    lines_.clear();
    ItemsetFileHold hold(folder() / "state");
    TransactionSource source;
    source.Open("terms.mdb");
    TaxonomyStore taxonomy("tax.mdb");
    return extract(source, taxonomy, hold);
  }
  static void MakeTerms(const std::string& sql) {
    fs::remove("terms.mdb");
    MakeForeignDatabase("terms.mdb", sql);
  }
  AprioriReport ExtractAll(Progress& progress, bool generalize = true) {
    return WithInput([&](auto& source, auto& taxonomy, auto& hold) {
      return ExtractRules(source, taxonomy, hold, {.run = request_, .generalize = generalize}, hooks_,
                          progress);
    });
  }
  ClosedReport ExtractBases(Progress& progress) {
    return WithInput([&](auto& source, const auto& taxonomy, const auto& hold) {
      return ExtractClosedRules(source, taxonomy, hold, {.run = request_, .covers_only = covers_only_},
                                hooks_, progress);
    });
  }
  // The last texts before the run was stopped at one pulse or another, which leaves only its input.
  std::set<std::string> StagesInterrupted(const std::function<void(Progress&)>& extract) {
    std::set<std::string> stages;
    const std::string taxonomy = ReadFile("tax.mdb");
    for (int pulse = 0;; pulse += 1 + pulse / 10) {
      RecordingProgress stopping;
      stopping.interrupt_at = pulse;
      try {
        extract(stopping);
        return stages;
      } catch (const Interrupted&) {
        stages.insert(stopping.statuses.back());
        fs::remove("frequentItemset2.dat");  // of the search, which keeps it
        EXPECT_EQ(FileNames("."), (Texts{"state", "tax.mdb", "terms.mdb"})) << pulse;
        EXPECT_EQ(FileNames("state"), Texts{"ItemSets.lock"});
        EXPECT_TRUE(ReadFile("tax.mdb") == taxonomy) << pulse;
      }
    }
  }

  ExtractionRequest request_{.table = "T"};
  bool covers_only_ = true;
  ExtractionHooks hooks_;
  RulesOutput output_{"Run.mdb", ExistingFile::kReplace};
  Texts lines_;
  RecordingProgress progress_;
};

}  // namespace selvane::tests
