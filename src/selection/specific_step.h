// The step that drops itemsets in which a more special term is meant.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "selection/run_items.h"

namespace selvane {

class SpecificStep {
 public:
  // `share` is in (0, 1]. The items must hold all those that stand in this share of the rows of a frequent
  // itemset.
  SpecificStep(const RunItems& items, double share) : items_(items), share_(share) {}

  // False when one of the items has a term below it that stands, with the other items, in at least the share
  // of the itemset's rows: of the rows that hold all items at all, which takes away what one term below two
  // items brings about; or of those that support it by distinct witnesses.
  bool Keeps(std::span<const std::uint32_t> itemset);

 private:
  bool Enough(std::uint32_t rows, std::uint32_t of) const;
  bool IsMeant(std::size_t replaced, std::uint32_t term, std::uint32_t held);

  const RunItems& items_;
  double share_;
  // Of the itemset at hand.
  std::vector<std::uint32_t> places_;
  std::vector<RowWord> holding_;
  std::vector<RowWord> supporting_;
  std::uint32_t supporting_count_ = 0;
  std::vector<RowWord> special_;
};

}  // namespace selvane
