// Which rows support an itemset by different terms.
#pragma once

#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include "itemsets/row_bits.h"

namespace selvane {

// The terms that each row of a table holds directly, by column, row after row.
struct RowTerms {
  std::vector<std::size_t> begin;  // where each row's begin in `columns`, and the end of the last
  std::vector<std::uint32_t> columns;

  std::span<const std::uint32_t> Of(std::size_t row) const {
    return std::span(columns).subspan(begin[row], begin[row + 1] - begin[row]);
  }
};

// Whether each set can be given a number of its own out of it, all different. Sets are few and small.
bool HaveDistinctRepresentatives(const std::vector<std::vector<std::uint32_t>>& sets);

// A term of a row witnesses an item when it is the item or below it. A row supports an itemset by distinct
// witnesses when each item can be given a term of its own that the row holds directly, all different: when
// the items' witnesses have a system of distinct representatives (P. Hall, On representatives of subsets,
// 1935). A subset of such an itemset has one too, so the count is antimonotone as the plain one is; and where
// no two items have a common term below them, every row that holds all items is supporting.
//
// Items and columns are numbered from 0. What is given must outlive this. Asking keeps answers, so two
// threads need two of these.
class DistinctWitnesses {
 public:
  // `item_columns` has for each item the columns that witness it.
  DistinctWitnesses(std::span<const std::vector<std::uint32_t>> item_columns, std::size_t columns,
                    const RowTerms& terms);

  // True when some column witnesses both.
  bool AreEntangled(std::uint32_t a, std::uint32_t b) const { return entangled_[a * items_ + b]; }
  bool HasEntangled(std::span<const std::uint32_t> items) const;

  // Clears the bits of rows that do not support the itemset by distinct witnesses; `rows`, a set of those
  // that hold all its items, has as many words as the sets that the items have. Returns how many were
  // cleared.
  std::uint32_t ClearUnsupporting(std::span<const std::uint32_t> items, std::span<RowWord> rows) const;

 private:
  // Rows in which an item has at most so many witnesses are kept as sets: others cannot fail an itemset with
  // one item more.
  static constexpr std::size_t kFewest = 3;
  using RowList = std::vector<std::uint32_t>;

  void FindFew(std::span<const std::vector<std::uint32_t>> items_of);
  // The rows that fail a pair: each item has one witness there, and it is the same.
  const RowList& FailingRows(std::uint32_t a, std::uint32_t b) const;
  std::uint32_t ClearFailing(std::span<const std::uint32_t> items, std::span<RowWord> rows) const;
  bool IsSupported(std::span<const std::uint32_t> items, std::size_t row) const;
  bool Witnesses(std::uint32_t column, std::uint32_t item) const {
    return below_[std::size_t{item} * columns_ + column];
  }

  std::size_t items_;
  std::size_t columns_;
  const RowTerms& terms_;
  std::vector<bool> entangled_;
  std::vector<bool> below_;      // by item and column
  std::vector<RowBits> few_;     // [k]: by item, the rows with at least one and at most k + 1 witnesses
  std::vector<RowList> single_;  // by item, the witness in each row of few_[0], in the order of the rows
  mutable std::unordered_map<std::uint64_t, RowList> failing_;  // by pair, those that were asked for
  mutable std::vector<std::vector<std::uint32_t>> witnesses_;   // of the row at hand
};

}  // namespace selvane
