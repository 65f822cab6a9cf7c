// Walks from the most general rules that hold ground items to more specific ones.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "filters/kept_rules.h"
#include "filters/rule_template.h"

namespace selvane {

// A rule's specificity is its ASPEC for the antecedent and its CSPEC for the consequent. Each rule is found
// at most once after a call of MostGeneral. Results are in the order of the rules' numbers.
class SpecificityFilter {
 public:
  // `bound` is greater than every specificity; only values below it are found. The rules must outlive the
  // filter.
  SpecificityFilter(const RuleList& rules, std::int32_t bound) : rules_(rules), bound_(bound) {}

  // Starts anew: of the rules whose side holds all ground items, those with the smallest specificity of that
  // side and, among them, of the other side. Moves the bar from 0 to the number of rules.
  std::vector<RuleNumber> MostGeneral(std::span<const NodeNumber> ground, RuleSide side, Progress& progress);

  // Of the rules not found yet, those of the next specificity of `side` above that of `rule`, if their other
  // side is the same, in its order too, and their `side` holds that of `rule`.
  std::vector<RuleNumber> MoreSpecific(RuleNumber rule, RuleSide side);
  // The same with the sides exchanged.
  std::vector<RuleNumber> EnhanceOtherSide(RuleNumber rule, RuleSide side);

 private:
  // The rules of one specificity: how many are still to be found, and all of them by their other side.
  struct Level {
    RuleNumber available = 0;
    std::unordered_map<std::string, std::vector<RuleNumber>> by_other_side;
  };
  using Levels = std::map<std::int32_t, Level>;

  Levels& LevelsOf(RuleSide side) { return side == RuleSide::kAntecedent ? antecedents_ : consequents_; }
  // The next level above with a rule to be found, or the end.
  Levels::iterator NextLevel(std::int32_t value, RuleSide side);
  void Add(RuleNumber number, RuleSide side);
  void Take(const std::vector<RuleNumber>& found);

  const RuleList& rules_;
  std::int32_t bound_;
  KeepMask available_;
  Levels antecedents_;
  Levels consequents_;
};

// A rule that the walk below has found, with the number of steps that led to it.
struct SpecificityStep {
  RuleNumber rule = 0;
  int depth = 0;
};

// The most general rules and, below each, what `depth` steps of MoreSpecific and then EnhanceOtherSide find
// from every rule shown, level by level in the given order.
std::vector<SpecificityStep> WalkSpecificity(SpecificityFilter& filter, const RuleList& rules,
                                             std::span<const NodeNumber> ground, RuleSide side,
                                             RuleOrder order, int depth, Progress& progress);

}  // namespace selvane
