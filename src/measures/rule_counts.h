// The four counts that every measure of a rule is made of.
#pragma once

#include <cstdint>

namespace selvane {

// Numbers of rows: all of them, those with the antecedent, those with the consequent, those with both sides.
struct RuleCounts {
  std::uint64_t rows = 0;
  std::uint64_t antecedent = 0;
  std::uint64_t consequent = 0;
  std::uint64_t both = 0;
  bool operator==(const RuleCounts&) const = default;

  // Counts that a run can give. Damaged or rounded ones may be none, and have no measures.
  bool IsPossible() const {
    return both <= antecedent && both <= consequent && antecedent <= rows && consequent <= rows;
  }
  // Whether they leave a number of rows with neither side. Rows that hold both sides by one term only do not
  // count for both where witnesses must be distinct, so the sides may overlap in more rows than `both`.
  bool FitRows() const { return antecedent + consequent - both <= rows; }
};

}  // namespace selvane
