// The search for closed itemsets and their minimal generators.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

#include "base/progress.h"
#include "closed/larger_closed_itemsets.h"
#include "itemsets/row_bits.h"

namespace selvane {

// Receives what the search finds, at once: the search keeps nothing. Spans are valid during the call, and
// their items ascend.
class ClosedItemsetSink {
 public:
  virtual ~ClosedItemsetSink() = default;
  // A minimal generator and its closure, and in how many rows either stands. `is_first` is true for exactly
  // one generator of each closed itemset.
  virtual void OnGenerator(std::span<const std::uint32_t> generator, std::span<const std::uint32_t> closure,
                           std::uint32_t support_count, bool is_first) = 0;
  // A closed itemset that is larger than the closure of the generator just told of, and which enough of the
  // generator's rows hold.
  virtual void OnLarger(std::span<const std::uint32_t> larger, std::uint32_t support_count) = 0;
};

// Visits every frequent minimal generator once, depth first. An itemset is closed when no other item stands
// in all its rows; a minimal generator of a closed itemset is a smallest set of items whose rows are the
// same, smallest by inclusion. The empty set is left out of both: an item that stands in every row is itself
// a minimal generator.
//
// Every subset of a minimal generator is one too, so a set that is none is never extended. What tells is that
// for each of its items there is a row which holds all the others and not this one; these rows go down with
// the search as bitsets. The closure comes out of the counts that the next step needs.
// N. Pasquier et al., Discovering frequent closed itemsets for association rules, 1999; Y. Bastide et al.,
// Mining minimal non-redundant association rules using frequent closed itemsets, 2000; depth first and
// vertical as in L. Szathmary et al., Efficient vertical mining of frequent closures and generators, 2009.
//
// Where the rows of a generator are few, the rows of what may extend it are packed into their space.
//
// Memory is for one path of the search: it does not grow with the number of itemsets.
class ClosedItemsetSearch {
 public:
  struct Options {
    std::uint32_t least_rows = 1;  // how many rows make an itemset frequent
    float min_confidence = 0;      // of a generator's rows, the part that must hold a larger closed itemset
    // True: of the larger closed itemsets only those with no other closed itemset between.
    bool covers_only = true;
    // How many extensions of a generator make packing worth its while.
    std::ptrdiff_t least_to_pack = 6;
  };

  // `rows` are those of each item; `sink` and `progress` must outlive the search.
  ClosedItemsetSearch(const RowBits& rows, Options options, ClosedItemsetSink& sink, Progress& progress);

  // Moves the bar from 10 to 90. Throws Interrupted and whatever the sink throws.
  void Run();

 private:
  // One generator of the current path.
  struct Frame {
    std::uint32_t support_count = 0;
    // The rows of the generator, in the space of `items`: in `own_rows`, or elsewhere.
    const ItemRows* items = nullptr;
    const RowWord* rows = nullptr;
    std::vector<RowWord> own_rows;
    std::vector<std::uint32_t> closure;
    // The other items that may be frequent together with the generator.
    std::vector<ItemSupport> rest;
    // Both in the space of all rows, made when they are asked for: the rows of the generator, and for each of
    // its items those that hold the others and not this one.
    bool has_critical = false;
    std::vector<RowWord> all_rows;
    RowBits critical;
    // The rest in the space of the generator's rows, when that is much smaller.
    RowBits packed;
    std::optional<ItemRows> packed_items;
  };

  Frame& FrameAt(std::size_t depth);
  void Descend(std::size_t depth, const ItemSupport& next);
  void CountRest(const Frame& parent, std::uint32_t item, std::uint32_t enough, Frame& frame);
  void TellLarger(const Frame& frame, std::uint32_t enough);
  void MakeCritical(std::size_t depth);
  bool ProbeCritical(std::size_t i, std::uint32_t item) const;
  bool StaysMinimal(std::size_t depth, std::uint32_t item);
  bool IsFirst(const Frame& frame);
  void ExtendAll(std::size_t depth);
  void Pack(Frame& frame);

  const RowBits& bits_;
  const ItemRows items_;
  const Options options_;
  ClosedItemsetSink& sink_;
  Progress& progress_;
  const RowBitsOperations operations_ = FastRowBitsOperations();
  LargerClosedItemsets larger_;
  std::vector<std::uint32_t> generator_;
  std::deque<Frame> frames_;  // by the size of the generator; frame 0 is that of the empty set
  std::vector<const RowWord*> chosen_;
  std::vector<const RowWord*> generator_rows_;
  std::vector<std::uint32_t> packed_order_;
  std::vector<ItemSupport> candidates_;
  std::uint64_t visited_ = 0;  // since the last pulse, and before
};

}  // namespace selvane
