// From frequent itemsets to association rules.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string_view>
#include <unordered_map>

#include "base/progress.h"
#include "mining/rule_tally.h"
#include "mining/support_counts.h"
#include "rules/rules_store.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// Receives the display line of each stored rule: both sides rendered, joined by " => ".
using RuleLine = std::function<void(std::string_view line)>;

// Makes a rule of every way to divide a frequent itemset into two sides whose confidence reaches the minimum,
// in the order of the file and, within an itemset, consequents by size and then by position. Both sides keep
// the order of the itemset.
//
// A consequent is not extended once its rule fails: the antecedent only gets smaller, its count only greater,
// so no extension can reach the minimum (ap-genrules of R. Agrawal and R. Srikant, 1994).
class RuleGenerator {
 public:
  struct Options {
    std::filesystem::path itemset_file;
    std::uint32_t itemset_count = 0;              // records in the file
    std::size_t count_budget = 128 * 1024 * 1024;  // bytes for counts at hand; less costs time
    long most_rules = kMostRules;                 // what the target table holds; the first ones are stored
  };

  // `row_count` is that of the term table.
  RuleGenerator(float minimum_confidence, const TaxonomyStore& taxonomy, std::uint32_t row_count, Options options);

  // Counts the rules without storing any. Throws FileError and Interrupted.
  RuleTally Tally(Progress& progress) const;
  // Stores the rules in the target table of `rules`, advancing the bar by one for each record, and sends each
  // line to `line` unless that is empty. Returns how many were stored. Throws also DatabaseError.
  long Generate(RulesStore& rules, const RuleLine& line, Progress& progress);

 private:
  const std::string& NameOf(NodeNumber node);
  std::string LineOf(const Rule& rule);

  float minimum_confidence_;
  const TaxonomyStore& taxonomy_;
  std::uint32_t row_count_;
  Options options_;
  std::unordered_map<NodeNumber, std::string> names_;
};

}  // namespace selvane
