// Rules: storing and loading a full table, against one bound INSERT a row; counting over the prefix tree,
// against looking every count up.
#include "apriori/generalized_apriori.h"
#include "apriori/rule_generator.h"
#include "bench_input.h"
#include "data/bulk_insert.h"
#include "rules/rules_store.h"
#include "taxonomy/taxonomy_loading.h"

namespace selvane {
namespace {

Rule RuleAt(long i) {
  const auto n = static_cast<std::int32_t>(i);
  return {{n, n + 7}, {n % 90}, 0.05F, 0.75F, 0.06F, 0.2F, 2, 1};
}

void StoreRules(benchmark::State& state) {
  const BenchFolder folder;
  const std::vector<std::string> fields = {"INDEX", "ANTECEDENT", "CONSEQUENT", "SUPPORT", "CONFIDENCE",
                                           "PA",    "PC",         "ASPEC",      "CSPEC"};
  for ([[maybe_unused]] auto _ : state) {
    std::filesystem::remove(folder / "rules.mdb");
    std::filesystem::remove(folder / "plain.mdb");
    RulesStore store;
    store.CreateRulesDatabase(folder / "rules.mdb", "Extracted");
    store.SetTargetTable("Extracted");
    const double seconds = SecondsOf([&] {
      Transaction transaction(store.database());
      for (long i = 0; i < kMostRules; ++i) store.InsertRule(RuleAt(i));
      transaction.Commit();
    });
    RulesStore plain;
    plain.CreateRulesDatabase(folder / "plain.mdb", "Extracted");
    const double bound = SecondsOf([&] {
      Transaction transaction(plain.database());
      BulkInsert insert = plain.database().OpenBulkInsert("Extracted", fields);
      for (long i = 1; i <= kMostRules; ++i) {
        insert.Set(0, std::int64_t{i});
        for (int text = 1; text < 7; ++text) insert.Set(text, text < 3 ? "12-345-" : "0.050000");
        insert.Set(7, std::int64_t{2});
        insert.Set(8, std::int64_t{1});
        insert.Insert();
      }
      transaction.Commit();
    });
    store.OpenRulesTable("Extracted");
    Rule rule;
    const double loading = SecondsOf([&] {
      for (long i = 1; i <= kMostRules; ++i) store.LoadRule(i, rule);
    });
    state.counters["store_32767_s"] = seconds;
    state.counters["load_32767_s"] = loading;
    state.counters["ratio_to_bound_inserts"] = seconds / bound;
  }
}

void CountRules(benchmark::State& state) {
  const BenchFolder folder;
  SilentProgress progress;
  LoadTaxonomy(TaxonomyInput(folder), folder / "tax.mdb", ExistingFile::kReplace, progress);
  MakeTermTable(folder / "terms.mdb", LeafTerms(folder / "tax.mdb", 60), 2000, 12);
  const TaxonomyStore taxonomy(folder / "tax.mdb");
  TransactionSource source;
  source.Open(folder / "terms.mdb");
  GeneralizedApriori engine(source, "T", 0.2F, taxonomy, true, folder / "ItemSets.dat");
  const AprioriSummary found = engine.Run(progress);
  for ([[maybe_unused]] auto _ : state) {
    const auto tally = [&](std::size_t file_budget) {
      RuleGenerator generator(
          0.5F, taxonomy, found.row_count,
          {folder / "ItemSets.dat", found.itemsets_written, file_budget, 64 << 20, kMostRules});
      return generator.Tally(progress).total();
    };
    std::uint64_t rules = 0;
    const double tree = SecondsOf([&] { rules = tally(512 << 20); });
    const double lookups = SecondsOf([&] { tally(0); });
    state.counters["itemsets"] = found.itemsets_written;
    state.counters["rules"] = static_cast<double>(rules);
    state.counters["tree_s"] = tree;
    state.counters["ratio_to_lookups"] = tree / lookups;
  }
}

BENCHMARK(StoreRules)->Iterations(1)->Repetitions(3)->Unit(benchmark::kMillisecond);
BENCHMARK(CountRules)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace selvane

BENCHMARK_MAIN();
