// Levels on their way into the itemset file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "apriori/level.h"
#include "itemsets/itemset_file.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// Writes level after level. A failure of the file is kept, and what comes after it is counted but lost: the
// search goes on, and its caller asks in the end.
class LevelWriter {
 public:
  // `nodes` are those of the items, by their places in the first level, and must outlive the writer.
  LevelWriter(const std::filesystem::path& path, std::span<const NodeNumber> nodes);

  void Write(const Level& level);
  // The file is complete when this returns and there is no error.
  void Close();

  // How many itemsets were given to Write.
  std::uint32_t written() const { return written_; }
  // Why the file is not complete; empty when it is.
  const std::string& error() const { return error_; }

 private:
  template <typename Operation>
  void Try(const Operation& operation);

  std::span<const NodeNumber> nodes_;
  ItemsetFile file_;
  std::uint32_t written_ = 0;
  std::string error_;
  std::vector<std::uint32_t> record_items_;
};

}  // namespace selvane
