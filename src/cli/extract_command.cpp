// selvane-cli rules extract
#include <fmt/format.h>
#include <fmt/ostream.h>

#include <memory>
#include <ostream>

#include "base/error.h"
#include "base/text.h"
#include "cli/cli.h"
#include "cli/selection_options.h"
#include "closed/closed_result_files.h"
#include "data/transaction_source.h"
#include "mining/apriori_extraction.h"
#include "mining/closed_extraction.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

struct ExtractOptions {
  fs::path terms;
  fs::path taxonomy;
  fs::path output;
  bool overwrite = false;
  bool no_generalize = false;
  bool closed = false;
  bool unreduced = false;
  ExtractionRequest request;
  ChoiceOptions choices;
};

RulesOutput OutputOf(const ExtractOptions& options) {
  return {options.output, options.overwrite ? ExistingFile::kReplace : ExistingFile::kRefuse};
}

// Refused before mining rather than after it; and a name that the filtering would refuse is worth a word.
void CheckOutput(const ExtractOptions& options, const CliContext& context) {
  if (!options.overwrite && IsTaken(options.output)) {
    throw InputError(
        fmt::format("{}: {}, or replace it with --overwrite", options.output.string(), kTakenReason));
  }
  std::vector<fs::path> others = {options.terms, options.taxonomy, options.request.itemset_copy};
  if (options.closed) {
    // Its files appear in the current folder under fixed names, where the rules could meet them.
    others.insert(others.end(), ClosedResultFiles::kNames.begin(), ClosedResultFiles::kNames.end());
  }
  CheckRulesOutput(OutputOf(options), others);
  if (options.output.extension() != ".mdb") {
    fmt::print(context.err,
               "selvane-cli: {} is not named *.mdb, so rules list and the filtering will not take it\n",
               options.output.string());
  }
}

void ReportTooMany(const TooManyRules& rules, const CliContext& context) {
  std::string fitting;
  if (const auto confidence = rules.fitting.confidence) {
    fitting += fmt::format("--min-confidence {:g}", *confidence);
  }
  if (const auto support = rules.fitting.support) {
    // Each of the two would do alone, with the other as it was.
    fitting += fmt::format("{}--min-support {:g}", fitting.empty() ? "" : " or ", *support);
  }
  fmt::print(context.err,
             "selvane-cli: there are {} rules and a table holds {}: the first {} are stored. {}\n",
             rules.found, rules.stored, rules.stored,
             fitting.empty() ? "No higher threshold would make them fit; choose fewer terms"
                             : fitting + " would have fitted");
}

// What a run without rules tells; empty for one with rules, or for which more is told anyway.
std::string_view AdviceOf(ExtractionEnd end) {
  switch (end) {
    case ExtractionEnd::kEmptyTable:
      return "No extractable rules: the table is empty\n";
    case ExtractionEnd::kNoKnownTerm:
      return "No extractable rules: no row holds a term that the taxonomy knows; check that the table and "
             "the "
             "taxonomy belong together\n";
    case ExtractionEnd::kOnlySingleItems:
      return "No extractable rules: no two items are frequent together, so no database was made; try a lower "
             "--min-support\n";
    case ExtractionEnd::kNoRules:
      return "No extracted rules: none reaches the confidence; try a lower --min-confidence\n";
    case ExtractionEnd::kRules:
    case ExtractionEnd::kOnlyTooLongRules:
      break;
  }
  return {};
}

// How many rules each step took away; and that only the first are stored where more are left.
void ReportSteps(const AprioriReport& report, bool strongest, const CliContext& context) {
  for (std::size_t i = 0; i < report.steps.size(); ++i) {
    const StepReport& step = report.steps[i];
    fmt::print(context.err, "{:>12} rules {} --{}", step.left, i == 0 ? "reach" : "left by",
               i == 0 ? "min-confidence" : step.step);
    if (i > 0) fmt::print(context.err, ", which took {} away", report.steps[i - 1].left - step.left);
    if (step.step == "significant") fmt::print(context.err, "; corrected for {} tested", report.tested);
    fmt::print(context.err, "\n");
  }
  const auto stored = static_cast<std::uint64_t>(report.run.rules_stored);
  if (report.steps.empty() || report.steps.back().left <= stored) return;
  fmt::print(
      context.err, "selvane-cli: there are {} rules and a table holds {}: {}\n", report.steps.back().left,
      stored,
      strongest ? "the strongest are stored" : "the first are stored; --keep strongest stores the strongest");
}

void ReportEnd(const AprioriReport& report, bool strongest, const CliContext& context) {
  ReportSteps(report, strongest, context);
  const bool steps_took_all = !report.steps.empty() && report.steps.front().left > 0;
  const ExtractionReport& run = report.run;
  const bool is_left_by_steps = run.end == ExtractionEnd::kNoRules && steps_took_all;
  fmt::print(context.err, "{}",
             is_left_by_steps
                 ? "No extracted rules: the steps above took all of them; leave one out, or make it "
                   "weaker\n"
                 : AdviceOf(run.end));
  fmt::print(
      context.err,
      "{} rows, {} items, {} itemsets, {} rules; checking {:.2f} s, searching {:.2f} s ({} candidates, {} "
      "million words), rules {:.2f} s\n",
      run.rows, run.items, report.itemsets, run.rules_stored, run.check_seconds, run.search_seconds,
      report.work.candidates, report.work.words / 1000000, run.rules_seconds);
}

void ReportClosedEnd(const ClosedReport& closed, const CliContext& context) {
  const ExtractionReport& run = closed.run;
  const auto tell = [&context](std::string_view what, const std::vector<std::string>& names) {
    if (!names.empty()) fmt::print(context.err, "selvane-cli: {}: {}\n", what, Listed(names));
  };
  tell("columns without a node in the taxonomy were left out", closed.unknown_columns);
  tell("columns of a node that an earlier column has too were joined with it", closed.joined_columns);
  tell(
      "Taxonomy does not have these items of TaxonomyOrnex under the same numbers, as they were pruned or "
      "the "
      "tables differ; rules show and the filters will not name them rightly",
      closed.renumbered);
  fmt::print(context.err, "{}", AdviceOf(run.end));
  if (closed.too_long_rules > 0) {
    fmt::print(
        context.err,
        "selvane-cli: rules with more items than a table has room for: {}; they are in Rules.dat only\n",
        closed.too_long_rules);
  }
  fmt::print(context.err,
             "{} rows, {} items, {} closed itemsets, {} generators, {} rules ({} exact and {} approximate "
             "found); checking {:.2f} s, searching {:.2f} s, rules {:.2f} s\n",
             run.rows, run.items, closed.closed_itemsets, closed.generators, run.rules_stored,
             closed.exact_rules, run.rules_found - closed.exact_rules, run.check_seconds, run.search_seconds,
             run.rules_seconds);
}

// What was to be replaced is still there when nothing was found: it is not the result of this run. Said
// before the end is reported, whose line is the last one.
void ReportOldRules(const ExtractionReport& run, const ExtractOptions& options, const CliContext& context) {
  if (!run.output.empty() || !IsTaken(options.output)) return;
  fmt::print(context.err,
             "selvane-cli: {}: the rules of an earlier run are still there, as nothing replaces "
             "them\n",
             options.output.string());
}

void Extract(ExtractOptions& options, const CliContext& context) {
  CheckOutput(options, context);
  // The lock comes first, so that a second run hears of the first and not of a file that is open.
  ItemsetFileHold hold(ItemsetFileHold::DefaultFolder(),
                       {options.terms, options.taxonomy, options.output, options.request.itemset_copy});
  TransactionSource source;
  source.Open(options.terms);
  std::vector<std::string> tables;
  source.ListTables(tables);
  ExtractionRequest& request = options.request;
  request.table = ChooseTable(tables, request.table, options.terms);
  request.decimal_sign = context.decimal_sign;
  TaxonomyStore taxonomy(options.taxonomy);
  ExtractionHooks hooks;
  hooks.choose_output = [&options] { return OutputOf(options); };
  hooks.restored = [&context](const std::string& term) {
    fmt::print(context.err, "selvane-cli: the pruned term {} is in the table and was restored\n", term);
  };
  hooks.will_not_fit = [&context](const TooManyRules& rules) { ReportTooMany(rules, context); };
  if (options.closed) {
    const ClosedRequest closed{.run = request, .covers_only = !options.unreduced};
    const ClosedReport report = ExtractClosedRules(source, taxonomy, hold, closed, hooks, context.progress);
    ReportOldRules(report.run, options, context);
    return ReportClosedEnd(report, context);
  }
  const AprioriRequest apriori{
      .run = request, .generalize = !options.no_generalize, .choices = ChoicesOf(options.choices)};
  const AprioriReport report = ExtractRules(source, taxonomy, hold, apriori, hooks, context.progress);
  ReportOldRules(report.run, options, context);
  ReportEnd(report, apriori.choices.selection.keep == KeptRules::kStrongest, context);
}

}  // namespace

void AddExtractCommand(CLI::App& group, const CliContext& context) {
  CLI::App* command = group.add_subcommand("extract", "Mine association rules from a term table");
  auto options = std::make_shared<ExtractOptions>();
  command->add_option("TERMDB", options->terms, "Term database")->required();
  command->add_option("--taxonomy", options->taxonomy, "Taxonomy database")->required()->type_name("TAXDB");
  command->add_option("--output", options->output, "Rules database to make")
      ->required()
      ->type_name("RULESDB");
  command->add_flag("--overwrite", options->overwrite, "Replace the rules database if it is there");
  command->add_option("--table", options->request.table, "Term table, where there are several")
      ->type_name("T");
  AddFraction(*command, "--min-support", options->request.min_support,
              "Fraction of the rows that hold a rule");
  AddFraction(*command, "--min-confidence", options->request.min_confidence,
              "Fraction of the antecedent's rows that hold the consequent too");
  command->add_flag("--no-generalize", options->no_generalize, "Leave the terms' ancestors out");
  CLI::Option* closed =
      command->add_flag("--closed", options->closed,
                        "Bases of rules by closed itemsets, without ancestors; the files of the search are "
                        "left in the current folder");
  command
      ->add_flag("--unreduced", options->unreduced,
                 "With --closed: approximate rules to all larger closed itemsets, not only to the next ones")
      ->needs(closed);
  command
      ->add_option("--itemsets", options->request.itemset_copy,
                   "Keep a copy of the itemset file, or with --closed of the file of closed itemsets")
      ->type_name("FILE");
  AddChoiceOptions(*command, options->choices, closed);
  command->footer(
      "With --readable, few rules worth reading; other options change single steps of it.\n"
      "Example:\n  selvane-cli rules extract terms.mdb --taxonomy tax.mdb --output rules.mdb --min-support "
      "0.2\n"
      "  selvane-cli rules extract terms.mdb --taxonomy tax.mdb --output few.mdb --min-support 0.02 "
      "--readable");
  command->callback([options, &context] { Extract(*options, context); });
}

}  // namespace selvane
