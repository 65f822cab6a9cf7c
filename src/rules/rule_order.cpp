#include "rules/rule_order.h"

#include <algorithm>

namespace selvane {

namespace {

float FigureOf(const Rule& rule, RuleOrder order) {
  switch (order) {
    case RuleOrder::kDecreasingConfidence:
      return rule.confidence;
    case RuleOrder::kDecreasingAntecedent:
      return rule.pa;
    case RuleOrder::kDecreasingConsequent:
      return rule.pc;
    default:
      return rule.support;
  }
}

}  // namespace

void OrderRules(const RuleList& rules, RuleOrder order, std::vector<RuleNumber>& numbers) {
  if (order == RuleOrder::kNumber) {
    std::sort(numbers.begin(), numbers.end());
    return;
  }
  const auto figure = [&rules, order](RuleNumber number) { return FigureOf(rules[number], order); };
  // The greatest figure is looked for from 0 on, so what is not above it is never found. It also keeps
  // figures that are no numbers, which compare with nothing, out of the sorting.
  const auto rest = std::stable_partition(numbers.begin(), numbers.end(),
                                          [&figure](RuleNumber number) { return figure(number) > 0; });
  std::stable_sort(numbers.begin(), rest,
                   [&figure](RuleNumber a, RuleNumber b) { return figure(a) > figure(b); });
}

}  // namespace selvane
