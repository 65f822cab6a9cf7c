#include "selection/specific_step.h"

#include <algorithm>
#include <bit>

namespace selvane {

namespace {

std::uint32_t CountBoth(std::span<const RowWord> a, const RowWord* b) {
  std::uint32_t count = 0;
  for (std::size_t i = 0; i < a.size(); ++i) count += static_cast<std::uint32_t>(std::popcount(a[i] & b[i]));
  return count;
}

}  // namespace

// Shares such as 0.9 are no binary fractions: 9 of 10 rows must be 0.9 of them.
bool SpecificStep::Enough(std::uint32_t rows, std::uint32_t of) const {
  return static_cast<double>(rows) >= share_ * static_cast<double>(of) - 1e-9;
}

bool SpecificStep::Keeps(std::span<const std::uint32_t> itemset) {
  items_.PlacesOf(itemset, places_);
  items_.HoldingRows(places_, holding_);
  const std::uint32_t held = CountRows(holding_);
  supporting_ = holding_;
  supporting_count_ = held;
  if (items_.witnesses() != nullptr) {
    supporting_count_ -= items_.witnesses()->ClearUnsupporting(places_, supporting_);
  }
  for (std::size_t i = 0; i < places_.size(); ++i) {
    for (const std::uint32_t term : items_.Below(places_[i])) {
      if (IsMeant(i, term, held)) return false;
    }
  }
  return true;
}

bool SpecificStep::IsMeant(std::size_t replaced, std::uint32_t term, std::uint32_t held) {
  // Most terms below a general item are too rare for it.
  if (!Enough(items_.CountOf(term), supporting_count_)) return false;
  const RowWord* const rows = items_.RowsOf(term);
  const std::uint32_t count = CountBoth(holding_, rows);
  if (Enough(count, held)) return true;
  // The rows that support it with the term in place of the item are among the counted ones.
  if (items_.witnesses() == nullptr || !Enough(count, supporting_count_)) return false;
  special_ = supporting_;
  for (std::size_t i = 0; i < special_.size(); ++i) special_[i] &= rows[i];
  const std::uint32_t item = places_[replaced];
  places_[replaced] = term;
  items_.witnesses()->ClearUnsupporting(places_, special_);
  places_[replaced] = item;
  return Enough(CountRows(special_), supporting_count_);
}

}  // namespace selvane
