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
  LevelItems level;                           // what joining them needs
};

// Takes the nodes that stand in at least this fraction of the rows, for which the registry must have been
// read, with their rows out of it, and ranks them in canonical order: by the bytes of their terms, of equal
// ones the node met later first. Throws DatabaseError.
FrequentItems SelectFrequentItems(ItemRegistry& registry, float minimum_support,
                                  const TaxonomyStore& taxonomy);

// The pairs of items that may stand together in one itemset when generalizing: those of which neither
// position code occurs in the other. A plain substring test: C.2 counts as related to C.23, and an empty code
// to all. Throws DatabaseError for a node that the taxonomy does not have.
PairTable UnrelatedPairs(const FrequentItems& items, const TaxonomyStore& taxonomy);

}  // namespace selvane
