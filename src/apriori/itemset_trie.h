// The whole itemset file in memory, for files that are not too large.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "apriori/support_counts.h"
#include "base/progress.h"
#include "itemsets/itemset_file.h"
#include "rules/rule_tally.h"

namespace selvane {

// Frequent itemsets as a prefix tree (F. Bodon, A fast Apriori implementation, 2003): 12 bytes a node,
// children side by side and sorted by item number.
class ItemsetTrie final : public SupportCounts {
 public:
  static constexpr std::uint32_t kNoCount = UINT32_MAX;

  // Reads the file; nothing when the tree would need more than `budget` bytes, or the file is not in level
  // order with the beginning of each itemset before it. Throws FileError and Interrupted.
  static std::optional<ItemsetTrie> Load(const std::filesystem::path& file, std::uint32_t itemset_count,
                                         std::size_t budget, Progress& progress);

  std::optional<std::uint32_t> Find(std::span<const std::uint32_t> items) const override;
  // An itemset with the counts of its subsets: that of subset m, a bit for each place in `items`, at m. The
  // empty one has none, and kNoCount stands for a subset that the file lacks.
  using VisitSubsets =
      std::function<void(std::span<const std::uint32_t> items, std::span<const std::uint32_t> counts)>;
  // Visits all itemsets of two items or more, each before those that it is the beginning of, moving the bar
  // from 0 to 100. The spans are valid during the call only.
  void ForEachWithSubsets(const VisitSubsets& visit, Progress& progress) const;
  // Counts every way to divide an itemset into two sides whose confidence reaches the minimum.
  void CountRules(float minimum_confidence, RuleTally& tally, Progress& progress) const;

 private:
  static constexpr std::uint32_t kNone = kNoCount;

  struct Entry {
    std::uint32_t parent;
    std::uint32_t item;
    std::uint32_t count;
  };

  bool AddLevel(std::vector<Entry>& level);
  // The node of a sequence of items, kNone when there is none.
  std::uint32_t NodeOf(std::span<const std::uint32_t> items) const;

  // By node; node 0 is the empty itemset. The children of a node begin where the node before ends.
  std::vector<std::uint32_t> item_ = {0};
  std::vector<std::uint32_t> count_ = {0};
  std::vector<std::uint32_t> first_child_;  // one more than nodes with children so far
};

}  // namespace selvane
