// From frequent itemsets to association rules.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "apriori/itemset_trie.h"
#include "apriori/support_counts.h"
#include "base/progress.h"
#include "rules/rule_line.h"
#include "rules/rule_tally.h"
#include "rules/rules_store.h"
#include "taxonomy/node_names.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

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
    std::uint32_t itemset_count = 0;  // records in the file
    // Bytes for a file that is held in memory whole; and, for a larger one, for the counts that one scan
    // looks up. Less costs time.
    std::size_t file_budget = std::size_t{512} << 20;
    std::size_t scan_budget = std::size_t{64} << 20;
    long most_rules = kMostRules;  // what the target table holds; the first ones are stored
  };

  // `row_count` is that of the term table.
  RuleGenerator(float minimum_confidence, const TaxonomyStore& taxonomy, std::uint32_t row_count,
                Options options);

  // Counts the rules without storing any, moving the bar from 0 to 100. Throws FileError and Interrupted.
  RuleTally Tally(Progress& progress);
  // Stores the rules in the target table of `rules`, advancing the bar by one for each record, and sends each
  // line to `line` unless that is empty. Returns how many were stored. Throws also DatabaseError.
  long Generate(RulesStore& rules, const RuleLine& line, Progress& progress);

 private:
  long Generate(RuleBatch& batch, const RuleLine& line, Progress& progress);
  void ForEach(Progress& progress, const VisitItemset& visit);
  const ItemsetTrie* Trie(Progress& progress);

  float minimum_confidence_;
  std::uint32_t row_count_;
  Options options_;
  bool trie_tried_ = false;
  std::optional<ItemsetTrie> trie_;
  NodeNames names_;
};

}  // namespace selvane
