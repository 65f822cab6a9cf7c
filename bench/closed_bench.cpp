// Both extractors, without ancestors, on 32,767 rows and 100 columns: from the term table to the rules
// database.
#include <filesystem>

#include "bench_input.h"
#include "mining/apriori_extraction.h"
#include "mining/closed_extraction.h"
#include "taxonomy/taxonomy_loading.h"

namespace selvane {
namespace {

struct Input {
  Input() {
    // The files of the search are left in the current folder.
    std::filesystem::current_path(folder / "");
    SilentProgress progress;
    MakeTaxonomy("taxonomy.xml", 8, 4);
    LoadTaxonomy("taxonomy.xml", "tax.mdb", ExistingFile::kRefuse, progress);
    const std::vector<std::string> terms = LeafTerms("tax.mdb", 100);
    MakeTermTable("themes.mdb", terms, 32767, 16);
    MakeCorrelatedTable("chains5.mdb", terms, 32767, 5, Correlation::kChains);
    MakeCorrelatedTable("chains10.mdb", terms, 32767, 10, Correlation::kChains);
    MakeCorrelatedTable("copies5.mdb", terms, 32767, 5, Correlation::kCopies);
  }
  BenchFolder folder;
};

void Extract(benchmark::State& state, const char* terms) {
  static const Input kInput;
  TransactionSource source;
  source.Open(terms);
  TaxonomyStore taxonomy("tax.mdb");
  const ExtractionRequest request{.table = "T", .min_support = static_cast<float>(state.range(0)) / 1000};
  ExtractionHooks hooks;
  hooks.choose_output = [] { return RulesOutput{"rules.mdb", ExistingFile::kReplace}; };
  SilentProgress progress;
  ItemsetFileHold hold(std::filesystem::current_path());
  for ([[maybe_unused]] auto _ : state) {
    ClosedReport closed;
    AprioriReport apriori;
    const double closed_seconds = SecondsOf(
        [&] { closed = ExtractClosedRules(source, taxonomy, hold, {.run = request}, hooks, progress); });
    const double apriori_seconds = SecondsOf([&] {
      apriori = ExtractRules(source, taxonomy, hold, {.run = request, .generalize = false}, hooks, progress);
    });
    state.counters["itemsets"] = apriori.itemsets;
    state.counters["closed_itemsets"] = static_cast<double>(closed.closed_itemsets);
    state.counters["generators"] = static_cast<double>(closed.generators);
    state.counters["rules"] = static_cast<double>(apriori.run.rules_found);
    state.counters["rules_of_the_bases"] = static_cast<double>(closed.run.rules_found);
    state.counters["closed_s"] = closed_seconds;
    state.counters["apriori_s"] = apriori_seconds;
    state.counters["closed_search_s"] = closed.run.search_seconds;
    state.counters["apriori_search_s"] = apriori.run.search_seconds;
    state.counters["ratio_to_apriori"] = closed_seconds / apriori_seconds;
  }
}

BENCHMARK_CAPTURE(Extract, chains_of_5, "chains5.mdb")
    ->Arg(50)
    ->Arg(20)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Extract, chains_of_10, "chains10.mdb")
    ->Arg(50)
    ->Arg(40)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Extract, copies, "copies5.mdb")
    ->Arg(80)
    ->Arg(50)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Extract, themes, "themes.mdb")
    ->Arg(50)
    ->Arg(10)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace selvane

BENCHMARK_MAIN();
