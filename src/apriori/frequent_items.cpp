#include "apriori/frequent_items.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <unordered_map>
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

bool Holds(const std::vector<NodeNumber>& sorted, NodeNumber node) {
  return std::binary_search(sorted.begin(), sorted.end(), node);
}

// The rows of these places; the registry's own where all of them are taken and it may give them away.
RowBits RowsOf(ItemRegistry& registry, std::span<const std::uint32_t> places, bool keep_rows) {
  if (!keep_rows && places.size() == registry.frequent.size()) return std::move(registry.rows);
  RowBits rows(places.size(), registry.rows.words() * 64);
  for (std::size_t i = 0; i < places.size(); ++i) {
    std::copy_n(registry.rows[places[i]], rows.words(), rows[i]);
  }
  if (!keep_rows) registry.rows = RowBits();
  return rows;
}

}  // namespace

FrequentItems SelectFrequentItems(ItemRegistry& registry, const ItemChoice& choice,
                                  const TaxonomyStore& taxonomy) {
  FrequentItems items;
  items.level.least_rows = std::max(1U, LeastRows(choice.minimum_support, registry.row_count));
  for (std::size_t place = 0; place < registry.frequent.size(); ++place) {
    const NodeNumber node = registry.nodes[registry.frequent[place]];
    const std::uint32_t count = registry.support_counts[place];
    if (count < items.level.least_rows || Holds(choice.left_out, node)) continue;
    if (!choice.only.empty() && !Holds(choice.only, node)) continue;
    items.nodes.push_back(node);
    items.support_counts.push_back(count);
    items.known.push_back(static_cast<std::uint32_t>(place));
  }
  // The row whose id is 0 gets lost in every intersection.
  for (std::size_t i = 0; i < registry.frequent.size() && registry.zero_row != SIZE_MAX; ++i) {
    registry.rows.Clear(i, registry.zero_row);
  }
  items.level.rows = RowsOf(registry, items.known, choice.keep_rows);
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

PairTable UnrelatedPairs(const FrequentItems& items, const ItemHierarchy& hierarchy) {
  const std::size_t count = items.nodes.size();
  std::unordered_map<NodeNumber, std::uint32_t> places;
  for (std::uint32_t i = 0; i < count; ++i) places.emplace(items.nodes[i], i);
  PairTable related(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    for (const NodeNumber above : hierarchy.Above(items.nodes[i])) {
      const auto found = places.find(above);
      if (found != places.end()) related.Insert(i, found->second);
    }
  }
  PairTable pairs(count);
  for (std::uint32_t a = 0; a < count; ++a) {
    for (std::uint32_t b = 0; b < a; ++b) {
      if (!related.Contains(a, b)) pairs.Insert(a, b);
    }
  }
  return pairs;
}

}  // namespace selvane
