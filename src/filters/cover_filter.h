// Keeps a small subset of rules that says of which rows all of them hold.
#pragma once

#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "filters/kept_rules.h"
#include "itemsets/item_registry.h"

namespace selvane {

// Among the rules with one consequent, a cover is a subset whose antecedents match the same rows of the term
// table as the antecedents of all: found greedily, always the rule that matches most rows not matched yet.
// Its rules can be clustered by how many rows they differ in.
// H. Toivonen, M. Klemettinen, P. Ronkainen, K. Hatonen and H. Mannila, Pruning and grouping of discovered
// association rules, 1995.
class CoverFilter {
 public:
  struct Cover {
    std::vector<NodeNumber> consequent;
    std::vector<RuleNumber> rules;    // in the order in which they were chosen
    std::vector<std::uint32_t> adds;  // the rows that each matches and no earlier one does
    RuleNumber of = 0;                // rules with this consequent
    std::uint32_t rows = 0;           // that they match
  };

  // Both must outlive the filter. A row matches an antecedent when the registry has it for all its items.
  CoverFilter(const RuleList& rules, const ItemRegistry& items);

  // The covers, in the order in which their consequents come first; consequents are compared as sets. Rules
  // that match no row are in none. Moves the bar from 0 to the number of rules.
  std::vector<Cover> Run(Progress& progress);

  // Divides a cover's rules into at most this many clusters: the two that are nearest are joined until so
  // many are left, of equally near ones the first. The distance of two rules is the number of rows that one
  // of them matches, that of two clusters the mean over their rules. Clusters and the rules in them keep the
  // order of the cover.
  std::vector<std::vector<RuleNumber>> Cluster(const Cover& cover, std::size_t clusters,
                                               Progress& progress) const;

 private:
  // The rows that a rule's antecedent matches, in `rows`; false when an item stands in no row.
  bool MatchedRows(const Rule& rule, std::vector<RowWord>& rows) const;
  Cover CoverOf(std::span<const RuleNumber> group) const;

  const RuleList& rules_;
  const ItemRegistry& items_;
  std::unordered_map<NodeNumber, std::size_t> places_;  // of the sets of rows of items
  RowBitsOperations operations_ = FastRowBitsOperations();
};

// What a user should hear before these covers are clustered; empty where that takes less than half a
// gigabyte.
std::string ClusteringWarning(std::span<const CoverFilter::Cover> covers);

// The rules of all covers, in their order.
std::vector<RuleNumber> RulesOf(std::span<const CoverFilter::Cover> covers);

}  // namespace selvane
