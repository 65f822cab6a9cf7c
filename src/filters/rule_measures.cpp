#include "filters/rule_measures.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "base/error.h"
#include "base/text.h"
#include "data/expression_filter.h"

namespace selvane {

namespace {

// Six decimals tell counts apart up to half of what they could: the rest is for their rounding.
constexpr std::uint64_t kMostExactRows = 500'000;
// Stands for the rows where only ratios are known: six decimals are whole numbers of it.
constexpr std::uint64_t kRatioRows = 1'000'000;

// A value of these depends on how many rows there are, not on their shares alone.
bool NeedsCounts(Measure measure) {
  switch (measure) {
    case Measure::kCount:
    case Measure::kOddsRatioLow:
    case Measure::kOddsRatioHigh:
    case Measure::kChiSquared:
    case Measure::kFisher:
    case Measure::kStandardisedLift:
      return true;
    default:
      return false;
  }
}

std::uint64_t CountOf(float ratio, std::uint64_t rows) {
  const double count = std::round(static_cast<double>(ratio) * static_cast<double>(rows));
  return count > 0 ? static_cast<std::uint64_t>(count) : 0;
}

RuleCounts CountsFrom(const Rule& rule, std::uint64_t rows) {
  return {rows, CountOf(rule.pa, rows), CountOf(rule.pc, rows), CountOf(rule.support, rows)};
}

// What the ratio of a count is when it is stored and read again.
bool GivesRatio(std::uint64_t count, std::uint64_t rows, float ratio) {
  return std::abs(static_cast<double>(count) / static_cast<double>(rows) - static_cast<double>(ratio)) <=
         6e-7;
}

bool AreThese(const RuleCounts& counts, const Rule& rule) {
  return counts.IsPossible() && counts.both > 0 && GivesRatio(counts.both, counts.rows, rule.support) &&
         GivesRatio(counts.antecedent, counts.rows, rule.pa) &&
         GivesRatio(counts.consequent, counts.rows, rule.pc);
}

Variant ValueOrNull(std::optional<double> value) {
  return value ? Variant(*value) : Variant();
}

}  // namespace

std::optional<RuleCounts> RuleMeasures::CountsOf(RuleNumber number) const {
  if (rows_ == 0 || rows_ > kMostExactRows) return std::nullopt;
  const Rule& rule = rules_[number];
  const RuleCounts counts = CountsFrom(rule, rows_);
  // Where no counts of so many rows would be stored as these figures, the number of rows is not the one of
  // these rules. Then only their ratios tell anything.
  return AreThese(counts, rule) ? std::optional(counts) : std::nullopt;
}

std::optional<double> RuleMeasures::ValueOf(RuleNumber number, Measure measure) const {
  if (const std::optional<RuleCounts> counts = CountsOf(number)) return selvane::ValueOf(measure, *counts);
  if (NeedsCounts(measure)) return std::nullopt;
  return selvane::ValueOf(measure, CountsFrom(rules_[number], kRatioRows));
}

void RuleMeasures::Order(Measure measure, std::vector<RuleNumber>& numbers) const {
  const double sign = IsSmallerStronger(measure) ? -1 : 1;
  std::vector<std::pair<double, RuleNumber>> ranked;
  ranked.reserve(numbers.size());
  for (const RuleNumber number : numbers) {
    const std::optional<double> value = ValueOf(number, measure);
    // A rule for which the measure has no value comes last.
    ranked.emplace_back(value ? sign * *value : -HUGE_VAL, number);
  }
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](const auto& a, const auto& b) { return a.first > b.first; });
  std::transform(ranked.begin(), ranked.end(), numbers.begin(), [](const auto& rank) { return rank.second; });
}

std::vector<RuleNumber> RuleMeasures::Where(std::string_view expression, NodeNames& names) const {
  std::vector<std::string> columns = {"number", "size", "antecedent", "consequent"};
  for (const MeasureInfo& info : AllMeasures()) columns.emplace_back(info.name);
  ExpressionFilter filter(columns);
  std::vector<Variant> values;
  for (RuleNumber number = 1; number <= rules_.size(); ++number) {
    const Rule& rule = rules_[number];
    values = {std::int64_t{number},
              static_cast<std::int64_t>(rule.antecedent.size() + rule.consequent.size()),
              names.Joined(rule.antecedent), names.Joined(rule.consequent)};
    for (const MeasureInfo& info : AllMeasures())
      values.push_back(ValueOrNull(ValueOf(number, info.measure)));
    filter.AddRow(values);
  }
  std::vector<RuleNumber> numbers;
  for (const std::size_t place : filter.RowsWhere(expression)) {
    numbers.push_back(static_cast<RuleNumber>(place) + 1);
  }
  return numbers;
}

std::uint64_t RowsOf(std::string_view rows) {
  return static_cast<std::uint64_t>(std::max(0, Int32Of(rows).value_or(0)));
}

std::vector<Measure> MeasuresNamed(std::string_view list) {
  std::vector<Measure> measures;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(','), list.size());
    const std::string_view name = Trimmed(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
    if (LowerCase(name) == "all") {
      for (const MeasureInfo& info : AllMeasures()) measures.push_back(info.measure);
    } else if (const std::optional<Measure> measure = MeasureNamed(name)) {
      measures.push_back(*measure);
    } else {
      std::string known;
      for (const MeasureInfo& info : AllMeasures()) known += ", " + std::string(info.name);
      throw InputError(fmt::format("there is no measure \"{}\"; there are all{}", name, known));
    }
  }
  return measures;
}

}  // namespace selvane
