// How many rules a run gives, counted before any is stored.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace selvane {

// Thresholds above those of a run with which its rules would have fitted a table.
struct FittingThresholds {
  std::optional<double> confidence;  // in thousandths; nothing when too many rules have confidence 1
  std::optional<double> support;     // in ten-thousandths; nothing when too many stand in every row
};

// That a run gives more rules than a table holds, and what to do about it.
struct TooManyRules {
  std::uint64_t found = 0;
  long stored = 0;  // the first of them, which the table holds
  FittingThresholds fitting;
};

// Counts rules by confidence and by support, in fixed memory, so that a run which gives more rules than a
// table holds can name thresholds that would have fitted.
class RuleTally {
 public:
  explicit RuleTally(std::uint32_t row_count)
      : row_count_(row_count), by_rows_(row_count + std::size_t{1}, 0) {}

  // A rule that stands in `rows` rows. Called for each of what may be billions.
  void Add(float confidence, std::uint32_t rows) {
    ++total_;
    ++by_thousandth_[ThousandthOf(confidence)];
    ++by_rows_[std::min(rows, row_count_)];
  }
  std::uint64_t total() const { return total_; }
  // The smallest thresholds, of these steps, at which no more than `most` rules stay.
  FittingThresholds Fitting(std::uint64_t most) const {
    return {FittingConfidence(most), FittingSupport(most)};
  }

 private:
  std::optional<double> FittingConfidence(std::uint64_t most) const;
  std::optional<double> FittingSupport(std::uint64_t most) const;
  static float Thousandth(std::size_t n) { return static_cast<float>(static_cast<double>(n) / 1000); }
  // The greatest thousandth that the confidence reaches, compared as a minimum confidence would be.
  // Not-a-number, which a damaged file can give, counts as 0.
  static std::size_t ThousandthOf(float confidence) {
    if (!(confidence > 0)) return 0;
    const auto n = static_cast<std::size_t>(std::min(confidence, 1.0F) * 1000);
    if (n < 1000 && confidence >= Thousandth(n + 1)) return n + 1;
    return confidence < Thousandth(n) ? n - 1 : n;
  }

  std::uint32_t row_count_;
  std::uint64_t total_ = 0;
  std::array<std::uint64_t, 1001> by_thousandth_{};  // rules by whole thousandths of confidence
  std::vector<std::uint64_t> by_rows_;
};

}  // namespace selvane
