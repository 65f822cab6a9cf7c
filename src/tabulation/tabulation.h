// tabulation/: compares the entries of two files, without any database.
#pragma once

#include <cstddef>
#include <filesystem>

namespace selvane {

// Distinct entries, that is, words between blanks or line ends.
struct Tabulation {
  std::size_t in_both = 0;
  std::size_t only_in_first = 0;
  std::size_t only_in_second = 0;
};

// Counts the entries of both files and writes the three counts to `result`, a line each, replacing the file.
// Throws FileError.
Tabulation TabulateEntries(const std::filesystem::path& first, const std::filesystem::path& second,
                           const std::filesystem::path& result);

}  // namespace selvane
