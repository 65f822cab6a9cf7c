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

// How to go on from a rule: to rules that say more on the side that was chosen, or on the other one.
enum class SpecificityMove { kMoreSpecific, kEnhanceOtherSide };

struct SpecificityOptions {
  RuleSide side = RuleSide::kAntecedent;            // that must hold the ground items
  RuleOrder order = RuleOrder::kDecreasingSupport;  // of what is found together
};

// A rule that a walk has found, with the number of steps that led to it.
struct SpecificityStep {
  RuleNumber rule = 0;
  int depth = 0;
  bool operator==(const SpecificityStep&) const = default;
};

// A rule's specificity is its ASPEC for the antecedent and its CSPEC for the consequent. Each rule is found
// at most once after a call of MostGeneral.
class SpecificityFilter {
 public:
  // `bound` is greater than every specificity; only values below it are found. The rules must outlive the
  // filter.
  SpecificityFilter(const RuleList& rules, std::int32_t bound) : rules_(rules), bound_(bound) {}

  // Starts anew: of the rules whose side holds all ground items, those with the smallest specificity of that
  // side and, among them, of the other side. Moves the bar from 0 to the number of rules.
  std::vector<RuleNumber> MostGeneral(std::span<const NodeNumber> ground, const SpecificityOptions& options,
                                      Progress& progress);

  // Of the rules not found yet, those of the next specificity, on the side that the move is about, above that
  // of `rule`, if their other side is the same, in its order too, and that side holds the one of `rule`.
  std::vector<RuleNumber> Explore(RuleNumber rule, SpecificityMove move, const SpecificityOptions& options,
                                  Progress& progress);

  // The most general rules and, below each, what `depth` steps of both moves find from every rule that was
  // found, level by level.
  std::vector<SpecificityStep> Walk(std::span<const NodeNumber> ground, const SpecificityOptions& options,
                                    int depth, Progress& progress);

 private:
  // The rules of one specificity that hold the ground items: how many are still to be found, and all of them
  // by their other side. Those that were found stay in the lists; `available_` tells them apart.
  struct Level {
    RuleNumber available = 0;
    std::unordered_map<std::string, std::vector<RuleNumber>> by_other_side;
  };
  using Levels = std::map<std::int32_t, Level>;

  Levels& LevelsOf(RuleSide side) { return side == RuleSide::kAntecedent ? antecedents_ : consequents_; }
  // The next level above with a rule to be found, or the end.
  Levels::iterator NextLevel(std::int32_t value, RuleSide side);
  void Add(RuleNumber number, RuleSide side);
  std::vector<RuleNumber> Find(RuleNumber rule, SpecificityMove move, const SpecificityOptions& options);
  void Take(const std::vector<RuleNumber>& found);

  const RuleList& rules_;
  std::int32_t bound_;
  KeepMask available_;
  Levels antecedents_;
  Levels consequents_;
};

}  // namespace selvane
