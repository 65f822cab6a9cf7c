// Keeps the rules that fit templates.
#pragma once

#include <span>
#include <vector>

#include "filters/kept_rules.h"
#include "filters/rule_template.h"
#include "taxonomy/node_names.h"

namespace selvane {

// A rule is kept when it fits an inclusive template, if there is any, and no restrictive one.
class TemplateFilter {
 public:
  // The codes of classes and items are asked of `names`, which must outlive the filter.
  explicit TemplateFilter(NodeNames& names) : names_(names) {}

  std::vector<RuleTemplate> inclusive;
  std::vector<RuleTemplate> restrictive;
  // Whether an item is of a class by any position of its term, as where a run counted terms.
  bool all_positions = false;

  // The kept rules in the order of their numbers. Moves the bar from 0 to their number. Throws DatabaseError
  // for an item or a class that the taxonomy does not hold, and Interrupted.
  std::vector<RuleNumber> Run(const RuleList& rules, Progress& progress);

  // Items must be on their side. Each required class takes the first item, of those that no class has taken,
  // whose position code holds the class's code anywhere. Whatever else the rule holds is allowed.
  bool Matches(const RuleTemplate& wanted, const Rule& rule);

 private:
  bool IsOfClass(NodeNumber item, const std::string& code);
  bool HasClasses(std::span<const TemplateFeature> features, std::span<const NodeNumber> items);

  NodeNames& names_;
  std::vector<bool> used_;
};

}  // namespace selvane
