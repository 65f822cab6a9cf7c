// How the command line prints rules.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "cli/cli.h"
#include "filters/rule_measures.h"
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
  bool guards_formulas = true;      // in csv, names that a spreadsheet would take for formulas
  std::vector<Measure> measures{};  // behind the columns that there are anyway
};

// The names of all measures, for a help.
std::string MeasureList();

// An option for an expression over the measures.
CLI::Option* AddWhere(CLI::App& command, std::string& where);

void AddRuleLayout(CLI::App& command, RuleLayout& layout);

// The listed rules as text (one a line with number, support and confidence), csv or json, with the measures
// of the layout behind; `rows` is what the information file says of the term table, for the measures.
std::string PrintRules(const RuleList& rules, std::span<const ListedRule> listed, const RuleLayout& layout,
                       NodeNames& names, std::uint64_t rows = 0);

}  // namespace selvane
