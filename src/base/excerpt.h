// What a message quotes of a value.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace selvane {

// The most bytes of a value that a message quotes.
inline constexpr std::size_t kLongestExcerpt = 200;

// The text as it is or, of a longer one, its beginning up to a whole character of UTF-8, with "..." and its
// number of bytes behind: a value of a damaged file can have any length, and a message should be readable.
std::string Excerpt(std::string_view text, std::size_t most = kLongestExcerpt);

}  // namespace selvane
