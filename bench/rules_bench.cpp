// Rules: storing and loading a full table, against a text and a SELECT for each rule; counting over the
// prefix tree, against looking every count up.
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

// The least that inserting takes: bound values, none of them computed.
double BoundInsertSeconds(const std::filesystem::path& path) {
  {
    RulesStore made;
    made.CreateRulesDatabase(path, "Extracted");
  }
  const std::vector<std::string> fields = {"INDEX", "ANTECEDENT", "CONSEQUENT", "SUPPORT", "CONFIDENCE",
                                           "PA",    "PC",         "ASPEC",      "CSPEC"};
  Database database = Database::Open(path, OpenMode::kWritable);
  return SecondsOf([&] {
    Transaction transaction(database);
    BulkInsert insert = database.OpenBulkInsert("Extracted", fields);
    for (long i = 1; i <= kMostRules; ++i) {
      insert.Set(0, std::int64_t{i});
      for (int text = 1; text < 7; ++text) insert.Set(text, text < 3 ? "12-345-" : "0.050000");
      insert.Set(7, std::int64_t{2});
      insert.Set(8, std::int64_t{1});
      insert.Insert();
    }
    transaction.Commit();
  });
}

// Each way is measured on a table of its own; the SQL texts of the first run inside a transaction too.
void StoreRules(benchmark::State& state) {
  const BenchFolder folder;
  SilentProgress progress;
  for ([[maybe_unused]] auto _ : state) {
    for (const char* name : {"rules.mdb", "plain.mdb"}) std::filesystem::remove(folder / name);
    RulesStore store;
    store.CreateRulesDatabase(folder / "rules.mdb", "ByText");
    store.SetTargetTable("ByText");
    const double by_text = SecondsOf([&] {
      store.InsertRules([&store](RuleBatch&) {
        for (long i = 0; i < kMostRules; ++i) store.InsertRule(RuleAt(i));
      });
    });
    const double in_bulk = SecondsOf([&] {
      store.SaveRulesTable("InBulk", [](RuleBatch& batch) {
        for (long i = 0; i < kMostRules; ++i) batch.Insert(RuleAt(i));
      });
    });
    Rule rule;
    store.OpenRulesTable("ByText");
    const double one_by_one = SecondsOf([&] {
      for (long i = 1; i <= kMostRules; ++i) store.LoadRule(i, rule);
    });
    const double walk = SecondsOf([&] { benchmark::DoNotOptimize(store.LoadRules(progress)); });
    state.counters["store_32767_s"] = in_bulk;
    state.counters["load_32767_s"] = walk;
    state.counters["ratio_to_texts"] = in_bulk / by_text;
    state.counters["ratio_to_single_loads"] = walk / one_by_one;
    state.counters["ratio_to_bound_inserts"] = in_bulk / BoundInsertSeconds(folder / "plain.mdb");
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
  const ItemHierarchy hierarchy(taxonomy, ItemKind::kPositions);
  GeneralizedApriori engine(source, "T", taxonomy, hierarchy, {.minimum_support = 0.2F},
                            folder / "ItemSets.dat");
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
