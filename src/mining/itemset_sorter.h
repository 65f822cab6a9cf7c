// Itemset records brought into order through a file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <span>
#include <vector>

#include "mining/itemset_file.h"

namespace selvane {

// Keeps records by a small number, such as their size, in a file that holds blocks of records of one number.
// In memory is one block for each number, so what is held does not grow with the records. Removes the file in
// the end. Every operation throws FileError when it fails.
class ItemsetSorter {
 public:
  explicit ItemsetSorter(std::filesystem::path path);
  ItemsetSorter(const ItemsetSorter&) = delete;
  ItemsetSorter& operator=(const ItemsetSorter&) = delete;
  ~ItemsetSorter();

  void Add(std::size_t key, std::span<const std::uint32_t> items, std::uint32_t support);
  // Visits all records by ascending key, those of one key in the order in which they came. Nothing can be
  // added from then on.
  void ForEach(const std::function<void(const ItemsetRecord&)>& visit);

 private:
  struct Block {
    std::uint64_t position;
    std::uint32_t records;
  };
  struct Bucket {
    std::vector<std::uint32_t> pending;  // of each record its size, its items and its support
    std::uint32_t pending_records = 0;
    std::vector<Block> blocks;
  };

  void WriteOut(Bucket& bucket);

  std::filesystem::path path_;
  ItemsetFile file_;
  std::map<std::size_t, Bucket> buckets_;
};

}  // namespace selvane
