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
  // Every search for the next level starts from the bound, and a rule that was found counts as 0.
  if (specificity <= 0 || specificity >= bound_) return;
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
  // Rules only leave a level until MostGeneral starts anew, so a level passed over here stays empty.
  auto level = levels.upper_bound(value);
  while (level != levels.end() && level->second.available == 0) ++level;
  return level;
}

std::vector<RuleNumber> SpecificityFilter::MostGeneral(std::span<const NodeNumber> ground,
                                                       const SpecificityOptions& options,
                                                       Progress& progress) {
  const RuleSide side = options.side;
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
  // A specificity of 0 on the other side is the smallest there is, though no later step will find the rule.
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
  progress.SetStatus("Ordering filtered rules ...");
  OrderRules(rules_, options.order, found);
  return found;
}

std::vector<RuleNumber> SpecificityFilter::Find(RuleNumber rule, SpecificityMove move,
                                                const SpecificityOptions& options) {
  const RuleSide side = move == SpecificityMove::kMoreSpecific ? options.side : Other(options.side);
  const Rule& general = rules_[rule];
  const auto level = NextLevel(SpecificityOf(general, side), side);
  if (level == LevelsOf(side).end()) return {};
  // The level is chosen before the other side is looked at: where none of its rules fits, higher levels are
  // not tried.
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
  OrderRules(rules_, options.order, found);
  return found;
}

std::vector<RuleNumber> SpecificityFilter::Explore(RuleNumber rule, SpecificityMove move,
                                                   const SpecificityOptions& options, Progress& progress) {
  progress.SetStatus(move == SpecificityMove::kMoreSpecific ? "Exploring more specifying rules..."
                                                            : "Exploring more enhancing rules...");
  std::vector<RuleNumber> found = Find(rule, move, options);
  progress.SetStatus("Ordering filtered rules ...");
  return found;
}

std::vector<SpecificityStep> SpecificityFilter::Walk(std::span<const NodeNumber> ground,
                                                     const SpecificityOptions& options, int depth,
                                                     Progress& progress) {
  std::vector<SpecificityStep> steps;
  for (const RuleNumber number : MostGeneral(ground, options, progress)) steps.push_back({number, 0});
  // Level by level and not rule by rule: a rule that several steps lead to belongs to the shortest way.
  for (int level = 0; level < depth; ++level) {
    std::vector<SpecificityStep> longer;
    for (const SpecificityStep& step : steps) {
      longer.push_back(step);
      if (step.depth != level) continue;
      progress.Pulse();
      for (const auto move : {SpecificityMove::kMoreSpecific, SpecificityMove::kEnhanceOtherSide}) {
        for (const RuleNumber number : Find(step.rule, move, options)) longer.push_back({number, level + 1});
      }
    }
    steps = std::move(longer);
  }
  return steps;
}

}  // namespace selvane
