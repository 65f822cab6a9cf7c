// Sets of row numbers as bytes, in a form that other programs can read.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace selvane {

// Row numbers of 32 bits, in blocks: the high 16 bits are the number of the block.
inline constexpr std::uint32_t kRowsOfBlock = 65536;

// The most rows of a table of sets. Searches count one more, and need 500 MB for each frequent item then.
inline constexpr std::uint32_t kMostSetRows = 4'000'000'000;

// Rows of one block, ascending and at least one, as a Roaring set in its portable format: a list, a bitset or
// runs, whichever is shortest.
// D. Lemire et al., Roaring Bitmaps: Implementation of an Optimized Software Library, 2018.
std::string EncodeRows(std::span<const std::uint32_t> rows);

// Appends the rows of such a set, in ascending order. The bytes come from a file, so they are checked whole:
// throws InputError, and appends nothing, unless they are exactly one set of rows of this block. The library
// that writes the sets checks sizes only: a list out of order, or a bitset of another count than is stated,
// would be read as it is and spoil what is counted later.
void AppendRows(std::string_view bytes, std::uint32_t block, std::vector<std::uint32_t>& rows);

}  // namespace selvane
