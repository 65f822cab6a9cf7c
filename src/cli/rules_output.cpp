#include "cli/rules_output.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/text.h"

namespace selvane {

namespace {

std::string Numbers(const std::vector<NodeNumber>& side) {
  return fmt::format("{}", fmt::join(side, " "));
}

std::string AsText(const std::vector<NumberedRule>& rules, NodeNames& names) {
  std::string text;
  for (const auto& [index, rule] : rules) {
    fmt::format_to(std::back_inserter(text), "{:>5}  {:.6f}  {:.6f}  {} => {}\n", index, rule.support,
                   rule.confidence, names.Joined(rule.antecedent), names.Joined(rule.consequent));
  }
  return text;
}

std::string AsCsv(const std::vector<NumberedRule>& rules, NodeNames& names) {
  std::string text =
      "INDEX,ANTECEDENT,CONSEQUENT,ANTECEDENT_NAMES,CONSEQUENT_NAMES,SUPPORT,CONFIDENCE,PA,PC,ASPEC,CSPEC\n";
  for (const auto& [index, rule] : rules) {
    fmt::format_to(std::back_inserter(text), "{},{},{},{},{},{},{},{},{},{},{}\n", index,
                   Numbers(rule.antecedent), Numbers(rule.consequent),
                   DoubleQuoted(names.Joined(rule.antecedent)), DoubleQuoted(names.Joined(rule.consequent)),
                   SingleText(rule.support), SingleText(rule.confidence), SingleText(rule.pa),
                   SingleText(rule.pc), rule.aspec, rule.cspec);
  }
  return text;
}

// The number that is written with the digits of the 32-bit float only.
double Figure(float value) {
  return NumberOf(SingleText(value)).value_or(0);
}

std::string AsJson(const std::vector<NumberedRule>& rules, NodeNames& names) {
  auto all = nlohmann::ordered_json::array();
  const auto named = [&names](const std::vector<NodeNumber>& side) {
    std::vector<std::string> texts;
    for (const NodeNumber node : side) texts.push_back(names.Joined(std::span(&node, 1)));
    return texts;
  };
  for (const auto& [index, rule] : rules) {
    all.push_back({{"index", index},
                   {"antecedent", rule.antecedent},
                   {"consequent", rule.consequent},
                   {"antecedent_names", named(rule.antecedent)},
                   {"consequent_names", named(rule.consequent)},
                   {"support", Figure(rule.support)},
                   {"confidence", Figure(rule.confidence)},
                   {"pa", Figure(rule.pa)},
                   {"pc", Figure(rule.pc)},
                   {"aspec", rule.aspec},
                   {"cspec", rule.cspec}});
  }
  return all.dump(1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

// What a rule is sorted by; empty for its number.
std::function<float(const Rule&)> SortFigure(const std::string& key) {
  if (key == "support") return [](const Rule& rule) { return rule.support; };
  if (key == "confidence") return [](const Rule& rule) { return rule.confidence; };
  if (key == "pa") return [](const Rule& rule) { return rule.pa; };
  if (key == "pc") return [](const Rule& rule) { return rule.pc; };
  return {};
}

}  // namespace

const std::vector<std::string>& RuleFormats() {
  static const std::vector<std::string> kFormats = {"text", "csv", "json"};
  return kFormats;
}

const std::vector<std::string>& RuleSortKeys() {
  static const std::vector<std::string> kKeys = {"index", "support", "confidence", "pa", "pc"};
  return kKeys;
}

void SortRules(std::vector<NumberedRule>& rules, const std::string& key) {
  const auto figure = SortFigure(key);
  if (!figure) return;
  std::stable_sort(rules.begin(), rules.end(), [&figure](const NumberedRule& a, const NumberedRule& b) {
    return figure(a.rule) > figure(b.rule);
  });
}

std::string PrintRules(const std::vector<NumberedRule>& rules, const std::string& format, NodeNames& names) {
  if (format == "csv") return AsCsv(rules, names);
  if (format == "json") return AsJson(rules, names);
  return AsText(rules, names);
}

}  // namespace selvane
