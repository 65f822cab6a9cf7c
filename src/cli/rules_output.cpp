#include "cli/rules_output.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>

#include "base/error.h"
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

// The measures that were asked for, of rules of one list.
class AskedMeasures {
 public:
  // `shown` are the names that the format has columns for anyway.
  AskedMeasures(const RuleList& rules, std::uint64_t rows, std::span<const Measure> asked,
                std::span<const std::string_view> shown)
      : measures_(rules, rows) {
    for (const Measure measure : asked) {
      const bool is_shown = std::find(shown.begin(), shown.end(), InfoOf(measure).name) != shown.end();
      if (!is_shown) asked_.push_back(measure);
    }
  }

  template <typename Visit>
  void ForEach(RuleNumber number, const Visit& visit) const {
    for (const Measure measure : asked_) visit(InfoOf(measure).name, measures_.ValueOf(number, measure));
  }
  std::span<const Measure> asked() const { return asked_; }

 private:
  RuleMeasures measures_;
  std::vector<Measure> asked_;
};

// Each format has columns for these already; asked for once more, they would stand there twice.
constexpr std::array<std::string_view, 2> kInText = {"support", "confidence"};
constexpr std::array<std::string_view, 5> kInTables = {"support", "confidence", "lift", "leverage",
                                                       "conviction"};

std::string AsText(const RuleList& rules, std::span<const ListedRule> listed, const AskedMeasures& measures,
                   NodeNames& names) {
  std::string text;
  for (const auto& [number, depth] : listed) {
    const Rule& rule = rules[number];
    fmt::format_to(std::back_inserter(text), "{:{}}{:>5}  {:.6f}  {:.6f}  {} => {}", "", 2 * depth, number,
                   rule.support, rule.confidence, names.Joined(rule.antecedent),
                   names.Joined(rule.consequent));
    const char* separator = "  ";
    measures.ForEach(number, [&](std::string_view name, std::optional<double> value) {
      text += separator;
      text += name;
      text += value ? fmt::format(" {:.6g}", *value) : " -";
      separator = ", ";
    });
    text += '\n';
  }
  return text;
}

std::string MeasureText(std::optional<double> measure) {
  return measure ? fmt::format("{}", *measure) : std::string();
}

std::string AsCsv(const RuleList& rules, std::span<const ListedRule> listed, bool guards_formulas,
                  const AskedMeasures& asked, NodeNames& names) {
  const auto cell = [&](const std::vector<NodeNumber>& side) {
    const std::string text = names.Joined(side);
    return DoubleQuoted(guards_formulas ? Guarded(text) : text);
  };
  std::string text =
      "INDEX,ANTECEDENT,CONSEQUENT,ANTECEDENT_NAMES,CONSEQUENT_NAMES,SUPPORT,CONFIDENCE,PA,PC,ASPEC,CSPEC,"
      "LIFT,LEVERAGE,CONVICTION";
  for (const Measure measure : asked.asked()) {
    text += ',';
    // Made capitals by hand: what the library makes of a letter depends on the locale.
    for (const char c : InfoOf(measure).name) text += 'a' <= c && c <= 'z' ? static_cast<char>(c - 32) : c;
  }
  text += '\n';
  for (const auto& [number, depth] : listed) {
    const Rule& rule = rules[number];
    const Measures measures = MeasuresOf(rule);
    fmt::format_to(std::back_inserter(text), "{},{},{},{},{},{},{},{},{},{},{},{},{},{}", number,
                   Numbers(rule.antecedent), Numbers(rule.consequent), cell(rule.antecedent),
                   cell(rule.consequent), SingleText(rule.support), SingleText(rule.confidence),
                   SingleText(rule.pa), SingleText(rule.pc), rule.aspec, rule.cspec,
                   MeasureText(measures.lift), MeasureText(measures.leverage),
                   MeasureText(measures.conviction));
    asked.ForEach(number, [&text](std::string_view, std::optional<double> value) {
      (text += ',') += MeasureText(value);
    });
    text += '\n';
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

std::string AsJson(const RuleList& rules, std::span<const ListedRule> listed, const AskedMeasures& asked,
                   NodeNames& names) {
  if (listed.empty()) return "[]\n";
  std::string text = "[";
  for (const ListedRule& rule : listed) {
    std::string members = RuleAsJson(rule.number, rules[rule.number], names);
    asked.ForEach(rule.number, [&members](std::string_view name, std::optional<double> value) {
      fmt::format_to(std::back_inserter(members), ",\n  \"{}\": {}", name, JsonText(value));
    });
    fmt::format_to(std::back_inserter(text), "{}\n {{{}\n }}", text.size() == 1 ? "" : ",", members);
  }
  return text + "\n]\n";
}

}  // namespace

namespace {

std::vector<Measure> MeasuresAsked(const std::string& list) {
  try {
    return MeasuresNamed(list);
  } catch (const InputError& error) {
    throw CLI::ValidationError("--measures", error.what());
  }
}

}  // namespace

std::string MeasureList() {
  std::string list;
  for (const MeasureInfo& info : AllMeasures()) {
    list += (list.empty() ? "" : ", ") + std::string(info.name);
  }
  return list;
}

std::vector<ListedRule> ListedRules(std::span<const RuleNumber> numbers) {
  std::vector<ListedRule> listed;
  listed.reserve(numbers.size());
  for (const RuleNumber number : numbers) listed.push_back({number});
  return listed;
}

CLI::Option* AddWhere(CLI::App& command, std::string& where) {
  return command
      .add_option("--where", where,
                  "Rules for which this is true: compares measures, number, size, antecedent and consequent "
                  "with and, or, not, like")
      ->type_name("EXPRESSION");
}

void AddRuleLayout(CLI::App& command, RuleLayout& layout) {
  AddChoice<RuleFormat>(command, "--format", layout.format,
                        {{"text", RuleFormat::kText}, {"csv", RuleFormat::kCsv}, {"json", RuleFormat::kJson}},
                        "text, csv or json");
  command.add_flag_callback(
      "--no-guard", [&layout] { layout.guards_formulas = false; },
      "In csv, put no apostrophe before names that a spreadsheet would take for formulas");
  command
      .add_option_function<std::string>(
          "--measures", [&layout](const std::string& list) { layout.measures = MeasuresAsked(list); },
          "Measures to print behind each rule: all, or some of\n" + MeasureList())
      ->type_name("all|M,...");
}

std::string PrintRules(const RuleList& rules, std::span<const ListedRule> listed, const RuleLayout& layout,
                       NodeNames& names, std::uint64_t rows) {
  if (layout.format == RuleFormat::kText) {
    return AsText(rules, listed, AskedMeasures(rules, rows, layout.measures, kInText), names);
  }
  const AskedMeasures asked(rules, rows, layout.measures, kInTables);
  return layout.format == RuleFormat::kCsv ? AsCsv(rules, listed, layout.guards_formulas, asked, names)
                                           : AsJson(rules, listed, asked, names);
}

}  // namespace selvane
