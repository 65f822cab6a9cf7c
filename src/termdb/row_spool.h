// Rows of a term table that wait on the disk until its columns are known.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <vector>

#include "base/file.h"

namespace selvane {

// A file without a name, so that nothing is left of it however the program ends.
class RowSpool {
 public:
  // Makes it in this folder. Throws FileError, as all operations do.
  explicit RowSpool(const std::filesystem::path& folder);

  void Add(std::span<const std::uint32_t> row);
  // Calls `visit` with each row, in order; it is valid during the call only.
  void ForEach(const std::function<void(std::span<const std::uint32_t>)>& visit);

 private:
  void WriteOut();
  bool ReadMore();
  [[noreturn]] void Fail(const char* what) const;

  std::filesystem::path folder_;
  FileDescriptor file_;
  std::vector<std::uint32_t> buffer_;  // each row with its length before it
  std::size_t next_ = 0;
};

}  // namespace selvane
