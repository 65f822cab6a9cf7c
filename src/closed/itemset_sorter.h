// Itemset records brought into order through a file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "itemsets/itemset_file.h"

namespace selvane {

// Keeps records by a small number, such as their size, in a file that holds blocks of records of one number.
// In memory are one block for each number, and the places of the blocks: 16 bytes for each 64 KiB written.
// Removes the file in the end. Every operation throws FileError when it fails.
class ItemsetSorter {
 public:
  explicit ItemsetSorter(std::filesystem::path path);
  ItemsetSorter(const ItemsetSorter&) = delete;
  ItemsetSorter& operator=(const ItemsetSorter&) = delete;
  ~ItemsetSorter() { Remove(); }

  // Adds encoded records that stay together.
  void Add(std::size_t key, std::initializer_list<std::string_view> records);
  // Visits all records by ascending key, those of one key in the order in which they came, in blocks of what
  // was added together. Nothing can be added from then on.
  void ForEachBlock(const std::function<void(std::string_view records)>& visit);

 private:
  struct Block {
    std::uint64_t position;
    std::size_t size;  // bytes
  };
  struct Bucket {
    std::string pending;
    std::vector<Block> blocks;
  };

  void Remove() noexcept;
  void WriteOut(Bucket& bucket);

  std::filesystem::path path_;
  ItemsetFile file_;
  std::vector<Bucket> buckets_;  // by key
};

}  // namespace selvane
