#include "apriori/generalized_apriori.h"

#include <algorithm>
#include <fstream>
#include <optional>
#include <utility>

#include "apriori/level_writer.h"

namespace selvane {

namespace {

PairTable PairsOf(const Level& pairs, std::size_t items) {
  PairTable table(items);
  for (std::size_t i = 0; i < pairs.size(); ++i) table.Insert(pairs.Set(i)[0], pairs.Set(i)[1]);
  return table;
}

// Writes the level of single items and every level above it, up to itemsets of so many items. `unrelated` are
// the pairs that may be made, nullptr for all of them: at a higher level two items may join when they are a
// frequent pair, which leaves related ones out too.
SearchWork WriteLevels(Level level, const FrequentItems& items, const PairTable* unrelated,
                       std::size_t largest, LevelWriter& writer, Progress& progress) {
  SearchWork work;
  writer.Write(level);
  std::optional<PairTable> frequent_pairs;
  for (std::size_t k = 2; level.size() > 0 && k <= largest; ++k) {
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

GeneralizedApriori::GeneralizedApriori(TransactionSource& source, std::string table,
                                       const TaxonomyStore& taxonomy, const ItemHierarchy& hierarchy,
                                       SearchOptions options, std::filesystem::path itemset_file)
    : source_(source),
      table_(std::move(table)),
      taxonomy_(taxonomy),
      hierarchy_(hierarchy),
      options_(std::move(options)),
      itemset_path_(std::move(itemset_file)) {
  source_.ListItemFields(table_, item_names_);
}

FrequentItems GeneralizedApriori::ReadFrequentItems(Progress& progress) {
  // Rounded down, so that no rarer item is missed for a last bit.
  const auto share = static_cast<float>(options_.keep_share > 0 ? options_.keep_share * 0.9999 : 1);
  kept_.registry = ReadItems(source_, table_, item_names_, hierarchy_,
                             {.generalize = options_.generalize,
                              .minimum_support = options_.minimum_support * share,
                              .witnesses = options_.distinct_witnesses},
                             progress);
  ItemRegistry& registry = kept_.registry;
  FrequentItems items = SelectFrequentItems(registry,
                                            {.minimum_support = options_.minimum_support,
                                             .left_out = options_.left_out,
                                             .only = options_.only,
                                             .keep_rows = options_.keep_share > 0},
                                            taxonomy_);
  for (const std::size_t place : registry.frequent) kept_.nodes.push_back(registry.nodes[place]);
  if (options_.distinct_witnesses) {
    kept_.witnesses.emplace(registry.columns, item_names_.size(), registry.terms);
    items.level.witnesses = &*kept_.witnesses;
  }
  return items;
}

// Of positions, an itemset never has as many items as were registered, even if all of them stand in every
// row.
std::size_t GeneralizedApriori::LargestItemset() const {
  const std::size_t registered = kept_.registry.nodes.size();
  const bool is_short = hierarchy_.kind() == ItemKind::kPositions && registered > 0;
  const std::size_t largest = is_short ? registered - 1 : registered;
  return options_.max_size > 0 ? std::min(largest, options_.max_size) : largest;
}

AprioriSummary GeneralizedApriori::Run(Progress& progress) {
  std::ofstream("frequentItemset2.dat", std::ios::app).close();  // made when missing, never written to
  progress.SetRange(0, 100);
  progress.SetPosition(0);
  FrequentItems items = ReadFrequentItems(progress);
  items.level.witnessed = items.known;
  progress.SetPosition(10);
  LevelWriter writer(itemset_path_, items.nodes);
  std::optional<PairTable> unrelated;
  if (hierarchy_.kind() == ItemKind::kTerms) {
    unrelated = UnrelatedPairs(items, hierarchy_);
  } else if (options_.generalize && kept_.registry.nodes.size() > 2) {
    unrelated = UnrelatedPairs(items, taxonomy_);
  }
  AprioriSummary summary;
  summary.work = WriteLevels(FirstLevel(items.level, items.support_counts), items,
                             unrelated ? &*unrelated : nullptr, LargestItemset(), writer, progress);
  writer.Close();
  summary.direct_items = kept_.registry.direct;
  summary.generalized_items = kept_.registry.generalized;
  summary.row_count = kept_.registry.row_count;
  summary.itemsets_written = writer.written();
  summary.single_items = static_cast<std::uint32_t>(items.nodes.size());
  summary.file_error = writer.error();
  progress.SetPosition(90);
  return summary;
}

}  // namespace selvane
