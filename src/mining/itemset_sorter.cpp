#include "mining/itemset_sorter.h"

#include <system_error>
#include <utility>

namespace selvane {

namespace {

constexpr std::size_t kBlockValues = 16 * 1024;

}  // namespace

ItemsetSorter::ItemsetSorter(std::filesystem::path path) : path_(std::move(path)) {
  file_.OpenForWriting(path_);
}

ItemsetSorter::~ItemsetSorter() {
  std::error_code ignored;
  std::filesystem::remove(path_, ignored);
}

void ItemsetSorter::Add(std::size_t key, std::span<const std::uint32_t> items, std::uint32_t support) {
  Bucket& bucket = buckets_[key];
  bucket.pending.push_back(static_cast<std::uint32_t>(items.size()));
  bucket.pending.insert(bucket.pending.end(), items.begin(), items.end());
  bucket.pending.push_back(support);
  ++bucket.pending_records;
  if (bucket.pending.size() >= kBlockValues) WriteOut(bucket);
}

void ItemsetSorter::WriteOut(Bucket& bucket) {
  if (bucket.pending_records == 0) return;
  bucket.blocks.push_back({file_.Position(), bucket.pending_records});
  for (std::span<const std::uint32_t> left = bucket.pending; !left.empty();) {
    const std::size_t size = left.front();
    file_.Write(left.subspan(1, size), left[size + 1]);
    left = left.subspan(size + 2);
  }
  bucket.pending.clear();
  bucket.pending_records = 0;
}

void ItemsetSorter::ForEach(const std::function<void(const ItemsetRecord&)>& visit) {
  for (auto& [key, bucket] : buckets_) WriteOut(bucket);
  file_.Close();
  file_.OpenForReading(path_);
  ItemsetRecord record;
  for (const auto& [key, bucket] : buckets_) {
    for (const Block& block : bucket.blocks) {
      file_.Seek(block.position);
      for (std::uint32_t i = 0; i < block.records; ++i) {
        file_.ReadNext(record);
        visit(record);
      }
    }
  }
}

}  // namespace selvane
