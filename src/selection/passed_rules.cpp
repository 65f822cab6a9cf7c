#include "selection/passed_rules.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace selvane {

void PassedRules::Add(std::span<const std::uint32_t> antecedent, std::span<const std::uint32_t> consequent,
                      const RuleCounts& counts) {
  PassedRule rule;
  rule.begin = items_.size();
  rule.antecedent_size = static_cast<std::uint16_t>(antecedent.size());
  rule.size = static_cast<std::uint16_t>(antecedent.size() + consequent.size());
  rule.antecedent = static_cast<std::uint32_t>(counts.antecedent);
  rule.consequent = static_cast<std::uint32_t>(counts.consequent);
  rule.both = static_cast<std::uint32_t>(counts.both);
  items_.insert(items_.end(), antecedent.begin(), antecedent.end());
  items_.insert(items_.end(), consequent.begin(), consequent.end());
  rules_.push_back(rule);
}

void PassedRules::Keep(const std::vector<bool>& kept) {
  // The items of dropped rules stay where they are, since rules know theirs by place. Whoever wants the room
  // adds what is left to an empty object.
  std::size_t next = 0;
  for (std::size_t i = 0; i < rules_.size(); ++i) {
    if (kept[i]) rules_[next++] = rules_[i];
  }
  rules_.resize(next);
}

void PassedRules::KeepStrongest(Measure measure, std::size_t most) {
  struct Ranked {
    double strength;
    std::size_t place;
  };
  std::vector<Ranked> ranked;
  ranked.reserve(rules_.size());
  const double sign = IsSmallerStronger(measure) ? -1 : 1;
  for (std::size_t i = 0; i < rules_.size(); ++i) {
    const std::optional<double> value = ValueOf(measure, Counts(rules_[i]));
    // A rule for which the measure has no value is the weakest of all.
    ranked.push_back({value ? sign * *value : -HUGE_VAL, i});
  }
  const auto stronger = [this](const Ranked& a, const Ranked& b) {
    const PassedRule& rule_a = rules_[a.place];
    const PassedRule& rule_b = rules_[b.place];
    if (a.strength != b.strength) return a.strength > b.strength;
    if (rule_a.both != rule_b.both) return rule_a.both > rule_b.both;
    if (rule_a.size != rule_b.size) return rule_a.size < rule_b.size;
    // The place comes last, so that the order is total and each run of the same data stores the same rules.
    return a.place < b.place;
  };
  const auto end = ranked.begin() + static_cast<std::ptrdiff_t>(std::min(most, ranked.size()));
  std::partial_sort(ranked.begin(), end, ranked.end(), stronger);
  std::vector<PassedRule> strongest;
  for (auto i = ranked.begin(); i != end; ++i) strongest.push_back(rules_[i->place]);
  rules_ = std::move(strongest);
}

}  // namespace selvane
