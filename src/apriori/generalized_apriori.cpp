#include "apriori/generalized_apriori.h"

#include <algorithm>
#include <bit>
#include <fstream>
#include <numeric>
#include <optional>

#include "base/error.h"
#include "itemsets/least_rows.h"

namespace selvane {

namespace {

// The pairs of nodes of which neither position code occurs in the other. A plain substring test: C.2 counts
// as related to C.23, and an empty code to all.
PairTable UnrelatedPairs(std::span<const NodeNumber> nodes, const TaxonomyStore& taxonomy) {
  std::vector<std::string> codes;
  codes.reserve(nodes.size());
  for (const NodeNumber node : nodes) codes.push_back(taxonomy.FatherCode(node));
  PairTable pairs(codes.size());
  for (std::uint32_t a = 0; a < codes.size(); ++a) {
    for (std::uint32_t b = 0; b < a; ++b) {
      const bool related =
          codes[a].find(codes[b]) != std::string::npos || codes[b].find(codes[a]) != std::string::npos;
      if (!related) pairs.Insert(a, b);
    }
  }
  return pairs;
}

PairTable PairsOf(const Level& pairs, std::size_t items) {
  PairTable table(items);
  for (std::size_t i = 0; i < pairs.size(); ++i) table.Insert(pairs.Set(i)[0], pairs.Set(i)[1]);
  return table;
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

std::vector<std::uint32_t> GeneralizedApriori::SelectSingleItems() {
  std::vector<std::uint32_t> support_counts;
  std::vector<std::size_t> chosen;
  known_.least_rows = std::max(1U, LeastRows(minimum_support_, registry_.row_count));
  const std::size_t words = registry_.rows.words();
  for (std::size_t i = 0; i < registry_.nodes.size(); ++i) {
    const RowWord* const rows = registry_.rows[i];
    const auto count = std::accumulate(rows, rows + words, 0U, [](std::uint32_t sum, RowWord word) {
      return sum + static_cast<std::uint32_t>(std::popcount(word));
    });
    if (count < known_.least_rows) continue;
    chosen.push_back(i);
    nodes_.push_back(registry_.nodes[i]);
    support_counts.push_back(count);
  }
  known_.rows = RowBits(chosen.size(), words * 64);
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    std::copy_n(registry_.rows[chosen[i]], words, known_.rows[i]);
    // A row whose id is 0 counts for single items and gets lost in every intersection.
    if (registry_.zero_row != SIZE_MAX) known_.rows.Clear(i, registry_.zero_row);
  }
  registry_.rows = RowBits();
  return support_counts;
}

void GeneralizedApriori::RankItems() {
  std::vector<std::string> texts;
  for (const NodeNumber node : nodes_) texts.push_back(taxonomy_.Canonical(node));
  std::vector<std::uint32_t> order(nodes_.size());
  std::iota(order.begin(), order.end(), 0U);
  // Of two nodes with one text, the one met later comes first: it is what joining them gives.
  std::sort(order.begin(), order.end(), [&texts](std::uint32_t a, std::uint32_t b) {
    const int compared = texts[a].compare(texts[b]);
    return compared != 0 ? compared < 0 : a > b;
  });
  known_.rank.resize(order.size());
  for (std::size_t i = 0; i < order.size(); ++i) known_.rank[order[i]] = static_cast<std::uint32_t>(i);
}

void GeneralizedApriori::WriteLevel(const Level& level) {
  record_items_.resize(level.set_size);
  for (std::size_t i = 0; i < level.size(); ++i) {
    const auto set = level.Set(i);
    std::transform(set.begin(), set.end(), record_items_.begin(),
                   [this](std::uint32_t item) { return static_cast<std::uint32_t>(nodes_[item]); });
    ++itemsets_written_;
    if (!file_error_.empty()) continue;
    try {
      file_.Write(record_items_, level.support_counts[i]);
    } catch (const FileError& error) {
      file_error_ = error.what();
    }
  }
}

Level GeneralizedApriori::PairLevel(const Level& singles, Progress& progress) {
  if (!generalize_) return NextLevel(singles, known_, nullptr, work_, progress);
  const PairTable unrelated = UnrelatedPairs(nodes_, taxonomy_);
  return NextLevel(singles, known_, &unrelated, work_, progress);
}

void GeneralizedApriori::Run(Progress& progress) {
  std::ofstream("frequentItemset2.dat", std::ios::app).close();  // made when missing, never written to
  progress.SetRange(0, 100);
  progress.SetPosition(0);
  registry_ = ReadItems(source_, table_, item_names_, taxonomy_, generalize_, progress);
  std::vector<std::uint32_t> support_counts = SelectSingleItems();
  RankItems();
  Level level = FirstLevel(known_, std::move(support_counts));
  single_items_ = static_cast<std::uint32_t>(level.size());
  progress.SetPosition(10);
  try {
    file_.OpenForWriting(itemset_path_);
  } catch (const FileError& error) {
    file_error_ = error.what();
  }
  WriteLevel(level);
  std::optional<PairTable> frequent_pairs;
  // An itemset never has as many items as were registered, even if all of them stand in every row.
  for (std::size_t k = 2; level.size() > 0 && k < registry_.nodes.size(); ++k) {
    if (k == 2) {
      level = PairLevel(level, progress);
      frequent_pairs.emplace(PairsOf(level, nodes_.size()));
    } else {
      level = NextLevel(level, known_, &*frequent_pairs, work_, progress);
    }
    WriteLevel(level);
    // How many levels there will be is not known; each takes half of what is left of the bar.
    progress.SetPosition(90 - (70 >> std::min<std::size_t>(k - 2, 6)));
    progress.Pulse();
  }
  try {
    file_.Close();
  } catch (const FileError& error) {
    if (file_error_.empty()) file_error_ = error.what();
  }
  progress.SetPosition(90);
}

}  // namespace selvane
