// How the command line prints rules.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "cli/cli.h"
#include "rules/rule_list.h"
#include "taxonomy/node_names.h"

namespace selvane {

// A rule to be printed.
struct ListedRule {
  RuleNumber number = 0;
  int depth = 0;  // steps that led to it, shown by the text format only
};

std::vector<ListedRule> ListedRules(std::span<const RuleNumber> numbers);

enum class RuleFormat { kText, kCsv, kJson };

struct RuleLayout {
  RuleFormat format = RuleFormat::kText;
  bool guards_formulas = true;  // in csv, names that a spreadsheet would take for formulas
};

void AddRuleLayout(CLI::App& command, RuleLayout& layout);

// The listed rules as text (one a line with number, support and confidence), csv or json.
std::string PrintRules(const RuleList& rules, std::span<const ListedRule> listed, const RuleLayout& layout,
                       NodeNames& names);

}  // namespace selvane
