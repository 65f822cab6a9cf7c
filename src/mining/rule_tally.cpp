#include "mining/rule_tally.h"

#include <cmath>

namespace selvane {

std::optional<double> RuleTally::FittingConfidence(std::uint64_t most) const {
  std::uint64_t kept = 0;
  for (std::size_t i = by_thousandth_.size(); i-- > 0;) {
    kept += by_thousandth_[i];
    if (kept > most) {
      if (i + 1 >= by_thousandth_.size()) return std::nullopt;
      return static_cast<double>(i + 1) / 1000;
    }
  }
  return 0.0;
}

std::optional<double> RuleTally::FittingSupport(std::uint64_t most) const {
  std::uint64_t kept = 0;
  for (std::size_t i = by_rows_.size(); i-- > 0;) {
    kept += by_rows_[i];
    if (kept > most) {
      // Above i rows' share and, where it can be, not above that of i + 1.
      const double share = std::floor(static_cast<double>(i) / row_count_ * 10000 + 1) / 10000;
      if (share > 1) return std::nullopt;
      return share;
    }
  }
  return 0.0;
}

}  // namespace selvane
