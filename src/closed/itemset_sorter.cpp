#include "closed/itemset_sorter.h"

#include <system_error>
#include <utility>

namespace selvane {

namespace {

constexpr std::size_t kBlockBytes = std::size_t{64} << 10;

}  // namespace

ItemsetSorter::ItemsetSorter(std::filesystem::path path) : path_(std::move(path)) {
  try {
    file_.OpenForWriting(path_);
  } catch (...) {
    Remove();  // it can be there without memory for its buffer
    throw;
  }
}

void ItemsetSorter::Remove() noexcept {
  std::error_code ignored;
  std::filesystem::remove(path_, ignored);
}

void ItemsetSorter::Add(std::size_t key, std::initializer_list<std::string_view> records) {
  if (buckets_.size() <= key) buckets_.resize(key + 1);
  Bucket& bucket = buckets_[key];
  for (const std::string_view record : records) bucket.pending += record;
  if (bucket.pending.size() >= kBlockBytes) WriteOut(bucket);
}

// Blocks of one bucket lie anywhere in the file, in the order in which they filled up.
void ItemsetSorter::WriteOut(Bucket& bucket) {
  if (bucket.pending.empty()) return;
  bucket.blocks.push_back({file_.Position(), bucket.pending.size()});
  file_.WriteEncoded(bucket.pending);
  bucket.pending.clear();
}

void ItemsetSorter::ForEachBlock(const std::function<void(std::string_view records)>& visit) {
  for (Bucket& bucket : buckets_) WriteOut(bucket);
  file_.Close();
  file_.OpenForReading(path_);
  std::string records;
  for (const Bucket& bucket : buckets_) {
    for (const Block& block : bucket.blocks) {
      file_.Seek(block.position);
      records.resize(block.size);
      file_.ReadEncoded(records);
      visit(records);
    }
  }
}

}  // namespace selvane
