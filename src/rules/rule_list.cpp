#include "rules/rule_list.h"

namespace selvane {

RuleList::RuleList(const RulesStore& store, Progress& progress) {
  const RuleNumber count = store.CountRules();
  rules_.reserve(static_cast<std::size_t>(count));
  progress.SetRange(0, static_cast<int>(count));
  progress.SetPosition(0);
  Rule rule;
  for (RuleNumber number = 1; number <= count; ++number) {
    store.LoadRule(number, rule);
    rules_.push_back(rule);
    progress.SetPosition(static_cast<int>(number));
    if (number % 256 == 0) progress.Pulse();
  }
}

}  // namespace selvane
