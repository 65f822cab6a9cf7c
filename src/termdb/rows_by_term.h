// Which rows of a term table hold some terms, or the items of a rule.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "data/transaction_source.h"
#include "itemsets/item_hierarchy.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// The rows that hold all terms of `with` and none of `without`, ascending; all rows when both are empty. The
// rows must be numbered from 1 on. Throws DatabaseError, and InputError for a term that is no column.
std::vector<std::uint32_t> RowsWithTerms(const TransactionSource& source, std::string_view table,
                                         std::span<const std::string> with,
                                         std::span<const std::string> without);

// Of the same kind, the rows of a rule.
struct RuleRows {
  std::vector<std::uint32_t> holding;     // both sides
  std::vector<std::uint32_t> exceptions;  // the left side without the right one
};

// How a run counted rows.
struct RowCounting {
  bool generalized = true;
  ItemKind items = ItemKind::kPositions;
  bool distinct_witnesses = false;
};

// As the extraction of the rule counted them: a row holds an item when it has a term of that item or, when
// the run generalized, of an item below it. Throws DatabaseError, and InputError for an item that the
// taxonomy does not have.
RuleRows RowsOfRule(const TransactionSource& source, std::string_view table, const TaxonomyStore& taxonomy,
                    std::span<const NodeNumber> antecedent, std::span<const NodeNumber> consequent,
                    const RowCounting& counting);

}  // namespace selvane
