#include "itemsets/least_rows.h"

namespace selvane {

std::uint32_t LeastRows(float fraction, std::uint32_t row_count) {
  std::uint32_t low = 0;
  // The ratio grows with the rows, so the border is found by halving. It is not computed from the fraction:
  // 0.05F of 100 rows is above 5, but 5 rows are a ratio of 0.05F.
  std::uint32_t high = row_count + 1;
  while (low < high) {
    const std::uint32_t middle = low + (high - low) / 2;
    const bool reached = static_cast<float>(middle) / static_cast<float>(row_count) >= fraction;
    reached ? high = middle : low = middle + 1;
  }
  return low;
}

}  // namespace selvane
