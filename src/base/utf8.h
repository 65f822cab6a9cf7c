// The characters of a text in UTF-8, one after the other.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>

namespace selvane {

// Length of the well-formed sequence at the start of `text`, which is not empty, and its code; 0 when it is
// not well-formed.
std::size_t SequenceLength(std::string_view text, char32_t& code);

// Visits each character of a text as its code and its bytes, and each byte that is no UTF-8 as nothing and
// itself.
template <typename Visit>
void ForEachCode(std::string_view utf8, const Visit& visit) {
  while (!utf8.empty()) {
    char32_t code = 0;
    const std::size_t length = SequenceLength(utf8, code);
    const std::string_view bytes = utf8.substr(0, std::max<std::size_t>(length, 1));
    utf8.remove_prefix(bytes.size());
    visit(length > 0 ? std::optional(code) : std::nullopt, bytes);
  }
}

}  // namespace selvane
