// How the command line prints rules.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "rules/rule.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

struct NumberedRule {
  long index = 0;
  Rule rule;
};

// Names of items, each looked up once. An item that the taxonomy does not hold is called #17.
class ItemNames {
 public:
  explicit ItemNames(const TaxonomyStore& taxonomy) : taxonomy_(taxonomy) {}
  const std::string& Of(NodeNumber node);
  // The names of a side, joined by " AND ".
  std::string Joined(const std::vector<NodeNumber>& side);

 private:
  const TaxonomyStore& taxonomy_;
  std::map<NodeNumber, std::string> names_;
};

// Names of the formats and sort keys that PrintRules and SortRules take.
const std::vector<std::string>& RuleFormats();
const std::vector<std::string>& RuleSortKeys();

// By a figure, the greatest first, or by number; rules that are equal stay in the order of their numbers.
void SortRules(std::vector<NumberedRule>& rules, const std::string& key);

// All rules as text (one a line with number, support and confidence), csv or json.
std::string PrintRules(const std::vector<NumberedRule>& rules, const std::string& format, ItemNames& names);

}  // namespace selvane
