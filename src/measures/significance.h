// Which of many tested rules are significant.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace selvane {

// How a level of significance is shared among many tests. Holm and Bonferroni keep the chance of even one
// false rule below the level, Holm with more power; Benjamini and Hochberg keep the expected share of false
// rules among the significant ones below it.
// S. Holm, A simple sequentially rejective multiple test procedure, 1979; C. E. Bonferroni, 1936;
// Y. Benjamini and Y. Hochberg, Controlling the false discovery rate, 1995.
enum class Correction { kNone, kBonferroni, kHolm, kBenjaminiHochberg };
// As options and run records have it: none, bonferroni, holm, bh.
std::string_view CorrectionName(Correction correction);

// The p-values of all tests, in memory that grows with the different ones only.
class SignificanceTally {
 public:
  // `level` is in (0, 1].
  explicit SignificanceTally(double level);

  // One more test, by the natural logarithm of its p-value.
  void Add(double log_p);
  std::uint64_t tested() const { return tested_; }
  // The logarithm of the greatest p-value that is significant; nothing when none is.
  std::optional<double> GreatestSignificant(Correction correction);

 private:
  struct Group {
    double log_p;
    std::uint64_t tests;
  };
  void Compact();

  double log_level_;
  std::uint64_t tested_ = 0;
  // Groups of equal values, in ascending order up to `sorted_`. Only values up to the level: no correction
  // calls a greater one significant.
  std::vector<Group> groups_;
  std::size_t sorted_ = 0;
};

}  // namespace selvane
