#include "apriori/frequent_items.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <string>

#include "itemsets/least_rows.h"

namespace selvane {

namespace {

std::uint32_t CountOf(std::span<const RowWord> rows) {
  return std::accumulate(rows.begin(), rows.end(), 0U, [](std::uint32_t sum, RowWord word) {
    return sum + static_cast<std::uint32_t>(std::popcount(word));
  });
}

std::vector<std::uint32_t> CanonicalRanks(std::span<const NodeNumber> nodes, const TaxonomyStore& taxonomy) {
  std::vector<std::string> terms;
  terms.reserve(nodes.size());
  for (const NodeNumber node : nodes) terms.push_back(taxonomy.working().FindTerm(node).value_or(""));
  std::vector<std::uint32_t> order(nodes.size());
  std::iota(order.begin(), order.end(), 0U);
  // Of two nodes with one term, the one met later comes first. Joining two itemsets puts the later one first
  // when neither comes before the other, so this makes the order total and the same at every level.
  std::sort(order.begin(), order.end(), [&terms](std::uint32_t a, std::uint32_t b) {
    const int compared = terms[a].compare(terms[b]);
    return compared != 0 ? compared < 0 : a > b;
  });
  std::vector<std::uint32_t> ranks(order.size());
  for (std::size_t i = 0; i < order.size(); ++i) ranks[order[i]] = static_cast<std::uint32_t>(i);
  return ranks;
}

}  // namespace

FrequentItems SelectFrequentItems(const ItemRegistry& registry, float minimum_support,
                                  const TaxonomyStore& taxonomy) {
  FrequentItems items;
  items.level.least_rows = std::max(1U, LeastRows(minimum_support, registry.row_count));
  const std::size_t words = registry.rows.words();
  std::vector<std::size_t> chosen;
  for (std::size_t i = 0; i < registry.nodes.size(); ++i) {
    const std::uint32_t count = CountOf({registry.rows[i], words});
    if (count < items.level.least_rows) continue;
    chosen.push_back(i);
    items.nodes.push_back(registry.nodes[i]);
    items.support_counts.push_back(count);
  }
  items.level.rows = RowBits(chosen.size(), words * 64);
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    std::copy_n(registry.rows[chosen[i]], words, items.level.rows[i]);
    // The row whose id is 0 gets lost in every intersection.
    if (registry.zero_row != SIZE_MAX) items.level.rows.Clear(i, registry.zero_row);
  }
  items.level.rank = CanonicalRanks(items.nodes, taxonomy);
  return items;
}

PairTable UnrelatedPairs(const FrequentItems& items, const TaxonomyStore& taxonomy) {
  std::vector<std::string> codes;
  codes.reserve(items.nodes.size());
  for (const NodeNumber node : items.nodes) codes.push_back(taxonomy.working().PositionOf(node));
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

}  // namespace selvane
