#include "filters/specificity_filter.h"

#include <algorithm>

namespace selvane {

namespace {

constexpr RuleNumber kPulseRules = 4096;

RuleSide Other(RuleSide side) {
  return side == RuleSide::kAntecedent ? RuleSide::kConsequent : RuleSide::kAntecedent;
}

const std::vector<NodeNumber>& ItemsOf(const Rule& rule, RuleSide side) {
  return side == RuleSide::kAntecedent ? rule.antecedent : rule.consequent;
}

std::int32_t SpecificityOf(const Rule& rule, RuleSide side) {
  return side == RuleSide::kAntecedent ? rule.aspec : rule.cspec;
}

bool Contains(std::span<const NodeNumber> all, std::span<const NodeNumber> some) {
  return std::all_of(some.begin(), some.end(),
                     [all](NodeNumber item) { return std::find(all.begin(), all.end(), item) != all.end(); });
}

}  // namespace

void SpecificityFilter::Add(RuleNumber number, RuleSide side) {
  const Rule& rule = rules_[number];
  const std::int32_t specificity = SpecificityOf(rule, side);
  if (specificity <= 0 || specificity >= bound_) return;  // never found
  Level& level = LevelsOf(side)[specificity];
  ++level.available;
  level.by_other_side[ItemsetToText(ItemsOf(rule, Other(side)))].push_back(number);
}

void SpecificityFilter::Take(const std::vector<RuleNumber>& found) {
  for (const RuleNumber number : found) {
    available_.Keep(number, false);
    for (const RuleSide side : {RuleSide::kAntecedent, RuleSide::kConsequent}) {
      const auto level = LevelsOf(side).find(SpecificityOf(rules_[number], side));
      if (level != LevelsOf(side).end()) --level->second.available;
    }
  }
}

SpecificityFilter::Levels::iterator SpecificityFilter::NextLevel(std::int32_t value, RuleSide side) {
  Levels& levels = LevelsOf(side);
  auto level = levels.upper_bound(value);
  while (level != levels.end() && level->second.available == 0) ++level;
  return level;
}

std::vector<RuleNumber> SpecificityFilter::MostGeneral(std::span<const NodeNumber> ground, RuleSide side,
                                                       Progress& progress) {
  progress.SetStatus("Filtering rules using specificity...");
  progress.SetRange(0, static_cast<int>(rules_.size()));
  available_ = KeepMask(rules_.size());
  antecedents_.clear();
  consequents_.clear();
  for (RuleNumber number = 1; number <= rules_.size(); ++number) {
    if (Contains(ItemsOf(rules_[number], side), ground)) {
      available_.Keep(number);
      Add(number, RuleSide::kAntecedent);
      Add(number, RuleSide::kConsequent);
    }
    if (number % kPulseRules == 0) {
      progress.SetPosition(static_cast<int>(number));
      progress.Pulse();
    }
  }
  progress.SetPosition(static_cast<int>(rules_.size()));
  const auto level = NextLevel(0, side);
  if (level == LevelsOf(side).end()) return {};
  std::vector<RuleNumber> found;
  std::int32_t smallest = bound_;
  for (RuleNumber number = 1; number <= rules_.size(); ++number) {
    if (!available_.IsKept(number) || SpecificityOf(rules_[number], side) != level->first) continue;
    const std::int32_t other = SpecificityOf(rules_[number], Other(side));
    if (other > smallest || other == bound_) continue;
    if (other < smallest) found.clear();
    smallest = other;
    found.push_back(number);
  }
  Take(found);
  return found;
}

std::vector<RuleNumber> SpecificityFilter::MoreSpecific(RuleNumber rule, RuleSide side) {
  const Rule& general = rules_[rule];
  const auto level = NextLevel(SpecificityOf(general, side), side);
  if (level == LevelsOf(side).end()) return {};
  const auto& by_other_side = level->second.by_other_side;
  const auto same = by_other_side.find(ItemsetToText(ItemsOf(general, Other(side))));
  if (same == by_other_side.end()) return {};
  std::vector<RuleNumber> found;
  for (const RuleNumber number : same->second) {
    if (available_.IsKept(number) && Contains(ItemsOf(rules_[number], side), ItemsOf(general, side))) {
      found.push_back(number);
    }
  }
  Take(found);
  return found;
}

std::vector<RuleNumber> SpecificityFilter::EnhanceOtherSide(RuleNumber rule, RuleSide side) {
  return MoreSpecific(rule, Other(side));
}

std::vector<SpecificityStep> WalkSpecificity(SpecificityFilter& filter, const RuleList& rules,
                                             std::span<const NodeNumber> ground, RuleSide side,
                                             RuleOrder order, int depth, Progress& progress) {
  std::vector<RuleNumber> found = filter.MostGeneral(ground, side, progress);
  OrderRules(rules, order, found);
  std::vector<SpecificityStep> steps;
  steps.reserve(found.size());
  for (const RuleNumber number : found) steps.push_back({number, 0});
  for (int level = 0; level < depth; ++level) {
    std::vector<SpecificityStep> longer;
    for (const SpecificityStep& step : steps) {
      longer.push_back(step);
      if (step.depth != level) continue;
      progress.Pulse();
      for (const auto explore : {&SpecificityFilter::MoreSpecific, &SpecificityFilter::EnhanceOtherSide}) {
        std::vector<RuleNumber> more = (filter.*explore)(step.rule, side);
        OrderRules(rules, order, more);
        for (const RuleNumber number : more) longer.push_back({number, level + 1});
      }
    }
    steps = std::move(longer);
  }
  return steps;
}

}  // namespace selvane
