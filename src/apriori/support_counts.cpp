#include "apriori/support_counts.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <unordered_map>

namespace selvane {

namespace {

// Larger itemsets than this have more subsets than any file holds.
constexpr std::size_t kLargestItemset = 30;

// Itemsets by their exact sequence of items, found without a copy.
struct SequenceHash {
  using is_transparent = void;
  std::size_t operator()(std::span<const std::uint32_t> items) const {
    return std::hash<std::string_view>{}({reinterpret_cast<const char*>(items.data()), items.size_bytes()});
  }
};
struct SequenceEqual {
  using is_transparent = void;
  bool operator()(std::span<const std::uint32_t> a, std::span<const std::uint32_t> b) const {
    return std::ranges::equal(a, b);
  }
};

// The counts that a batch of records wants, as they are found.
class CountTable final : public SupportCounts {
 public:
  // Adds the sequence with a count that is not known yet, unless it is there.
  void Want(std::span<const std::uint32_t> items) {
    if (counts_.find(items) != counts_.end()) return;
    counts_.emplace(std::vector(items.begin(), items.end()), std::nullopt);
    bytes_ += kEntryBytes + items.size_bytes();
  }
  // Gives a wanted sequence its count, unless it has one: the first record of the file is the one that
  // counts.
  void Answer(std::span<const std::uint32_t> items, std::uint32_t count) {
    const auto found = counts_.find(items);
    if (found != counts_.end() && !found->second) found->second = count;
  }
  std::optional<std::uint32_t> Find(std::span<const std::uint32_t> items) const override {
    const auto found = counts_.find(items);
    return found == counts_.end() ? std::nullopt : found->second;
  }
  // About what the table takes.
  std::size_t bytes() const { return bytes_; }

 private:
  using Counts = std::unordered_map<std::vector<std::uint32_t>, std::optional<std::uint32_t>, SequenceHash,
                                    SequenceEqual>;
  // An entry, its place in the table, and what the allocator keeps for the entry and for its items.
  static constexpr std::size_t kEntryBytes = sizeof(Counts::value_type) + 6 * sizeof(void*);

  Counts counts_;
  std::size_t bytes_ = 0;
};

// Wants every proper subset of the itemset that is not empty.
void WantSubsets(std::span<const std::uint32_t> items, CountTable& table) {
  std::vector<std::uint32_t> subset;
  const std::uint32_t all = (1U << std::min(items.size(), kLargestItemset)) - 1;
  for (std::uint32_t chosen = 1; chosen < all; ++chosen) {
    subset.clear();
    for (std::size_t i = 0; i < items.size(); ++i) {
      if ((chosen >> i & 1U) != 0) subset.push_back(items[i]);
    }
    table.Want(subset);
  }
}

}  // namespace

void ForEachItemset(const std::filesystem::path& path, std::uint32_t itemset_count,
                    const SupportCounts& counts, Progress& progress, const VisitItemset& visit) {
  ItemsetFile file;
  file.OpenForReading(path);
  ItemsetRecord record;
  for (std::uint32_t i = 0; i < itemset_count; ++i) {
    file.ReadNext(record);
    if (!visit(record, counts)) return;
    if (i % 16384 == 0) progress.Pulse();
  }
}

void ForEachItemsetInBatches(const std::filesystem::path& path, std::uint32_t itemset_count,
                             std::size_t budget, Progress& progress, const VisitItemset& visit) {
  ItemsetFile file;
  file.OpenForReading(path);
  for (std::uint32_t done = 0; done < itemset_count;) {
    CountTable table;
    // At least one record, however many subsets it has: a budget that is too small costs time, never rules.
    std::vector<ItemsetRecord> batch;
    for (; done < itemset_count && (batch.empty() || table.bytes() < budget); ++done) {
      file.ReadNext(batch.emplace_back());
      WantSubsets(batch.back().items, table);
      if (done % 1024 == 0) progress.Pulse();
    }
    ForEachItemset(path, itemset_count, table, progress,
                   [&table](const ItemsetRecord& record, const SupportCounts&) {
                     table.Answer(record.items, record.support_count);
                     return true;
                   });
    for (const ItemsetRecord& record : batch) {
      if (!visit(record, table)) return;
    }
  }
}

}  // namespace selvane
