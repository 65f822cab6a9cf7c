// How many rows make an itemset frequent.
#pragma once

#include <cstdint>

namespace selvane {

// The smallest number of rows, of `row_count`, whose ratio reaches the fraction when both are compared as
// 32-bit floats; row_count + 1 when none does.
std::uint32_t LeastRows(float fraction, std::uint32_t row_count);

}  // namespace selvane
