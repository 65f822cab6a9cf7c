// The taxonomy-aware search for frequent itemsets.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "apriori/frequent_items.h"
#include "apriori/level.h"
#include "base/progress.h"
#include "data/transaction_source.h"
#include "itemsets/distinct_witnesses.h"
#include "itemsets/item_registry.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// What a search tells of itself. Its itemsets are in the itemset file.
struct AprioriSummary {
  // Nodes of terms, and those added by generalization, in order of first appearance.
  std::vector<NodeNumber> direct_items;
  std::vector<NodeNumber> generalized_items;
  std::uint32_t row_count = 0;
  // Records written; and how many of them are single items. Equal when there is nothing to make rules from.
  std::uint32_t itemsets_written = 0;
  std::uint32_t single_items = 0;
  // Why the itemset file is not complete; empty when it is.
  std::string file_error;
  SearchWork work;
};

// What is counted, and how. The defaults are those of the plain run.
struct SearchOptions {
  float minimum_support = 0;
  bool generalize = true;
  // Only rows with distinct witnesses support an itemset.
  bool distinct_witnesses = false;
  std::size_t max_size = 0;            // items of the largest itemsets; 0 for any number
  std::vector<NodeNumber> left_out{};  // ascending; these are no items
  std::vector<NodeNumber> only{};      // ascending; where there are any, only these are
  // Keeps the rows of the items for later questions, and of rarer ones too, down to this share of the minimum
  // support; 0 keeps nothing.
  double keep_share = 0;
};

// The items of a run with their rows, kept for questions after the search.
struct KeptItems {
  std::vector<NodeNumber> nodes;
  ItemRegistry registry;
  std::optional<DistinctWitnesses> witnesses;
};

// Finds every set of taxonomy nodes that stands together in at least a given fraction of a term table's rows
// and writes it to the itemset file, level by level. With generalization, a row also holds every ancestor of
// its terms, and no itemset holds two nodes of which one's position code occurs in the other's (a plain
// substring test, so an empty code goes with every other, and C04.55 with C04.557). Where items are terms, no
// itemset holds two of which one is above the other.
// R. Srikant and R. Agrawal, Mining generalized association rules, 1995.
class GeneralizedApriori {
 public:
  // Asks the source for the item columns of the table. What is given must outlive this. Throws DatabaseError.
  GeneralizedApriori(TransactionSource& source, std::string table, const TaxonomyStore& taxonomy,
                     const ItemHierarchy& hierarchy, SearchOptions options,
                     std::filesystem::path itemset_file);

  // The whole search. Moves the bar from 0 to 90 of 100. Throws DatabaseError and Interrupted; a failure of
  // the itemset file is kept for the summary and the run goes on, with records lost.
  AprioriSummary Run(Progress& progress);
  // What was to be kept; nothing before the run.
  const KeptItems& kept() const { return kept_; }

 private:
  FrequentItems ReadFrequentItems(Progress& progress);
  std::size_t LargestItemset() const;

  TransactionSource& source_;
  const std::string table_;
  const TaxonomyStore& taxonomy_;
  const ItemHierarchy& hierarchy_;
  const SearchOptions options_;
  const std::filesystem::path itemset_path_;
  std::vector<std::string> item_names_;
  KeptItems kept_;
};

}  // namespace selvane
