#include "rules/rule_tally.h"

namespace selvane {

std::optional<double> RuleTally::FittingConfidence(std::uint64_t most) const {
  std::uint64_t kept = 0;
  for (std::size_t i = by_thousandth_.size(); i-- > 0;) {
    kept += by_thousandth_[i];
    if (kept > most) {
      // Too many even among the rules of full confidence.
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
      // The first ten-thousandth that a share of i rows does not reach, compared as a minimum support would
      // be.
      auto n = static_cast<std::uint64_t>(static_cast<double>(i) / row_count_ * 10000);
      const float share = static_cast<float>(i) / static_cast<float>(row_count_);
      while (share >= static_cast<float>(static_cast<double>(n) / 10000)) ++n;
      if (n > 10000) return std::nullopt;
      return static_cast<double>(n) / 10000;
    }
  }
  return 0.0;
}

}  // namespace selvane
