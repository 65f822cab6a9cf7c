// Tells files apart by what they hold.
#pragma once

#include <string>
#include <string_view>

namespace selvane {

// 32 hexadecimal digits (XXH3 with 128 bits). Equal for equal bytes; for different ones different, unless
// somebody makes them so on purpose.
std::string ContentHash(std::string_view bytes);

}  // namespace selvane
