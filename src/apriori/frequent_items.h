// The frequent single items of a run, which the search starts from.
#pragma once

#include <cstdint>
#include <vector>

#include "apriori/level.h"
#include "itemsets/item_registry.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

struct FrequentItems {
  std::vector<NodeNumber> nodes;              // in the order in which they were met
  std::vector<std::uint32_t> support_counts;  // of the same; a row whose id is 0 counts here only
  std::vector<std::uint32_t> known;           // their places among those that the registry keeps rows of
  LevelItems level;                           // what joining them needs
};

// Which of the registry's items the search starts from.
struct ItemChoice {
  float minimum_support = 0;  // a fraction of the rows, at least that for which the registry was read
  // Ascending. Items of `left_out` are never taken, and only those of `only` where it has any.
  std::vector<NodeNumber> left_out{};
  std::vector<NodeNumber> only{};
  bool keep_rows = false;  // the registry keeps its rows; otherwise they are taken out of it
};

// Takes the nodes that stand in enough rows, and ranks them in canonical order: by the bytes of their terms,
// of equal ones the node met later first. Throws DatabaseError.
FrequentItems SelectFrequentItems(ItemRegistry& registry, const ItemChoice& choice,
                                  const TaxonomyStore& taxonomy);

// The pairs of items that may stand together in one itemset when generalizing: those of which neither
// position code occurs in the other. A plain substring test: C.2 counts as related to C.23, and an empty code
// to all. Throws DatabaseError for a node that the taxonomy does not have.
PairTable UnrelatedPairs(const FrequentItems& items, const TaxonomyStore& taxonomy);
// The same by the hierarchy: pairs of which neither is above the other.
PairTable UnrelatedPairs(const FrequentItems& items, const ItemHierarchy& hierarchy);

}  // namespace selvane
