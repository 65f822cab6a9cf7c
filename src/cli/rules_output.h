// How the command line prints rules.
#pragma once

#include <string>
#include <vector>

#include "rules/rule.h"
#include "taxonomy/node_names.h"

namespace selvane {

struct NumberedRule {
  long index = 0;
  Rule rule;
  int depth = 0;  // steps that led to it, shown by the text format only
};

// Names of the formats that PrintRules takes.
const std::vector<std::string>& RuleFormats();

// All rules as text (one a line with number, support and confidence), csv or json.
std::string PrintRules(const std::vector<NumberedRule>& rules, const std::string& format, NodeNames& names);

}  // namespace selvane
