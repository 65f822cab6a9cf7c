// selvane-cli rules list|show; the other commands of the group have files of their own
#include <fmt/format.h>
#include <fmt/ostream.h>

#include <memory>
#include <numeric>
#include <ostream>

#include "base/error.h"
#include "cli/cli.h"
#include "cli/rules_output.h"
#include "rules/new_rules_database.h"
#include "rules/rule_list.h"
#include "rules/rule_order.h"
#include "rules/rules_info.h"
#include "rules/rules_store.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

void List(const fs::path& database, const CliContext& context) {
  RulesStore rules;
  rules.OpenRulesDatabase(database, OpenMode::kShared);
  const PulseScope pulse = rules.PulseDuring(context.progress);
  std::string lines;
  const auto line = [&lines](std::string_view key, const auto& value) {
    fmt::format_to(std::back_inserter(lines), "{}\t{}\n", key, value);
  };
  // Without its information file a database still has its tables. They are listed first, and what is wrong is
  // told behind them.
  RulesInfo info;
  std::string missing;
  try {
    info = ReadInfoOf(rules);
  } catch (const FileError& error) {
    missing = error.what();
  } catch (const InputError& error) {
    missing = error.what();
  }
  for (const std::string& table : rules.ListRulesTables()) {
    rules.SetSourceTable(table);
    fmt::format_to(std::back_inserter(lines), "table\t{}\t{}\n", table, rules.CountRules());
  }
  if (missing.empty()) {
    line("term table", info.term_table);
    line("rows", info.rows);
    line("minimum support", info.min_support);
    line("minimum confidence", info.min_confidence);
    for (const std::string& taxonomy : info.taxonomies) line("taxonomy", taxonomy);
    line("direct items", ItemsOfMap(info.first_map).size());
    line("generalized items", ItemsOfMap(info.second_map).size());
  }
  WriteOut(context, lines);
  if (!missing.empty()) {
    throw FileError("how the rules were made is not known: " + missing);
  }
}

void AddList(CLI::App& group, const CliContext& context) {
  CLI::App* command =
      group.add_subcommand("list", "Print the tables of a rules database and how they were made");
  auto database = std::make_shared<fs::path>();
  command->add_option("RULESDB", *database, "Rules database")->required();
  command->footer("Example:\n  selvane-cli rules list rules.mdb");
  command->callback([database, &context] { List(*database, context); });
}

struct ShowOptions {
  fs::path database;
  fs::path taxonomy;
  std::string table;
  RuleLayout layout;
  std::string sort;
  std::string where;
  long limit = 0;
};

const std::vector<std::pair<std::string, RuleOrder>>& FigureOrders() {
  static const std::vector<std::pair<std::string, RuleOrder>> kOrders = {
      {"index", RuleOrder::kNumber},
      {"support", RuleOrder::kDecreasingSupport},
      {"confidence", RuleOrder::kDecreasingConfidence},
      {"pa", RuleOrder::kDecreasingAntecedent},
      {"pc", RuleOrder::kDecreasingConsequent}};
  return kOrders;
}

std::string CheckOrder(const std::string& word) {
  for (const auto& [text, order] : FigureOrders()) {
    if (text == word) return {};
  }
  if (MeasureNamed(word)) return {};
  return fmt::format("{} is neither index, support, confidence, pa or pc nor a measure: {}", word,
                     MeasureList());
}

// By the figures of the table where these are named, as they are stored.
void Order(const RuleList& list, const RuleMeasures& measures, const std::string& word,
           std::vector<RuleNumber>& numbers) {
  for (const auto& [text, order] : FigureOrders()) {
    if (text == word || (word.empty() && order == RuleOrder::kNumber))
      return OrderRules(list, order, numbers);
  }
  if (const std::optional<Measure> measure = MeasureNamed(word)) measures.Order(*measure, numbers);
}

// What the run's own note or the information file says of the rows; 0 where neither does, which leaves some
// measures empty.
std::uint64_t RowsBehind(const RulesStore& store) {
  if (const std::uint64_t rows = RowsOf(store.RunOfSource().Find("rows")); rows > 0) return rows;
  try {
    return RowsOf(ReadInfoOf(store).rows);
  } catch (const FileError&) {
    return 0;
  } catch (const InputError&) {
    return 0;
  }
}

void Show(const ShowOptions& options, const CliContext& context) {
  RulesStore store;
  store.OpenRulesDatabase(options.database, OpenMode::kShared);
  const TaxonomyStore taxonomy(options.taxonomy, OpenMode::kShared);
  const PulseScope pulse = taxonomy.PulseDuring(context.progress);
  store.OpenRulesTable(ChooseTable(store.ListRulesTables(), options.table, options.database));
  context.progress.SetStatus("Loading rules ....");
  const RuleList list(store, context.progress);
  NodeNames names(taxonomy);
  const std::uint64_t rows = RowsBehind(store);
  const RuleMeasures measures(list, rows);
  std::vector<RuleNumber> numbers(static_cast<std::size_t>(list.size()));
  std::iota(numbers.begin(), numbers.end(), RuleNumber{1});
  if (!options.where.empty()) numbers = measures.Where(options.where, names);
  Order(list, measures, options.sort, numbers);
  if (options.limit > 0 && static_cast<std::size_t>(options.limit) < numbers.size())
    numbers.resize(static_cast<std::size_t>(options.limit));
  context.progress.SetStatus("Completed!!");
  WriteOut(context, PrintRules(list, ListedRules(numbers), options.layout, names, rows));
}

void AddShow(CLI::App& group, const CliContext& context) {
  CLI::App* command = group.add_subcommand("show", "Print the rules of a table");
  auto options = std::make_shared<ShowOptions>();
  command->add_option("RULESDB", options->database, "Rules database")->required();
  command->add_option("--taxonomy", options->taxonomy, "Taxonomy database")->required()->type_name("TAXDB");
  command->add_option("--table", options->table, "Rules table, where there are several")->type_name("T");
  AddRuleLayout(*command, options->layout);
  command
      ->add_option(
          "--sort", options->sort,
          "index, or the greatest support, confidence, pa or pc first, or the strongest by a measure")
      ->type_name("M")
      ->check(CheckOrder);
  AddWhere(*command, options->where);
  command->add_option("--limit", options->limit, "Print so many rules only")
      ->type_name("N")
      ->check(CLI::Range(1L, kMostRules));
  command->footer(
      "Example:\n  selvane-cli rules show rules.mdb --taxonomy tax.mdb --sort confidence --limit 20\n"
      "  selvane-cli rules show rules.mdb --taxonomy tax.mdb --where \"lift > 2 and p < 0.01\" --measures "
      "lift,p --sort lift");
  command->callback([options, &context] { Show(*options, context); });
}

}  // namespace

void AddRulesCommands(CLI::App& app, const CliContext& context) {
  CLI::App* group = app.add_subcommand("rules", "Extract, list, show and filter rules");
  group->require_subcommand(1);
  AddExtractCommand(*group, context);
  AddList(*group, context);
  AddShow(*group, context);
  AddFilterCommands(*group, context);
  AddRulesDocuments(*group, context);
}

}  // namespace selvane
