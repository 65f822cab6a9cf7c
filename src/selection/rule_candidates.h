// The rules of frequent itemsets, one after the other, with the tests that need nothing but counts.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "apriori/itemset_trie.h"
#include "selection/selection.h"

namespace selvane {

// One way to divide an itemset. The spans are valid until the next one.
struct RuleCandidate {
  std::span<const std::uint32_t> items;   // of both sides, in canonical order
  std::span<const std::uint32_t> counts;  // of all subsets of them, see ItemsetTrie
  std::uint32_t antecedent = 0;           // the subset that is the antecedent
  RuleCounts rule;

  std::uint32_t consequent() const { return static_cast<std::uint32_t>(counts.size() - 1) ^ antecedent; }
};

// How many rules each of the first steps left.
struct CandidateCounts {
  std::uint64_t confident = 0;
  std::uint64_t lifted = 0;
  std::uint64_t improving = 0;
};

// Calls `visit` for each rule that reaches the minimum confidence, whose sides are of allowed items, and that
// passes the steps of lift and improvement, where they are taken. Throws Interrupted.
CandidateCounts ForEachCandidate(const ItemsetTrie& itemsets, std::uint32_t row_count,
                                 const SelectionOptions& options,
                                 const std::function<void(const RuleCandidate&)>& visit, Progress& progress);

}  // namespace selvane
