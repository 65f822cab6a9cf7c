// The items of a term table as the closed itemset search takes them: each column as one taxonomy node.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/progress.h"
#include "data/transaction_source.h"
#include "itemsets/row_bits.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// An item is the first node of a column's term: the first row of the term in the table `TaxonomyOrnex` where
// the taxonomy database has that, the first of `Taxonomy` otherwise. Items stand in canonical order, by the
// bytes of their names.
struct ColumnItems {
  std::vector<NodeNumber> nodes;            // of the items in enough rows
  std::vector<std::string> names;           // of the same
  std::vector<std::string> codes;           // their positions in `TaxonomyOrnex`; empty texts without it
  RowBits rows;                             // rows without any item are left out, and those of one id are one
  std::size_t met = 0;                      // items that some row holds
  std::vector<NodeNumber> in_column_order;  // the nodes as the columns have them
  std::uint32_t row_count = 0;              // of the table
  std::vector<std::string> unknown_columns;  // those without a node, which are left out
  std::vector<std::string> joined_columns;   // those whose node an earlier column has: both are one item
  // Items of `TaxonomyOrnex` whose numbers `Taxonomy`, where filters look them up, has for other terms or
  // none.
  std::vector<std::string> renumbered;
};

// Reads one column after the other, moving the bar by one for each. Items that cannot reach the minimum
// support, a fraction of the rows, are left out: bitsets of many thousand rare terms would fill the memory.
// Throws DatabaseError, also for a column that is neither a number nor text and for a node of `TaxonomyOrnex`
// whose number cannot be recorded, and Interrupted.
ColumnItems ReadColumnItems(const TransactionSource& source, std::string_view table,
                            const TaxonomyStore& taxonomy, float minimum_support, Progress& progress);

}  // namespace selvane
