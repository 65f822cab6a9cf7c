// Looks up support counts in the itemset file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "base/progress.h"
#include "itemsets/itemset_file.h"

namespace selvane {

// Where rule generation asks for the support counts of itemsets, by the exact sequence of their items.
class SupportCounts {
 public:
  virtual ~SupportCounts() = default;
  // Nothing when the itemset file has no such sequence.
  virtual std::optional<std::uint32_t> Find(std::span<const std::uint32_t> items) const = 0;
};

// One record of the itemset file, with the counts of all its subsets at hand. False ends the reading.
using VisitItemset = std::function<bool(const ItemsetRecord& record, const SupportCounts& counts)>;

// Calls `visit` for each of the first `itemset_count` records of the file, in their order, until it returns
// false. Throws FileError when the file is missing or ends too early.
void ForEachItemset(const std::filesystem::path& file, std::uint32_t itemset_count,
                    const SupportCounts& counts, Progress& progress, const VisitItemset& visit);

// The same with counts that are found by scanning the file from its beginning: as many as fit `budget` bytes
// in one scan, those of at least one record.
void ForEachItemsetInBatches(const std::filesystem::path& file, std::uint32_t itemset_count,
                             std::size_t budget, Progress& progress, const VisitItemset& visit);

}  // namespace selvane
