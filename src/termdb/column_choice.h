// Which of the terms that were met become columns of a term table.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "taxonomy/taxonomy_store.h"

namespace selvane {

struct ColumnChoice {
  std::optional<std::size_t> most = 10;  // nothing: all
  std::uint32_t min_rows = 1;            // that hold the term
  // Terms, by name, entry term or identifier, and position codes, which stand for a position and all below
  // it; @FILE for the lines of a file, but for empty ones and those that begin with #.
  std::vector<std::string> leave_out;
};

// The places of the `most` greatest counts, of equal ones the first, with the greatest first; all places in
// their order when there are no more of them.
std::vector<std::uint32_t> MostFrequent(std::span<const std::uint32_t> counts, std::size_t most);

// The columns, as places in `terms`, of which each has its count of rows: what is left out goes first, so
// that as many others take its place. Throws InputError for a term or a position that the taxonomy does not
// know, FileError, DatabaseError.
std::vector<std::uint32_t> ChooseColumns(const ColumnChoice& choice, std::span<const std::string> terms,
                                         std::span<const std::uint32_t> counts,
                                         const TaxonomyStore& taxonomy);

// The same check of `leave_out` alone, for use before long work.
void CheckLeaveOut(const ColumnChoice& choice, const TaxonomyStore& taxonomy);

}  // namespace selvane
