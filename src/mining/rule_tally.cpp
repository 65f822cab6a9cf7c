#include "mining/rule_tally.h"

#include <algorithm>
#include <cmath>

namespace selvane {

void RuleTally::Add(float confidence, std::uint32_t rows) {
  ++total_;
  const auto thousandth = static_cast<std::size_t>(std::clamp(confidence, 0.0F, 1.0F) * 1000);
  ++by_thousandth_[std::min(thousandth, by_thousandth_.size() - 1)];
  ++by_rows_[std::min<std::size_t>(rows, row_count_)];
}

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
