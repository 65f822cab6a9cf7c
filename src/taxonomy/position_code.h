// Position codes: where a node stands in the taxonomy.
//
// A taxonomy file writes a position as a tree number, C23.888. The database and everything else of ours write
// it as a position code, C.23.888, in which the category's letter is a level of its own.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace selvane {

// The most bytes of a code that is read: those of taxonomy files have 127 characters at most.
inline constexpr std::size_t kLongestPositionCode = 1000;

// Whether the code is that of a category, the top of a taxonomy: one letter.
bool IsCategory(std::string_view code);
// The code of the category that a position belongs to; empty for an empty code.
std::string_view CategoryOf(std::string_view code);
// The code without its last segment; empty for a code without a ".", as a category's is.
std::string_view ParentCode(std::string_view code);
// How many positions stand above this one: 0 for a category.
std::ptrdiff_t LevelOf(std::string_view code);
// Whether a position is the one named by `top` or below it. Everything is below the empty code. Unlike
// pruning, which compares texts, this compares levels: C.12 is not below C.1.
bool IsAtOrBelow(std::string_view code, std::string_view top);

// C.23.888 of C23.888, and back. A category is written alike both ways.
std::string PositionCode(std::string_view tree_number);
std::string TreeNumber(std::string_view position_code);
// The position codes of a tree value, which is a tree number or several separated by ";". Blanks around a
// number and empty numbers are dropped.
std::vector<std::string> PositionCodes(std::string_view tree);

}  // namespace selvane
