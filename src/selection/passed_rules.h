// The rules that passed the tests of single rules, and the steps that compare them with each other.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "apriori/itemset_trie.h"
#include "measures/count_measures.h"
#include "selection/run_items.h"

namespace selvane {

// A rule in few bytes: its items stand in the list of all, those of the antecedent first.
struct PassedRule {
  std::size_t begin = 0;
  std::uint16_t antecedent_size = 0;
  std::uint16_t size = 0;
  std::uint32_t antecedent = 0;  // counts of rows
  std::uint32_t consequent = 0;
  std::uint32_t both = 0;
};

class PassedRules {
 public:
  explicit PassedRules(std::uint32_t row_count) : row_count_(row_count) {}

  void Add(std::span<const std::uint32_t> antecedent, std::span<const std::uint32_t> consequent,
           const RuleCounts& counts);
  std::size_t size() const { return rules_.size(); }
  // Without any rule, of the same table.
  PassedRules Empty() const { return PassedRules(row_count_); }
  std::span<const PassedRule> rules() const { return rules_; }
  std::span<const std::uint32_t> Antecedent(const PassedRule& rule) const {
    return std::span(items_).subspan(rule.begin, rule.antecedent_size);
  }
  std::span<const std::uint32_t> Consequent(const PassedRule& rule) const {
    return Items(rule).subspan(rule.antecedent_size);
  }
  std::span<const std::uint32_t> Items(const PassedRule& rule) const {
    return std::span(items_).subspan(rule.begin, rule.size);
  }
  RuleCounts Counts(const PassedRule& rule) const {
    return {row_count_, rule.antecedent, rule.consequent, rule.both};
  }

  // Keeps the rules for which this is true, in their order.
  void Keep(const std::vector<bool>& kept);
  // Keeps the strongest, strongest first: by the measure, then by more rows, then shorter, then earlier. A
  // rule for which the measure has no value comes last.
  void KeepStrongest(Measure measure, std::size_t most);

 private:
  std::uint32_t row_count_;
  std::vector<PassedRule> rules_;
  std::vector<std::uint32_t> items_;
};

// Which rules have, against each more general rule that is kept, a support or a confidence of at least
// `factor` times the expected one. A more general rule has one item or more replaced by items above them; of
// it, the support is expected to fall as the shares of the replaced items do, and the confidence as those of
// the consequent. More general rules are judged first, and only what is kept of them counts.
std::vector<bool> InterestingRules(const PassedRules& rules, const RunItems& items,
                                   const ItemsetTrie& itemsets, double factor, Progress& progress);

// Of rules whose antecedents have the same rows and that have one consequent, the one of fewest items; of
// equally short ones that whose items stand deepest, then the earliest.
std::vector<bool> ShortestRules(const PassedRules& rules, const RunItems& items, Progress& progress);

}  // namespace selvane
