// The measures of the rules of a table.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "filters/kept_rules.h"
#include "measures/count_measures.h"
#include "taxonomy/node_names.h"

namespace selvane {

// A rules table keeps ratios of six decimals. With the number of rows they give the counts back, as long as
// there are so few rows that no two counts have one ratio; then every measure is exact. Otherwise a measure
// that is a matter of ratios is computed from these, and one that is not has no value.
class RuleMeasures {
 public:
  // `rows` is what the information file says, 0 where it is not known. The rules must outlive this.
  RuleMeasures(const RuleList& rules, std::uint64_t rows) : rules_(rules), rows_(rows) {}

  // The counts of a rule; nothing where they are not known for sure.
  std::optional<RuleCounts> CountsOf(RuleNumber number) const;
  std::optional<double> ValueOf(RuleNumber number, Measure measure) const;

  // Sorts by the measure, the strongest first; rules without a value come last, equal ones stay as they are.
  void Order(Measure measure, std::vector<RuleNumber>& numbers) const;
  // The rules for which an expression over the measures, `number`, `size`, `antecedent` and `consequent` (the
  // names of the sides) is true, in their order. Throws InputError.
  std::vector<RuleNumber> Where(std::string_view expression, NodeNames& names) const;

 private:
  const RuleList& rules_;
  std::uint64_t rows_;
};

// The number of rows as an information file has it; 0 for none.
std::uint64_t RowsOf(std::string_view rows);

// The measures of a list of names, separated by commas; "all" are all. Throws InputError for another name.
std::vector<Measure> MeasuresNamed(std::string_view list);

}  // namespace selvane
