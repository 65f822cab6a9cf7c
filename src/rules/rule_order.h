// Rules by one of their figures.
#pragma once

#include <vector>

#include "rules/rule_list.h"

namespace selvane {

enum class RuleOrder {
  kNumber,
  kDecreasingSupport,
  kDecreasingConfidence,
  kDecreasingAntecedent,  // by the fraction of the rows that hold the side
  kDecreasingConsequent
};

// Puts rules in order. Those with equal figures stay as they are; those with a figure that is not above 0,
// and so those with one that is no number, come last and stay as they are too.
void OrderRules(const RuleList& rules, RuleOrder order, std::vector<RuleNumber>& numbers);

}  // namespace selvane
