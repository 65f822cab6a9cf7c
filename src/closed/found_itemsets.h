// What the search for closed itemsets finds, sorted by size on its way to files and rules.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/progress.h"
#include "closed/closed_itemset_search.h"
#include "closed/itemset_sorter.h"
#include "itemsets/itemset_file.h"
#include "rules/rule_tally.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// Puts what the search finds into the working files, sorted by size, and counts it. Throws FileError.
class FoundItemsets final : public ClosedItemsetSink {
 public:
  // `nodes` are the numbers of the items, which the files hold, and must outlive this.
  FoundItemsets(const std::filesystem::path& folder, std::span<const NodeNumber> nodes,
                std::uint32_t row_count);

  void OnGenerator(std::span<const std::uint32_t> generator, std::span<const std::uint32_t> closure,
                   std::uint32_t support_count, bool is_first) override;
  void OnLarger(std::span<const std::uint32_t> larger, std::uint32_t support_count) override;

  std::uint64_t closed_itemsets() const { return closed_count_; }
  std::uint64_t generators() const { return generator_count_; }
  std::uint64_t exact_rules() const { return exact_count_; }
  // Items of the largest closed itemset.
  std::size_t largest_size() const { return largest_size_; }
  // Rules of which one side does not fit its column in a rules table; and all that fit.
  std::uint64_t too_long_rules() const { return too_long_count_; }
  const RuleTally& tally() const { return tally_; }

  // By ascending size.
  void ForEachBlockOfClosed(const std::function<void(std::string_view records)>& visit) {
    closed_.ForEachBlock(visit);
  }
  // Generators with their closures and with the larger closed itemsets they lead to, by the ascending size of
  // the second. Moves the bar from 0 to 100.
  using VisitPair = std::function<void(const EncodedRecord& generator, const EncodedRecord& larger)>;
  void ForEachPair(Progress& progress, const VisitPair& visit);

 private:
  void Encode(std::span<const std::uint32_t> items, std::uint32_t support_count, std::string& bytes);
  int TextSize(std::span<const std::uint32_t> items) const;
  void AddPair(std::span<const std::uint32_t> larger, std::uint32_t support_count);

  std::span<const NodeNumber> nodes_;
  std::vector<int> text_sizes_;  // of each item, in the text of an itemset
  ItemsetSorter closed_;
  ItemsetSorter pairs_;
  RuleTally tally_;
  std::size_t generator_size_ = 0;
  std::uint32_t generator_support_count_ = 0;
  int generator_text_size_ = 0;
  std::string generator_;  // encoded
  std::string larger_;
  std::vector<std::uint32_t> numbers_;
  std::uint64_t closed_count_ = 0;
  std::uint64_t generator_count_ = 0;
  std::uint64_t exact_count_ = 0;
  std::uint64_t pair_count_ = 0;
  std::uint64_t too_long_count_ = 0;
  std::size_t largest_size_ = 0;
};

}  // namespace selvane
