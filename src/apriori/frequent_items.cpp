#include "apriori/frequent_items.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <utility>

#include "itemsets/least_rows.h"

namespace selvane {

namespace {

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

FrequentItems SelectFrequentItems(ItemRegistry& registry, float minimum_support,
                                  const TaxonomyStore& taxonomy) {
  FrequentItems items;
  items.level.least_rows = std::max(1U, LeastRows(minimum_support, registry.row_count));
  for (const std::size_t place : registry.frequent) items.nodes.push_back(registry.nodes[place]);
  items.support_counts = std::move(registry.support_counts);
  items.level.rows = std::move(registry.rows);
  // The row whose id is 0 gets lost in every intersection.
  for (std::size_t i = 0; i < items.nodes.size() && registry.zero_row != SIZE_MAX; ++i) {
    items.level.rows.Clear(i, registry.zero_row);
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
