// The taxonomy-aware search for frequent itemsets.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "apriori/level.h"
#include "base/progress.h"
#include "data/transaction_source.h"
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

// Finds every set of taxonomy nodes that stands together in at least a given fraction of a term table's rows
// and writes it to the itemset file, level by level. With generalization, a row also holds every ancestor of
// its terms, and no itemset holds two nodes of which one's position code occurs in the other's (a plain
// substring test, so an empty code goes with every other, and C04.55 with C04.557).
// R. Srikant and R. Agrawal, Mining generalized association rules, 1995.
class GeneralizedApriori {
 public:
  // Asks the source for the item columns of the table. Throws DatabaseError.
  GeneralizedApriori(TransactionSource& source, std::string table, float minimum_support,
                     const TaxonomyStore& taxonomy, bool generalize, std::filesystem::path itemset_file);

  // The whole search. Moves the bar from 0 to 90 of 100. Throws DatabaseError and Interrupted; a failure of
  // the itemset file is kept for the summary and the run goes on, with records lost.
  AprioriSummary Run(Progress& progress);

 private:
  TransactionSource& source_;
  const std::string table_;
  const float minimum_support_;
  const TaxonomyStore& taxonomy_;
  const bool generalize_;
  const std::filesystem::path itemset_path_;
  std::vector<std::string> item_names_;
};

}  // namespace selvane
