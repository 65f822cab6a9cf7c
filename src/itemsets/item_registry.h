// The items of a term table: which taxonomy nodes its rows hold.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/progress.h"
#include "data/transaction_source.h"
#include "itemsets/distinct_witnesses.h"
#include "itemsets/item_hierarchy.h"
#include "itemsets/row_bits.h"

namespace selvane {

// Every node found for a row of a term table, in order of first appearance: for each row the nodes of its
// terms and then, when generalizing, their ancestors. Rows of the same id are one row of the bitsets, but
// each counts in `row_count`.
struct ItemRegistry {
  std::vector<NodeNumber> nodes;
  std::vector<NodeNumber> direct;             // those first met as the node of a term
  std::vector<NodeNumber> generalized;        // those first met as an ancestor
  std::vector<std::size_t> frequent;          // the places in `nodes` of those in enough rows, ascending
  std::vector<std::uint32_t> support_counts;  // of the same
  RowBits rows;                               // of the same: those that hold it
  std::uint32_t row_count = 0;
  std::size_t zero_row = SIZE_MAX;  // the bit of the row whose id is 0, if there is one
  // Where witnesses are wanted: of the frequent nodes, the columns that give each of them; and the columns
  // that each row holds.
  std::vector<std::vector<std::uint32_t>> columns;
  RowTerms terms;
};

// What ReadItems is to read.
struct ItemReading {
  bool generalize = true;     // also the items above those of the terms
  float minimum_support = 0;  // a fraction of the rows
  bool witnesses = false;     // also which terms of a row stand for which items
};

// Reads the table once. The taxonomy is asked once for each column that is 1 somewhere; of positions the
// result is that of TaxonomyStore::RecordItems and RecordAncestors for every row. Only of nodes that reach
// the minimum support the rows are kept; 0 keeps those of all. Of a table of sets no rows are made; each term
// of each row takes four bytes meanwhile. Throws DatabaseError.
ItemRegistry ReadItems(TransactionSource& source, std::string_view table,
                       std::span<const std::string> item_names, const ItemHierarchy& hierarchy,
                       const ItemReading& reading, Progress& progress);

}  // namespace selvane
