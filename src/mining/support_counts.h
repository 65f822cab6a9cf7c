// Looks up support counts in the itemset file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "base/progress.h"
#include "mining/itemset_file.h"

namespace selvane {

// Itemsets with their counts, found by the exact sequence of their items. Memory is bounded by its user.
class CountTable {
 public:
  // Adds the sequence with a count that is not known yet, unless it is there.
  void Want(std::span<const std::uint32_t> items);
  // Adds the sequence with its count; of two counts for one sequence the first is kept.
  void Insert(std::span<const std::uint32_t> items, std::uint32_t count);
  // Gives a wanted sequence its count, unless it has one.
  void Answer(std::span<const std::uint32_t> items, std::uint32_t count);
  // Nothing when the sequence is not there or was not answered.
  std::optional<std::uint32_t> Find(std::span<const std::uint32_t> items) const;
  std::size_t bytes() const { return slots_.capacity() * sizeof(Slot) + items_.capacity() * sizeof(std::uint32_t); }
  void Clear();

 private:
  struct Slot {
    std::uint32_t begin = 0;  // in items_, where the number of items stands first
    std::uint32_t hash = 0;
    std::uint32_t count = kUnknown;
    bool used = false;
  };
  static constexpr std::uint32_t kUnknown = UINT32_MAX;

  Slot& SlotFor(std::span<const std::uint32_t> items);
  std::size_t Probe(std::span<const std::uint32_t> items, std::uint32_t hash) const;
  void Grow();

  std::vector<Slot> slots_;
  std::vector<std::uint32_t> items_;
  std::size_t used_ = 0;
};

// One record of the itemset file, with all counts that rules of it need at hand in `counts`.
using VisitItemset = std::function<bool(const ItemsetRecord& record, const CountTable& counts)>;

// Calls `visit` for each of the first `itemset_count` records of the file, in their order. The counts of the
// record's subsets are those that scanning the file from its beginning finds; as many are looked up in one scan
// as fit `budget` bytes: those of the whole file, or else of the next records. Ends early when `visit` returns
// false. Throws FileError when the file is missing or ends too early.
void ForEachItemset(const std::filesystem::path& file, std::uint32_t itemset_count, std::size_t budget,
                    Progress& progress, const VisitItemset& visit);

}  // namespace selvane
