// Frequent itemsets of 32,767 rows and 100 columns over a large taxonomy, ancestors included.
#include <fmt/format.h>

#include <random>

#include "apriori/generalized_apriori.h"
#include "bench_input.h"
#include "taxonomy/taxonomy_loading.h"

namespace selvane {
namespace {

struct Input {
  Input() {
    SilentProgress progress;
    LoadTaxonomy(TaxonomyInput(folder), folder / "tax.mdb", ExistingFile::kRefuse, progress);
    const std::vector<std::string> terms = LeafTerms(folder / "tax.mdb", 100);
    MakeTermTable(folder / "terms.mdb", terms, 32767, 16);
    MakeTermTable(folder / "half.mdb", terms, 16384, 16);
  }
  BenchFolder folder;
};

const Input& TheInput() {
  static const Input kInput;
  return kInput;
}

// Seconds of a loop that only intersects and counts: as many pairs of sets of the same length, taken at
// random from as many sets as the search has items.
double YardstickSeconds(const SearchWork& work, std::size_t sets) {
  const std::size_t words =
      static_cast<std::size_t>(work.words / std::max<std::uint64_t>(work.candidates, 1));
  RowBits bits(sets, words * 64);
  std::mt19937_64 random(3);
  // A quarter of the bits, as with items of middling support.
  const auto fewer_bits = [&random] {
    const std::uint64_t some = random();
    return some & random();
  };
  for (std::size_t set = 0; set < sets; ++set) {
    for (std::size_t i = 0; i < words; ++i) bits[set][i] = fewer_bits();
  }
  const RowBitsOperations operations = FastRowBitsOperations();
  return SecondsOf([&] {
    std::uint64_t sum = 0;
    std::size_t a = 0;
    std::size_t b = 1;
    for (std::uint64_t i = 0; i < work.candidates; ++i) {
      sum += operations.count_and(bits[a], bits[b], words);
      if (++b >= sets) {
        a = (a + 1) % sets;
        b = 0;
      }
    }
    benchmark::DoNotOptimize(sum);
  });
}

void Search(benchmark::State& state, const char* terms) {
  const Input& input = TheInput();
  const TaxonomyStore taxonomy(input.folder / "tax.mdb");
  TransactionSource source;
  source.Open(input.folder / terms);
  const float support = static_cast<float>(state.range(0)) / 1000;
  SilentProgress progress;
  for ([[maybe_unused]] auto _ : state) {
    const ItemHierarchy hierarchy(taxonomy, ItemKind::kPositions);
    GeneralizedApriori engine(source, "T", taxonomy, hierarchy, {.minimum_support = support},
                              input.folder / "ItemSets.dat");
    AprioriSummary found;
    const double seconds = SecondsOf([&] { found = engine.Run(progress); });
    const double yardstick = YardstickSeconds(found.work, found.single_items);
    state.counters["items"] = found.single_items;
    state.counters["itemsets"] = found.itemsets_written;
    state.counters["candidates"] = static_cast<double>(found.work.candidates);
    state.counters["search_s"] = seconds;
    state.counters["yardstick_s"] = yardstick;
    state.counters["ratio_to_counting_only"] = seconds / yardstick;
    state.counters["ns_per_itemset"] = seconds * 1e9 / found.itemsets_written;
  }
}

BENCHMARK_CAPTURE(Search, rows_32767, "terms.mdb")
    ->Arg(300)
    ->Arg(200)
    ->Arg(160)
    ->Arg(145)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Search, rows_16384, "half.mdb")
    ->Arg(200)
    ->Arg(160)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace selvane

BENCHMARK_MAIN();
