#include "cli/rules_output.h"

#include <fmt/format.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>

#include "base/shown_text.h"
#include "base/text.h"
#include "measures/measures.h"

namespace selvane {

namespace {

std::string Numbers(const std::vector<NodeNumber>& side) {
  return fmt::format("{}", fmt::join(side, " "));
}

// The number that is written with the digits of the 32-bit float only.
double Figure(float value) {
  return NumberOf(SingleText(value)).value_or(0);
}

struct Measures {
  std::optional<double> lift;
  std::optional<double> leverage;
  std::optional<double> conviction;
};

// With the six decimals of the stored figures.
std::optional<double> Rounded(std::optional<double> value) {
  constexpr double kPlaces = 1e6;
  if (!value) return std::nullopt;
  return std::round(*value * kPlaces) / kPlaces + 0.0;  // which makes -0 to 0
}

// Of the figures as they are printed, so that a reader who computes them again gets the same.
Measures MeasuresOf(const Rule& rule) {
  const RuleFigures figures = {.support = Figure(rule.support),
                               .confidence = Figure(rule.confidence),
                               .antecedent = Figure(rule.pa),
                               .consequent = Figure(rule.pc)};
  return {Rounded(Lift(figures)), Rounded(Leverage(figures)), Rounded(Conviction(figures))};
}

std::string AsText(const RuleList& rules, std::span<const ListedRule> listed, NodeNames& names) {
  std::string text;
  for (const auto& [number, depth] : listed) {
    const Rule& rule = rules[number];
    fmt::format_to(std::back_inserter(text), "{:{}}{:>5}  {:.6f}  {:.6f}  {} => {}\n", "", 2 * depth, number,
                   rule.support, rule.confidence, names.Joined(rule.antecedent),
                   names.Joined(rule.consequent));
  }
  return text;
}

std::string MeasureText(std::optional<double> measure) {
  return measure ? fmt::format("{}", *measure) : std::string();
}

std::string AsCsv(const RuleList& rules, std::span<const ListedRule> listed, bool guards_formulas,
                  NodeNames& names) {
  const auto cell = [&](const std::vector<NodeNumber>& side) {
    const std::string text = names.Joined(side);
    return DoubleQuoted(guards_formulas ? Guarded(text) : text);
  };
  std::string text =
      "INDEX,ANTECEDENT,CONSEQUENT,ANTECEDENT_NAMES,CONSEQUENT_NAMES,SUPPORT,CONFIDENCE,PA,PC,ASPEC,CSPEC,"
      "LIFT,LEVERAGE,CONVICTION\n";
  for (const auto& [number, depth] : listed) {
    const Rule& rule = rules[number];
    const Measures measures = MeasuresOf(rule);
    fmt::format_to(std::back_inserter(text), "{},{},{},{},{},{},{},{},{},{},{},{},{},{}\n", number,
                   Numbers(rule.antecedent), Numbers(rule.consequent), cell(rule.antecedent),
                   cell(rule.consequent), SingleText(rule.support), SingleText(rule.confidence),
                   SingleText(rule.pa), SingleText(rule.pc), rule.aspec, rule.cspec,
                   MeasureText(measures.lift), MeasureText(measures.leverage),
                   MeasureText(measures.conviction));
  }
  return text;
}

nlohmann::ordered_json MeasureJson(std::optional<double> measure) {
  return measure ? nlohmann::ordered_json(*measure) : nullptr;
}

std::string AsJson(const RuleList& rules, std::span<const ListedRule> listed, NodeNames& names) {
  auto all = nlohmann::ordered_json::array();
  const auto named = [&names](const std::vector<NodeNumber>& side) {
    std::vector<std::string> texts;
    texts.reserve(side.size());
    for (const NodeNumber node : side) texts.push_back(names.Joined(std::span(&node, 1)));
    return texts;
  };
  for (const auto& [number, depth] : listed) {
    const Rule& rule = rules[number];
    const Measures measures = MeasuresOf(rule);
    all.push_back({{"index", number},
                   {"antecedent", rule.antecedent},
                   {"consequent", rule.consequent},
                   {"antecedent_names", named(rule.antecedent)},
                   {"consequent_names", named(rule.consequent)},
                   {"support", Figure(rule.support)},
                   {"confidence", Figure(rule.confidence)},
                   {"pa", Figure(rule.pa)},
                   {"pc", Figure(rule.pc)},
                   {"aspec", rule.aspec},
                   {"cspec", rule.cspec},
                   {"lift", MeasureJson(measures.lift)},
                   {"leverage", MeasureJson(measures.leverage)},
                   {"conviction", MeasureJson(measures.conviction)}});
  }
  return all.dump(1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace

std::vector<ListedRule> ListedRules(std::span<const RuleNumber> numbers) {
  std::vector<ListedRule> listed;
  listed.reserve(numbers.size());
  for (const RuleNumber number : numbers) listed.push_back({number});
  return listed;
}

void AddRuleLayout(CLI::App& command, RuleLayout& layout) {
  AddChoice<RuleFormat>(command, "--format", layout.format,
                        {{"text", RuleFormat::kText}, {"csv", RuleFormat::kCsv}, {"json", RuleFormat::kJson}},
                        "text, csv or json");
  command.add_flag_callback(
      "--no-guard", [&layout] { layout.guards_formulas = false; },
      "In csv, put no apostrophe before names that a spreadsheet would take for formulas");
}

std::string PrintRules(const RuleList& rules, std::span<const ListedRule> listed, const RuleLayout& layout,
                       NodeNames& names) {
  switch (layout.format) {
    case RuleFormat::kCsv:
      return AsCsv(rules, listed, layout.guards_formulas, names);
    case RuleFormat::kJson:
      return AsJson(rules, listed, names);
    default:
      return AsText(rules, listed, names);
  }
}

}  // namespace selvane
