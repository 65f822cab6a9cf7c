// The items of a term table as the closed itemset search takes them: each column as one taxonomy node.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/progress.h"
#include "data/transaction_source.h"
#include "mining/row_bits.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// An item is the first node of a column's term: that of the table `TaxonomyOrnex` where the taxonomy database
// has it, that of `Taxonomy` otherwise. Items stand in canonical order, by the bytes of their names.
struct ColumnItems {
  std::vector<NodeNumber> nodes;   // of the items that some row holds
  std::vector<std::string> names;  // of the same
  RowBits rows;  // of the same; rows without any item are left out, and those of one id are one
  std::vector<NodeNumber> in_column_order;   // the nodes as the columns have them
  std::uint32_t row_count = 0;               // of the table
  std::vector<std::string> unknown_columns;  // those without a node, which are left out
  // Items of `TaxonomyOrnex` whose numbers belong to other terms in `Taxonomy`, where filters look them up.
  std::vector<std::string> renumbered;
};

// Reads one column after the other, moving the bar by one for each. Throws DatabaseError, also for a column
// that is neither a number nor text, and Interrupted.
ColumnItems ReadColumnItems(const TransactionSource& source, std::string_view table,
                            const TaxonomyStore& taxonomy, Progress& progress);

}  // namespace selvane
