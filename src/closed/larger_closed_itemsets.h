// From a closed itemset to larger ones.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <span>
#include <vector>

#include "itemsets/row_bits.h"

namespace selvane {

// An item, and how many rows of a set it stands in.
struct ItemSupport {
  std::uint32_t item;
  std::uint32_t support_count;
};

// Finds the closed itemsets above a given one.
class LargerClosedItemsets {
 public:
  // Items ascend. Valid during the call.
  using Visit = std::function<void(std::span<const std::uint32_t> larger, std::uint32_t support_count)>;

  // Those with no other closed itemset between. `closure` is a closed itemset in ascending order, `rows` are
  // its rows in the space of `items`, and `candidates` are all items outside of it that stand in at least as
  // many of these rows as a visited itemset must.
  void ForEachCover(const ItemRows& items, std::span<const std::uint32_t> closure, const RowWord* rows,
                    std::span<const ItemSupport> candidates, const Visit& visit);
  // All of them that stand in at least `least_rows` rows, each once, by extensions that keep the closure's
  // prefix: T. Uno et al., LCM ver. 2: Efficient mining algorithms for frequent/closed/maximal itemsets,
  // 2004. `candidates` ascend by item.
  void ForEach(const ItemRows& items, std::span<const std::uint32_t> closure, const RowWord* rows,
               std::span<const ItemSupport> candidates, std::uint32_t least_rows, const Visit& visit);

 private:
  // One closed itemset of the current path of ForEach.
  struct Frame {
    std::vector<RowWord> rows;
    std::vector<std::uint32_t> closure;
    std::vector<ItemSupport> rest;
  };

  // True when each of `rows` that holds `item` holds `other` too.
  bool Implies(const ItemRows& items, const RowWord* rows, std::uint32_t item, std::uint32_t other) const;
  void Extend(const ItemRows& items, std::size_t depth, std::span<const std::uint32_t> closure,
              const RowWord* rows, std::span<const ItemSupport> candidates, std::size_t first,
              std::uint32_t least_rows, const Visit& visit);

  const RowBitsOperations operations_ = FastRowBitsOperations();
  std::vector<ItemSupport> sorted_;
  std::vector<std::uint32_t> larger_;
  std::vector<bool> done_;
  std::deque<Frame> frames_;
};

}  // namespace selvane
