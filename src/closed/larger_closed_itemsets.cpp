#include "closed/larger_closed_itemsets.h"

#include <algorithm>

namespace selvane {

bool LargerClosedItemsets::Implies(const ItemRows& items, const RowWord* rows, std::uint32_t item,
                                   std::uint32_t other) const {
  return !operations_.any_outside(rows, items[item], items[other], items.words());
}

void LargerClosedItemsets::ForEachCover(const ItemRows& items, std::span<const std::uint32_t> closure,
                                        const RowWord* rows, std::span<const ItemSupport> candidates,
                                        const Visit& visit) {
  // By falling count: an item that implies another is in no more of the rows, so whatever stands between the
  // closure and an item's own closure comes earlier in this order.
  sorted_.assign(candidates.begin(), candidates.end());
  std::sort(sorted_.begin(), sorted_.end(), [](const ItemSupport& a, const ItemSupport& b) {
    return a.support_count != b.support_count ? a.support_count > b.support_count : a.item < b.item;
  });
  done_.assign(sorted_.size(), false);
  for (std::size_t i = 0; i < sorted_.size(); ++i) {
    if (done_[i]) continue;
    const auto [item, support_count] = sorted_[i];
    // Whatever stands between is reached by an item with more rows.
    std::size_t equal = 0;
    while (sorted_[equal].support_count > support_count && !Implies(items, rows, item, sorted_[equal].item))
      ++equal;
    if (sorted_[equal].support_count > support_count) continue;
    // Items with the same rows make one larger itemset; the first of them stands for all.
    larger_.assign(closure.begin(), closure.end());
    larger_.push_back(item);
    for (std::size_t j = i + 1; j < sorted_.size() && sorted_[j].support_count == support_count; ++j) {
      if (done_[j] || !Implies(items, rows, item, sorted_[j].item)) continue;
      done_[j] = true;
      larger_.push_back(sorted_[j].item);
    }
    std::sort(larger_.begin(), larger_.end());
    visit(larger_, support_count);
  }
}

void LargerClosedItemsets::ForEach(const ItemRows& items, std::span<const std::uint32_t> closure,
                                   const RowWord* rows, std::span<const ItemSupport> candidates,
                                   std::uint32_t least_rows, const Visit& visit) {
  Extend(items, 0, closure, rows, candidates, 0, least_rows, visit);
}

// Extends by the candidates from `first` on.
void LargerClosedItemsets::Extend(const ItemRows& items, std::size_t depth,
                                  std::span<const std::uint32_t> closure, const RowWord* rows,
                                  std::span<const ItemSupport> candidates, std::size_t first,
                                  std::uint32_t least_rows, const Visit& visit) {
  if (frames_.size() <= depth) frames_.emplace_back();
  Frame& frame = frames_[depth];
  for (std::size_t i = first; i < candidates.size(); ++i) {
    const auto [item, support_count] = candidates[i];
    // An itemset whose closure holds an earlier item is reached from that one.
    std::size_t earlier = 0;
    while (earlier < i && !Implies(items, rows, item, candidates[earlier].item)) ++earlier;
    if (earlier < i) continue;
    frame.rows.resize(items.words());
    operations_.store_and(rows, items[item], frame.rows.data(), items.words());
    frame.closure.assign(closure.begin(), closure.end());
    frame.closure.push_back(item);
    frame.rest.clear();
    std::size_t next = 0;  // of the rest, the first that comes after `item`
    for (std::size_t j = 0; j < candidates.size(); ++j) {
      if (j == i) {
        next = frame.rest.size();
        continue;
      }
      const std::uint32_t other = candidates[j].item;
      const std::uint32_t count = operations_.count_and(frame.rows.data(), items[other], items.words());
      if (count == support_count) {
        frame.closure.push_back(other);
      } else if (count >= least_rows) {
        frame.rest.push_back({other, count});
      }
    }
    std::sort(frame.closure.begin(), frame.closure.end());
    visit(frame.closure, support_count);
    if (next < frame.rest.size()) {
      Extend(items, depth + 1, frame.closure, frame.rows.data(), frame.rest, next, least_rows, visit);
    }
  }
}

}  // namespace selvane
