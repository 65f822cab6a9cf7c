#include "apriori/rule_generator.h"

#include <cmath>

#include "apriori/generalized_apriori.h"
#include "support/random_tables.h"

namespace selvane::tests {

using Items = std::vector<std::uint32_t>;

// Rules by looking every count up with a scan of its own, every subset tried.
class PlainGenerator {
 public:
  PlainGenerator(const std::string& file, std::uint32_t count, std::uint32_t rows, float confidence)
      : rows_(static_cast<float>(rows)), confidence_(confidence) {
    ItemsetFile reader;
    reader.OpenForReading(file);
    for (std::uint32_t i = 0; i < count; ++i) reader.ReadNext(records_.emplace_back());
  }

  Texts Run() {
    for (const ItemsetRecord& record : records_) {
      const std::size_t size = record.items.size();
      if (size < 2) continue;
      std::vector<std::vector<std::size_t>> level;
      for (std::size_t i = 0; i < size; ++i) level.push_back({i});
      for (std::size_t m = 1; m < size; ++m) {
        std::vector<std::vector<std::size_t>> next;
        for (const auto& consequent : level) {
          Try(record, consequent);
          for (std::size_t y = consequent.back() + 1; y < size; ++y) {
            next.push_back(consequent);
            next.back().push_back(y);
          }
        }
        level = std::move(next);
      }
    }
    return rules_;
  }

 private:
  std::uint32_t CountOf(const Items& items) const {
    for (const ItemsetRecord& record : records_) {
      if (record.items == items) return record.support_count;
    }
    return 0;
  }

  void Try(const ItemsetRecord& record, const std::vector<std::size_t>& consequent) {
    Items a, h;
    for (std::size_t i = 0; i < record.items.size(); ++i) {
      const bool in_h = std::find(consequent.begin(), consequent.end(), i) != consequent.end();
      (in_h ? h : a).push_back(record.items[i]);
    }
    const std::uint32_t count = CountOf(a);
    const auto support = static_cast<float>(record.support_count);
    const float confidence = count == 0 ? 0 : support / static_cast<float>(count);
    if (confidence < confidence_) return;
    rules_.push_back(fmt::format("{}-|{}-|{:.6f}|{:.6f}|{:.6f}|{:.6f}|{}|{}", fmt::join(a, "-"),
                                 fmt::join(h, "-"), support / rows_, confidence,
                                 static_cast<float>(count) / rows_, static_cast<float>(CountOf(h)) / rows_,
                                 a.size(), h.size()));
  }

  std::vector<ItemsetRecord> records_;
  float rows_, confidence_;
  Texts rules_;
};

void MakeStore(RulesStore& store) {
  fs::remove("rules.mdb");
  store.CreateRulesDatabase("rules.mdb", "Extracted");
  store.SetTargetTable("Extracted");
}

Texts StoredRules(RulesStore& store) {
  Texts rules;
  store.OpenRulesTable("Extracted");
  Rule rule;
  for (long i = 1; i <= store.CountRules(); ++i) {
    store.LoadRule(i, rule);
    rules.push_back(fmt::format("{}|{}|{:.6f}|{:.6f}|{:.6f}|{:.6f}|{}|{}", ItemsetToText(rule.antecedent),
                                ItemsetToText(rule.consequent), rule.support, rule.confidence, rule.pa,
                                rule.pc, rule.aspec, rule.cspec));
  }
  return rules;
}

class RuleGeneratorTest : public FolderTest {};

TEST_F(RuleGeneratorTest, EqualsLookingEveryCountUp) {
  std::size_t total = 0;
  for (unsigned seed = 0; seed < 60; ++seed) {
    RandomInput input(seed);
    SilentProgress progress;
    const ItemHierarchy hierarchy(input.taxonomy, ItemKind::kPositions);
    GeneralizedApriori engine(input.source, "T", input.taxonomy, hierarchy,
                              {.minimum_support = seed % 2 == 0 ? 0.2F : 0.4F, .generalize = seed % 3 != 0},
                              "sets.dat");
    const AprioriSummary found = engine.Run(progress);
    if (found.itemsets_written > 400) continue;  // the plain way is quadratic
    const float confidence = std::vector<float>{0.01F, 0.5F, 0.75F, 1.0F}[seed % 4];
    const Texts plain = PlainGenerator("sets.dat", found.itemsets_written, found.row_count, confidence).Run();
    total += plain.size();
    // In memory, in batches of some records, and in batches of one.
    const std::size_t budgets[][2] = {{1 << 20, 1}, {0, 20000}, {0, 1}};
    for (const auto& [file_budget, scan_budget] : budgets) {
      RulesStore store;
      MakeStore(store);
      RuleGenerator generator(confidence, input.taxonomy, found.row_count,
                              {"sets.dat", found.itemsets_written, file_budget, scan_budget, kMostRules});
      ASSERT_EQ(generator.Tally(progress).total(), plain.size()) << input.text;
      RecordingProgress recorded;
      ASSERT_EQ(generator.Generate(store, {}, recorded), static_cast<long>(plain.size()));
      ASSERT_EQ(recorded.steps, static_cast<int>(found.itemsets_written));
      ASSERT_EQ(StoredRules(store), plain) << input.text;
    }
  }
  EXPECT_GT(total, 3000U);
}

TEST_F(RuleGeneratorTest, ShowsLinesAndStopsWhereTheTableIsFull) {
  LoadText(NodeLine("Asthma", "C1") + NodeLine("Fever", "C2") + NodeLine("Cough", "C3"), "tax.mdb");
  const TaxonomyStore taxonomy("tax.mdb");
  ItemsetFile file;
  file.OpenForWriting("sets.dat");
  const std::vector<std::pair<Items, std::uint32_t>> records = {
      {{2}, 4}, {{4}, 4}, {{3}, 5}, {{2, 4}, 3}, {{2, 3}, 4}, {{4, 3}, 4}, {{2, 4, 3}, 3}};
  for (const auto& [items, support] : records) file.Write(items, support);
  file.Close();
  RulesStore store;
  MakeStore(store);
  Texts lines;
  RecordingProgress progress;
  RuleGenerator generator(0.75F, taxonomy, 5, {"sets.dat", 7, 1 << 20, 1 << 20, 7});
  const auto keep = [&](std::string_view line) { lines.emplace_back(line); };
  EXPECT_EQ(generator.Generate(store, keep, progress), 7);
  EXPECT_EQ(lines,
            (Texts{"Cough   => Asthma  ", "Asthma   => Cough  ", "Fever   => Asthma  ", "Asthma   => Fever  ",
                   "Fever   => Cough  ", "Cough   => Fever  ", "Cough AND Fever   => Asthma  "}));
  EXPECT_EQ(StoredRules(store)[3], "2-|3-|0.800000|1.000000|0.800000|1.000000|1|1");
}

// What is counted in the file is looked up in memory where it fits: a file that changes afterwards is not
// read for counts again, while scans see the change.
TEST_F(RuleGeneratorTest, KeepsCountsInMemoryWhereTheyFit) {
  LoadText(NodeLine("Asthma", "C1") + NodeLine("Fever", "C2"), "tax.mdb");
  const TaxonomyStore taxonomy("tax.mdb");
  for (const std::size_t file_budget : {std::size_t{1} << 20, std::size_t{0}}) {
    const auto write = [](std::uint32_t singles) {
      ItemsetFile file;
      file.OpenForWriting("sets.dat");
      for (const Items& items : {Items{2}, Items{3}}) file.Write(items, singles);
      file.Write(Items{2, 3}, 2);
      file.Close();
    };
    write(4);
    SilentProgress progress;
    RuleGenerator generator(0.1F, taxonomy, 5, {"sets.dat", 3, file_budget, 1 << 20, kMostRules});
    EXPECT_EQ(generator.Tally(progress).total(), 2U);
    write(2);
    RulesStore store;
    MakeStore(store);
    generator.Generate(store, {}, progress);
    EXPECT_EQ(StoredRules(store)[0], file_budget > 0 ? "3-|2-|0.400000|0.500000|0.800000|0.800000|1|1"
                                                     : "3-|2-|0.400000|1.000000|0.400000|0.400000|1|1");
  }
}

// Each threshold is the first of its steps at which no more rules stay than asked for.
TEST(RuleTally, NamesTheSmallestThresholdsThatFit) {
  std::mt19937 random(1);
  for (int run = 0; run < 600; ++run) {
    const auto row_count = static_cast<std::uint32_t>(1 + random() % (run % 3 == 0 ? 32767 : 700));
    RuleTally tally(row_count);
    std::vector<std::pair<float, float>> rules;  // support and confidence
    for (auto left = 1 + random() % 12; left > 0; --left) {
      const std::uint32_t below = random() % 3 == 0 ? std::min(row_count, 3U) : row_count;
      const auto antecedent = static_cast<std::uint32_t>(row_count - random() % below);
      const auto both =
          random() % 4 == 0 ? antecedent : static_cast<std::uint32_t>(1 + random() % antecedent);
      float confidence = static_cast<float>(both) / static_cast<float>(antecedent);
      if (random() % 2 == 0) {  // a step, or just below it: the product with 1000 may be rounded either way
        confidence = static_cast<float>(static_cast<double>(1 + random() % 1000) / 1000);
        if (random() % 2 == 0) confidence = std::nextafter(confidence, 0.0F);
      }
      tally.Add(confidence, both);
      rules.emplace_back(static_cast<float>(both) / static_cast<float>(row_count), confidence);
    }
    const std::size_t most = random() % rules.size();
    const auto smallest = [&](float std::pair<float, float>::*figure, int steps) -> std::optional<double> {
      for (int step = 0; step <= steps; ++step) {
        const double threshold = static_cast<double>(step) / steps;
        const auto kept = std::ranges::count_if(
            rules, [&](const auto& rule) { return rule.*figure >= static_cast<float>(threshold); });
        if (static_cast<std::size_t>(kept) <= most) return threshold;
      }
      return std::nullopt;
    };
    const FittingThresholds fitting = tally.Fitting(most);
    ASSERT_EQ(fitting.support, smallest(&std::pair<float, float>::first, 10000)) << run;
    ASSERT_EQ(fitting.confidence, smallest(&std::pair<float, float>::second, 1000)) << run;
  }
}

}  // namespace selvane::tests
