// selection/: which of all rules of a run are kept. Knows itemsets and their counts, no rules database.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "apriori/itemset_trie.h"
#include "base/fraction.h"
#include "base/progress.h"
#include "measures/count_measures.h"
#include "measures/significance.h"
#include "selection/run_items.h"

namespace selvane {

enum class KeptRules { kFirst, kStrongest };

// The steps that a rule must pass, in this order. One that is not set is not taken.
struct SelectionOptions {
  float min_confidence = kDefaultMinConfidence;
  // The items that a side may be made of, ascending; empty for all.
  std::vector<NodeNumber> antecedent_items{};
  std::vector<NodeNumber> consequent_items{};
  std::optional<double> min_lift{};
  // The confidence must exceed that of every rule to the same consequent from a part of the antecedent, the
  // empty part too, by this much. R. Bayardo, R. Agrawal and D. Gunopulos, Constraint-based rule mining in
  // large, dense databases, 1999.
  std::optional<double> improvement{};
  // Fisher's exact test, corrected for the rules that have passed all steps before.
  std::optional<double> significance{};
  Correction correction = Correction::kHolm;
  // A rule goes when one of its items has a term below it that stands, with the other items, in at least this
  // share of the rule's rows: the term is meant, not what is above it.
  std::optional<double> specific{};
  // A rule goes when its support and its confidence are both below so many times what a more general rule,
  // among those that are left, leads to expect. R. Srikant and R. Agrawal, Mining generalized association
  // rules, 1995.
  std::optional<double> interesting{};
  // Of antecedents with the same rows and one consequent only the shortest, of equally short ones the one of
  // more special items.
  bool shortest = false;
  KeptRules keep = KeptRules::kFirst;
  Measure by = Measure::kLift;  // which rules are the strongest
  long most_rules = 0;          // what the table is to hold

  // True when something is asked that plain rule generation does not do.
  bool IsAsked() const;
};

struct SelectedRule {
  std::vector<NodeNumber> antecedent;
  std::vector<NodeNumber> consequent;
  RuleCounts counts;
};

// How many rules were left after a step that was taken.
struct StepReport {
  std::string_view step;
  std::uint64_t left = 0;
};

struct Selection {
  std::vector<SelectedRule> rules;  // in the order in which they are to be stored
  std::vector<StepReport> steps;    // the first tells how many rules there were at all
  std::uint64_t tested = 0;         // what the significance was corrected for
};

// Makes the rules of all frequent itemsets and keeps those that pass. Rules are counted while they are made;
// only those that pass the tests of single rules are ever held. `row_count` is that of the term table.
// Throws InputError when more rules are left than the later steps can hold, and Interrupted.
Selection SelectRules(const ItemsetTrie& itemsets, const RunItems& items, std::uint32_t row_count,
                      const SelectionOptions& options, Progress& progress);

}  // namespace selvane
