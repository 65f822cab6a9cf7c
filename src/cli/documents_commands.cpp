// selvane-cli terms documents, rules documents
#include <fmt/format.h>
#include <fmt/ostream.h>

#include <cmath>
#include <memory>
#include <ostream>

#include "base/error.h"
#include "cli/cli.h"
#include "cli/documents_output.h"
#include "filters/rules_opening.h"
#include "taxonomy/node_names.h"
#include "termdb/document_reader.h"
#include "termdb/rows_by_term.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

// The term database must not be open elsewhere, also not by the caller.
void PrintDocuments(const fs::path& database, const std::string& table, std::span<const std::uint32_t> rows,
                    const RuleLayout& layout, const CliContext& context) {
  DocumentReader reader(database, table);
  DocumentPrinter printer(context, layout, reader.terms());
  reader.ForEach(
      rows, [&printer](const Document& document) { printer.Print(document); }, context.progress);
  printer.Finish();
}

struct TermsOptions {
  fs::path database;
  std::string table;
  std::vector<std::string> with;
  std::vector<std::string> without;
  RuleLayout layout;
};

void ListDocuments(const TermsOptions& options, const CliContext& context) {
  TransactionSource source;
  source.Open(options.database, OpenMode::kShared);
  const PulseScope pulse = source.PulseDuring(context.progress);
  std::vector<std::string> tables;
  source.ListTables(tables);
  const std::string table = ChooseTable(tables, options.table, options.database);
  const std::vector<std::uint32_t> rows = RowsWithTerms(source, table, options.with, options.without);
  const long all = source.CountRows(table);
  source.Close();
  PrintDocuments(options.database, table, rows, options.layout, context);
  fmt::print(context.err, "table {}: {} of {} documents\n", table, rows.size(), all);
}

struct RuleOptions {
  fs::path database;
  fs::path taxonomy;
  fs::path terms;
  std::string table;
  long rule = 0;
  bool exceptions = false;
  RuleLayout layout;
};

// A rule of a run, the term table of the run, and its rows there.
struct FoundRule {
  Rule rule;
  std::string shown;
  std::string table;
  RuleRows rows;
  long all_rows = 0;
};

FoundRule FindRule(const RuleOptions& options, const CliContext& context) {
  const TaxonomyStore taxonomy(options.taxonomy, OpenMode::kShared);
  const PulseScope taxonomy_pulse = taxonomy.PulseDuring(context.progress);
  RulesStore store;
  const RulesInfo info = OpenRulesForFiltering(store, taxonomy, options.database, OpenMode::kShared);
  const PulseScope rules_pulse = store.PulseDuring(context.progress);
  store.OpenRulesTable(ChooseTable(store.ListRulesTables(), options.table, options.database));
  FoundRule found;
  store.LoadRule(options.rule, found.rule);
  if (found.rule.antecedent.empty() && found.rule.consequent.empty()) {
    throw InputError(fmt::format("{}: the table {} has no rule {}; rules show prints them with their numbers",
                                 options.database.string(), store.source_table(), options.rule));
  }
  const RunRecord run = store.RunOfSource();
  TransactionSource source;
  source.Open(options.terms, OpenMode::kShared);
  const PulseScope source_pulse = source.PulseDuring(context.progress);
  found.table = FindTermTable(source, info);
  found.all_rows = source.CountRows(found.table);
  // In the way in which the run has counted, else the rows would not be those of its support. Tables without
  // a record of their run were counted by positions.
  found.rows = RowsOfRule(source, found.table, taxonomy, found.rule.antecedent, found.rule.consequent,
                          {.generalized = WasGeneralized(info),
                           .items = run.CountsTerms() ? ItemKind::kTerms : ItemKind::kPositions,
                           .distinct_witnesses = run.WantsDistinctWitnesses()});
  NodeNames names(taxonomy);
  found.shown =
      fmt::format("{} => {}", names.Joined(found.rule.antecedent), names.Joined(found.rule.consequent));
  return found;
}

void ListRuleDocuments(const RuleOptions& options, const CliContext& context) {
  const FoundRule found = FindRule(options, context);
  const std::vector<std::uint32_t>& rows = options.exceptions ? found.rows.exceptions : found.rows.holding;
  PrintDocuments(options.terms, found.table, rows, options.layout, context);
  fmt::print(context.err, "rule {}: {}: {} of {} rows hold it, {} its left side only\n", options.rule,
             found.shown, found.rows.holding.size(), found.all_rows, found.rows.exceptions.size());
  // The rows were found anew, while the support is what the run has stored. Where the two differ something
  // was changed since, and the listed rows are not those that the run counted.
  const long counted =
      std::lround(static_cast<double>(found.rule.support) * static_cast<double>(found.all_rows));
  if (counted == static_cast<long>(found.rows.holding.size())) return;
  fmt::print(
      context.err,
      "selvane-cli: its support stands for {} rows: since the rules were made, the taxonomy was pruned "
      "or restored, or the term table is another one\n",
      counted);
}

}  // namespace

void AddTermsDocuments(CLI::App& terms, const CliContext& context) {
  CLI::App* command = terms.add_subcommand("documents", "Print the documents of a term table's rows");
  auto options = std::make_shared<TermsOptions>();
  command->add_option("TERMDB", options->database, "Term database")->required();
  command->add_option("--table", options->table, "Table, where there are several")->type_name("T");
  // One value each, so that the database may stand behind them.
  command->add_option("--with", options->with, "Only documents with this term; may be given several times")
      ->type_name("TERM")
      ->allow_extra_args(false);
  command->add_option("--without", options->without, "Only documents without this term; the same")
      ->type_name("TERM")
      ->allow_extra_args(false);
  AddRuleLayout(*command, options->layout);
  command->footer(
      "Example:\n  selvane-cli terms documents terms.mdb --with Asthma --without Smoking --format csv");
  command->callback([options, &context] { ListDocuments(*options, context); });
}

void AddRulesDocuments(CLI::App& rules, const CliContext& context) {
  CLI::App* command = rules.add_subcommand("documents", "Print the documents in which a rule holds");
  auto options = std::make_shared<RuleOptions>();
  command->add_option("RULESDB", options->database, "Rules database")->required();
  command->add_option("--taxonomy", options->taxonomy, "Taxonomy database")->required()->type_name("TAXDB");
  command->add_option("--terms", options->terms, "Term database that the rules were extracted from")
      ->required()
      ->type_name("TERMDB");
  command->add_option("--table", options->table, "Rules table, where there are several")->type_name("T");
  command->add_option("--rule", options->rule, "Number of the rule, as rules show prints it")
      ->required()
      ->type_name("N")
      ->check(CLI::Range(1L, kMostRules));
  command->add_flag("--exceptions", options->exceptions,
                    "Print the documents with the left side of the rule only");
  AddRuleLayout(*command, options->layout);
  command->footer(
      "A document with a term has all items above the term, where the rules were made with these.\n"
      "Example:\n  selvane-cli rules documents rules.mdb --taxonomy tax.mdb --terms terms.mdb --rule 36");
  command->callback([options, &context] { ListRuleDocuments(*options, context); });
}

}  // namespace selvane
