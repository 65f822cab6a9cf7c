// An association rule: antecedent => consequent.
#pragma once

#include <cstdint>
#include <vector>

namespace selvane {

// Items are node numbers in the order in which they were mined. The figures are carried as stored; nothing
// computes them again from the itemsets.
struct Rule {
  std::vector<std::int32_t> antecedent;
  std::vector<std::int32_t> consequent;
  float support = 0;       // fraction of the rows that hold both sides
  float confidence = 0;    // support / pa
  float pa = 0;            // fraction of the rows that hold the antecedent
  float pc = 0;            // fraction of the rows that hold the consequent
  std::int32_t aspec = 0;  // number of items of the antecedent
  std::int32_t cspec = 0;  // number of items of the consequent
};

}  // namespace selvane
