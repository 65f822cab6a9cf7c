#include "closed/found_itemsets.h"

#include <algorithm>
#include <numeric>

#include "rules/rules_store.h"

namespace selvane {

FoundItemsets::FoundItemsets(const std::filesystem::path& folder, std::span<const NodeNumber> nodes,
                             std::uint32_t row_count)
    : nodes_(nodes), closed_(folder / "FC_s.dat"), pairs_(folder / "FPC_s.dat"), tally_(row_count) {
  for (const NodeNumber node : nodes)
    text_sizes_.push_back(static_cast<int>(ItemsetToText({&node, 1}).size()));
}

void FoundItemsets::Encode(std::span<const std::uint32_t> items, std::uint32_t support_count,
                           std::string& bytes) {
  numbers_.clear();
  for (const std::uint32_t item : items) numbers_.push_back(static_cast<std::uint32_t>(nodes_[item]));
  bytes.clear();
  AppendRecord(numbers_, support_count, bytes);
}

int FoundItemsets::TextSize(std::span<const std::uint32_t> items) const {
  return std::accumulate(items.begin(), items.end(), 0,
                         [this](int sum, std::uint32_t item) { return sum + text_sizes_[item]; });
}

// The generator is kept encoded until the next: each larger itemset that is told of goes with it.
void FoundItemsets::OnGenerator(std::span<const std::uint32_t> generator,
                                std::span<const std::uint32_t> closure, std::uint32_t support_count,
                                bool is_first) {
  Encode(generator, support_count, generator_);
  generator_size_ = generator.size();
  generator_support_count_ = support_count;
  generator_text_size_ = TextSize(generator);
  ++generator_count_;
  AddPair(closure, support_count);  // leaves the closure encoded in larger_
  if (generator.size() < closure.size()) ++exact_count_;
  if (!is_first) return;
  closed_.Add(closure.size(), {larger_});
  ++closed_count_;
  largest_size_ = std::max(largest_size_, closure.size());
}

void FoundItemsets::OnLarger(std::span<const std::uint32_t> larger, std::uint32_t support_count) {
  AddPair(larger, support_count);
}

void FoundItemsets::AddPair(std::span<const std::uint32_t> larger, std::uint32_t support_count) {
  Encode(larger, support_count, larger_);
  pairs_.Add(larger.size(), {generator_, larger_});
  ++pair_count_;
  if (larger.size() == generator_size_) return;  // a generator that is its own closure gives no rule
  if (std::max(generator_text_size_, TextSize(larger) - generator_text_size_) > kLongestItemsetText) {
    ++too_long_count_;
  } else {
    tally_.Add(static_cast<float>(support_count) / static_cast<float>(generator_support_count_),
               support_count);
  }
}

void FoundItemsets::ForEachPair(Progress& progress, const VisitPair& visit) {
  progress.SetRange(0, 100);
  progress.SetPosition(0);
  std::uint64_t done = 0;
  pairs_.ForEachBlock([&](std::string_view records) {
    while (!records.empty()) {
      const EncodedRecord generator = TakeRecord(records);
      visit(generator, TakeRecord(records));
      if (++done % 256 == 0) {
        progress.SetPosition(static_cast<int>(done * 100 / pair_count_));
        progress.Pulse();
      }
    }
  });
  progress.SetPosition(100);
}

}  // namespace selvane
