#include "apriori/generalized_apriori.h"

#include <algorithm>
#include <fstream>
#include <optional>
#include <utility>

#include "apriori/frequent_items.h"
#include "apriori/level_writer.h"
#include "itemsets/item_registry.h"

namespace selvane {

namespace {

PairTable PairsOf(const Level& pairs, std::size_t items) {
  PairTable table(items);
  for (std::size_t i = 0; i < pairs.size(); ++i) table.Insert(pairs.Set(i)[0], pairs.Set(i)[1]);
  return table;
}

// Writes the level of single items and every level above it. An itemset never has as many items as were
// registered, even if all of them stand in every row. `unrelated` are the pairs that may be made, nullptr for
// all of them: at a higher level two items may join when they are a frequent pair, which leaves related ones
// out too.
SearchWork WriteLevels(Level level, const FrequentItems& items, const PairTable* unrelated,
                       std::size_t registered, LevelWriter& writer, Progress& progress) {
  SearchWork work;
  writer.Write(level);
  std::optional<PairTable> frequent_pairs;
  for (std::size_t k = 2; level.size() > 0 && k < registered; ++k) {
    level = NextLevel(level, items.level, frequent_pairs ? &*frequent_pairs : unrelated, work, progress);
    if (k == 2) frequent_pairs = PairsOf(level, items.nodes.size());
    writer.Write(level);
    // How many levels there will be is not known; each takes half of what is left of the bar.
    progress.SetPosition(90 - (70 >> std::min<std::size_t>(k - 2, 6)));
    progress.Pulse();
  }
  return work;
}

}  // namespace

GeneralizedApriori::GeneralizedApriori(TransactionSource& source, std::string table, float minimum_support,
                                       const TaxonomyStore& taxonomy, bool generalize,
                                       std::filesystem::path itemset_file)
    : source_(source),
      table_(std::move(table)),
      minimum_support_(minimum_support),
      taxonomy_(taxonomy),
      generalize_(generalize),
      itemset_path_(std::move(itemset_file)) {
  source_.ListItemFields(table_, item_names_);
}

AprioriSummary GeneralizedApriori::Run(Progress& progress) {
  std::ofstream("frequentItemset2.dat", std::ios::app).close();  // made when missing, never written to
  progress.SetRange(0, 100);
  progress.SetPosition(0);
  ItemRegistry registry =
      ReadItems(source_, table_, item_names_, taxonomy_, generalize_, minimum_support_, progress);
  const FrequentItems items = SelectFrequentItems(registry, minimum_support_, taxonomy_);
  progress.SetPosition(10);
  LevelWriter writer(itemset_path_, items.nodes);
  std::optional<PairTable> unrelated;
  if (generalize_ && registry.nodes.size() > 2) unrelated = UnrelatedPairs(items, taxonomy_);
  AprioriSummary summary;
  summary.work = WriteLevels(FirstLevel(items.level, items.support_counts), items,
                             unrelated ? &*unrelated : nullptr, registry.nodes.size(), writer, progress);
  writer.Close();
  summary.direct_items = std::move(registry.direct);
  summary.generalized_items = std::move(registry.generalized);
  summary.row_count = registry.row_count;
  summary.itemsets_written = writer.written();
  summary.single_items = static_cast<std::uint32_t>(items.nodes.size());
  summary.file_error = writer.error();
  progress.SetPosition(90);
  return summary;
}

}  // namespace selvane
