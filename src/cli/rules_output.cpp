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

// Values by the library, and lists and objects by ourselves: the library's ask for memory when they end, and
// where there is none that ends the program.
template <typename Value>
std::string JsonText(const Value& value) {
  return nlohmann::json(value).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string JsonText(std::optional<double> value) {
  return value ? JsonText(*value) : "null";
}

// A list within an object of a list, one value a line.
std::string JsonList(const std::vector<std::string>& values) {
  if (values.empty()) return "[]";
  return fmt::format("[\n   {}\n  ]", fmt::join(values, ",\n   "));
}

std::string RuleAsJson(RuleNumber number, const Rule& rule, NodeNames& names) {
  const auto list = [](const std::vector<NodeNumber>& side, const auto& text_of) {
    std::vector<std::string> texts;
    for (const NodeNumber node : side) texts.push_back(JsonText(text_of(node)));
    return JsonList(texts);
  };
  const auto itself = [](NodeNumber node) { return node; };
  const auto name = [&names](NodeNumber node) { return names.Joined(std::span(&node, 1)); };
  const Measures measures = MeasuresOf(rule);
  const std::pair<const char*, std::string> members[] = {{"index", JsonText(number)},
                                                         {"antecedent", list(rule.antecedent, itself)},
                                                         {"consequent", list(rule.consequent, itself)},
                                                         {"antecedent_names", list(rule.antecedent, name)},
                                                         {"consequent_names", list(rule.consequent, name)},
                                                         {"support", JsonText(Figure(rule.support))},
                                                         {"confidence", JsonText(Figure(rule.confidence))},
                                                         {"pa", JsonText(Figure(rule.pa))},
                                                         {"pc", JsonText(Figure(rule.pc))},
                                                         {"aspec", JsonText(rule.aspec)},
                                                         {"cspec", JsonText(rule.cspec)},
                                                         {"lift", JsonText(measures.lift)},
                                                         {"leverage", JsonText(measures.leverage)},
                                                         {"conviction", JsonText(measures.conviction)}};
  std::string text;
  for (const auto& [key, value] : members) {
    fmt::format_to(std::back_inserter(text), "{}\n  \"{}\": {}", text.empty() ? "" : ",", key, value);
  }
  return text;
}

std::string AsJson(const RuleList& rules, std::span<const ListedRule> listed, NodeNames& names) {
  if (listed.empty()) return "[]\n";
  std::string text = "[";
  for (const ListedRule& rule : listed) {
    fmt::format_to(std::back_inserter(text), "{}\n {{{}\n }}", text.size() == 1 ? "" : ",",
                   RuleAsJson(rule.number, rules[rule.number], names));
  }
  return text + "\n]\n";
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
