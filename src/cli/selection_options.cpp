#include "cli/selection_options.h"

#include <algorithm>

#include "base/text.h"

namespace selvane {

namespace {

// What --readable stands for where an option does not say otherwise.
constexpr double kReadableImprovement = 0.01;
constexpr double kReadableSignificance = 0.05;
constexpr double kReadableSpecific = 0.9;
constexpr double kReadableInteresting = 1.1;

// An option whose value is a number within bounds, with a point or a comma; 0 switches the step off.
CLI::Option* AddNumber(CLI::App& command, const std::string& name, std::optional<double>& value, double most,
                       const std::string& help) {
  const auto check = [most](const std::string& text) -> std::string {
    const std::optional<double> number = NumberOf(text);
    if (number && *number >= 0 && *number <= most) return {};
    return text + " is not a number of 0 to " + SingleText(static_cast<float>(most));
  };
  return command
      .add_option_function<std::string>(
          name, [&value](const std::string& text) { value = NumberOf(text); }, help)
      ->check(check);
}

CLI::Option* AddNames(CLI::App& command, const std::string& name, std::vector<std::string>& names,
                      const std::string& help) {
  return command.add_option(name, names, help)
      ->expected(1, 10000)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false)
      ->type_name("TERM|CODE");
}

void AddItemOptions(CLI::App& command, ChoiceOptions& options) {
  command.add_flag(
      "--readable", options.readable,
      "Few rules worth reading: --items terms --witnesses distinct --improvement 0.01 --significant "
      "0.05 --specific 0.9 --interesting 1.1 --shortest --keep strongest --by lift");
  AddChoice<std::optional<ItemKind>>(
      command, "--items", options.items, {{"positions", ItemKind::kPositions}, {"terms", ItemKind::kTerms}},
      "What is counted: each position of a term (the default), or each term once");
  AddChoice<std::optional<bool>>(
      command, "--witnesses", options.distinct, {{"any", false}, {"distinct", true}},
      "Rows that count for a rule: any that hold all its items (the default), or those in which different "
      "terms stand for them");
  command.add_option("--max-size", options.max_size, "Items of both sides together, at most")
      ->type_name("N")
      ->check(CLI::Range(2, 30));
  AddNames(command, "--antecedent", options.antecedent,
           "Left sides of this only, and what is below it; may be given several times");
  AddNames(command, "--consequent", options.consequent, "Right sides of this only, in the same way");
  AddNames(command, "--leave-out", options.left_out, "No rules with this, nor with what is below it");
}

void AddStepOptions(CLI::App& command, ChoiceOptions& options) {
  AddNumber(command, "--min-lift", options.min_lift, 1e9, "Rules of at least this lift");
  AddNumber(command, "--improvement", options.improvement, 1,
            "Rules whose confidence exceeds that of every rule from a part of the left side by this");
  AddNumber(command, "--significant", options.significance, 1,
            "Rules that pass Fisher's exact test at this level, corrected for how many are tested");
  AddChoice<Correction>(
      command, "--correction", options.correction,
      {{"holm", Correction::kHolm},
       {"bh", Correction::kBenjaminiHochberg},
       {"bonferroni", Correction::kBonferroni},
       {"none", Correction::kNone}},
      "How it is corrected: Holm (the default), Benjamini and Hochberg, Bonferroni, or not");
  AddNumber(command, "--specific", options.specific, 1,
            "No rules with an item of which one term below accounts for this share of the rule's rows");
  AddNumber(command, "--interesting", options.interesting, 1e9,
            "Rules with so many times the support or confidence that more general rules lead to expect");
  // Not with the variable: an optional one would be set to false at once, and never be left to --readable.
  command.add_flag_function(
      "--shortest,!--no-shortest", [&options](std::int64_t count) { options.shortest = count > 0; },
      "One left side, the shortest, of those with the same rows and right side");
  AddChoice<std::optional<KeptRules>>(
      command, "--keep", options.keep, {{"first", KeptRules::kFirst}, {"strongest", KeptRules::kStrongest}},
      "Which rules the table takes, and their order: the first that are found, or "
      "the strongest");
  std::vector<std::pair<std::string, std::optional<Measure>>> measures;
  for (const MeasureInfo& info : AllMeasures()) measures.emplace_back(info.name, info.measure);
  AddChoice<std::optional<Measure>>(command, "--by", options.by, measures,
                                    "What makes a rule strong: lift, or");
}

// A step that was set to 0 is not taken, so that a single one of --readable can be switched off.
std::optional<double> Step(const std::optional<double>& given, bool readable, double otherwise) {
  if (given) return *given > 0 ? given : std::nullopt;
  return readable ? std::optional(otherwise) : std::nullopt;
}

}  // namespace

void AddChoiceOptions(CLI::App& command, ChoiceOptions& options, CLI::Option* closed) {
  // All options that are added here belong to the other search. They are told by what is new, so that none
  // can be forgotten in a list of names.
  std::vector<CLI::Option*> before = command.get_options();
  AddItemOptions(command, options);
  AddStepOptions(command, options);
  for (CLI::Option* option : command.get_options()) {
    if (std::find(before.begin(), before.end(), option) == before.end()) option->excludes(closed);
  }
}

RunChoices ChoicesOf(const ChoiceOptions& options) {
  const bool readable = options.readable;
  RunChoices choices;
  choices.items = options.items.value_or(readable ? ItemKind::kTerms : ItemKind::kPositions);
  choices.distinct_witnesses = options.distinct.value_or(readable);
  choices.max_size = options.max_size;
  choices.antecedent = options.antecedent;
  choices.consequent = options.consequent;
  choices.left_out = options.left_out;
  SelectionOptions& steps = choices.selection;
  steps.min_lift = Step(options.min_lift, false, 0);
  // 0 switches nothing off here: it keeps rules than which no rule from a part of their left side is surer.
  steps.improvement = options.improvement ? options.improvement : Step({}, readable, kReadableImprovement);
  steps.significance = Step(options.significance, readable, kReadableSignificance);
  steps.correction = options.correction;
  steps.specific = Step(options.specific, readable, kReadableSpecific);
  steps.interesting = Step(options.interesting, readable, kReadableInteresting);
  steps.shortest = options.shortest.value_or(readable);
  // Whoever says by what means the strongest.
  steps.keep = options.keep.value_or(readable || options.by ? KeptRules::kStrongest : KeptRules::kFirst);
  steps.by = options.by.value_or(Measure::kLift);
  return choices;
}

}  // namespace selvane
