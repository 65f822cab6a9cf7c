#include "apriori/support_counts.h"

#include <algorithm>

namespace selvane {

namespace {

std::uint32_t HashOf(std::span<const std::uint32_t> items) {
  std::uint64_t hash = items.size();
  for (const std::uint32_t item : items) {
    hash = (hash ^ item) * 0x9E3779B97F4A7C15ULL;
    hash ^= hash >> 32;
  }
  return static_cast<std::uint32_t>(hash);
}

// Larger itemsets than this have more subsets than any file holds.
constexpr std::size_t kLargestItemset = 30;

// The counts that a batch of records wants, as they are found.
class CountTable final : public SupportCounts {
 public:
  // Adds the sequence with a count that is not known yet, unless it is there.
  void Want(std::span<const std::uint32_t> items) { SlotFor(items); }
  // Gives a wanted sequence its count, unless it has one.
  void Answer(std::span<const std::uint32_t> items, std::uint32_t count);
  std::optional<std::uint32_t> Find(std::span<const std::uint32_t> items) const override;
  std::size_t bytes() const { return slots_.size() * sizeof(Slot) + items_.size() * sizeof(std::uint32_t); }
  void Clear();

 private:
  static constexpr std::uint32_t kUnknown = UINT32_MAX;
  struct Slot {
    std::uint32_t begin = 0;  // in items_, where the number of items stands first
    std::uint32_t hash = 0;
    std::uint32_t count = kUnknown;
    bool used = false;
  };

  void SlotFor(std::span<const std::uint32_t> items);
  std::size_t Probe(std::span<const std::uint32_t> items, std::uint32_t hash) const;
  void Grow();

  std::vector<Slot> slots_;
  std::vector<std::uint32_t> items_;
  std::size_t used_ = 0;
};

std::size_t CountTable::Probe(std::span<const std::uint32_t> items, std::uint32_t hash) const {
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
    const Slot& slot = slots_[at];
    if (!slot.used) return at;
    if (slot.hash != hash || items_[slot.begin] != items.size()) continue;
    if (std::equal(items.begin(), items.end(), items_.begin() + slot.begin + 1)) return at;
  }
}

void CountTable::Grow() {
  std::vector<Slot> old(std::max<std::size_t>(slots_.size() * 2, 1024));
  old.swap(slots_);
  const std::size_t mask = slots_.size() - 1;
  for (const Slot& slot : old) {
    if (!slot.used) continue;
    std::size_t at = slot.hash & mask;
    while (slots_[at].used) at = (at + 1) & mask;
    slots_[at] = slot;
  }
}

void CountTable::SlotFor(std::span<const std::uint32_t> items) {
  if ((used_ + 1) * 4 > slots_.size() * 3) Grow();
  const std::uint32_t hash = HashOf(items);
  Slot& slot = slots_[Probe(items, hash)];
  if (slot.used) return;
  slot = {static_cast<std::uint32_t>(items_.size()), hash, kUnknown, true};
  items_.push_back(static_cast<std::uint32_t>(items.size()));
  items_.insert(items_.end(), items.begin(), items.end());
  ++used_;
}

void CountTable::Answer(std::span<const std::uint32_t> items, std::uint32_t count) {
  if (slots_.empty()) return;
  Slot& slot = slots_[Probe(items, HashOf(items))];
  if (slot.used && slot.count == kUnknown) slot.count = count;
}

std::optional<std::uint32_t> CountTable::Find(std::span<const std::uint32_t> items) const {
  if (slots_.empty()) return std::nullopt;
  const Slot& slot = slots_[Probe(items, HashOf(items))];
  if (!slot.used || slot.count == kUnknown) return std::nullopt;
  return slot.count;
}

void CountTable::Clear() {
  std::fill(slots_.begin(), slots_.end(), Slot());
  items_.clear();
  used_ = 0;
}

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
  CountTable table;
  for (std::uint32_t done = 0; done < itemset_count;) {
    table.Clear();
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
