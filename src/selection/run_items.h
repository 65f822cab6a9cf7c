// The items of a run with their rows, for the steps that need more than counts.
#pragma once

#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include "itemsets/distinct_witnesses.h"
#include "itemsets/item_hierarchy.h"
#include "itemsets/row_bits.h"

namespace selvane {

// Items are numbered from 0 here, in the order of `nodes`. What is given must outlive this.
class RunItems {
 public:
  // `witnesses` is nullptr for a run in which any row that holds all items counts.
  RunItems(std::span<const NodeNumber> nodes, const RowBits& rows, const ItemHierarchy& hierarchy,
           const DistinctWitnesses* witnesses);

  const ItemHierarchy& hierarchy() const { return hierarchy_; }
  const DistinctWitnesses* witnesses() const { return witnesses_; }
  std::size_t words() const { return rows_.words(); }
  // The places of the nodes of an itemset.
  void PlacesOf(std::span<const std::uint32_t> nodes, std::vector<std::uint32_t>& places) const;
  const RowWord* RowsOf(std::uint32_t place) const { return rows_[place]; }
  std::uint32_t CountOf(std::uint32_t place) const { return counts_[place]; }
  // The items strictly below one, of those that the run knows.
  std::span<const std::uint32_t> Below(std::uint32_t place) const { return below_[place]; }

  // Replaces `rows` by the rows that hold all items, supporting or not; then by those that support them.
  void HoldingRows(std::span<const std::uint32_t> places, std::vector<RowWord>& rows) const;
  void SupportingRows(std::span<const std::uint32_t> places, std::vector<RowWord>& rows) const;

 private:
  const RowBits& rows_;
  const ItemHierarchy& hierarchy_;
  const DistinctWitnesses* witnesses_;
  std::unordered_map<NodeNumber, std::uint32_t> places_;
  std::vector<std::vector<std::uint32_t>> below_;
  std::vector<std::uint32_t> counts_;  // of the rows of each
};

// How many rows a set has.
std::uint32_t CountRows(std::span<const RowWord> rows);

}  // namespace selvane
