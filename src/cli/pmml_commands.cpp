// selvane-cli pmml export|import
#include <fmt/ostream.h>

#include <memory>

#include "base/error.h"
#include "base/file.h"
#include "cli/cli.h"
#include "pmml/pmml11_writer.h"
#include "pmml/pmml44_writer.h"
#include "pmml/pmml_reader.h"
#include "rules/new_rules_database.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

enum class PmmlVersion { k11, k44 };

struct ExportOptions {
  fs::path rules;
  fs::path taxonomy;
  std::string table;
  fs::path output;
  PmmlVersion version = PmmlVersion::k11;
  bool overwrite = false;
};

void Export(const ExportOptions& options, const CliContext& context) {
  // The information file is an input as well, though nobody has named it.
  CheckIsNoInput(options.output, {options.rules, options.taxonomy, RulesInfoPath(options.rules)});
  RulesStore rules;
  rules.OpenRulesDatabase(options.rules, OpenMode::kShared);
  const RulesInfo info = ReadInfoOf(rules);
  const std::string table = ChooseTable(rules.ListRulesTables(), options.table, options.rules);
  rules.OpenRulesTable(table);
  const TaxonomyStore taxonomy(options.taxonomy, OpenMode::kShared);
  const PulseScope pulse = taxonomy.PulseDuring(context.progress);
  const ExistingFile existing = options.overwrite ? ExistingFile::kReplace : ExistingFile::kRefuse;
  if (options.version == PmmlVersion::k44) {
    WritePmml44(rules, ParametersOf(info, table), taxonomy, options.output, existing, context.clock,
                context.progress);
  } else {
    // This writer asks for the taxonomy after its head, as the window lets its user choose it then.
    WritePmml11(
        rules, table, info, [&taxonomy] { return &taxonomy; }, options.output, existing, context.progress);
  }
  fmt::print(context.err, "{} rules exported\n", rules.CountRules());
}

void AddExport(CLI::App& group, const CliContext& context) {
  CLI::App* command = group.add_subcommand("export", "Write a rules table as an association model");
  auto options = std::make_shared<ExportOptions>();
  command->add_option("RULESDB", options->rules, "Rules database")->required();
  command->add_option("--taxonomy", options->taxonomy, "Taxonomy database")->required()->type_name("TAXDB");
  command->add_option("--output", options->output, "File to write")->required()->type_name("FILE");
  command->add_option("--table", options->table, "Rules table, where there are several")->type_name("T");
  AddChoice<PmmlVersion>(*command, "--pmml-version", options->version,
                         {{"1.1", PmmlVersion::k11}, {"4.4", PmmlVersion::k44}},
                         "1.1, as the workbench, or 4.4");
  command->add_flag("--overwrite", options->overwrite, "Replace the file if it is there");
  command->footer(
      "Example:\n  selvane-cli pmml export rules.mdb --taxonomy tax.mdb --output rules.xml --pmml-version "
      "4.4");
  command->callback([options, &context] { Export(*options, context); });
}

struct ImportOptions {
  fs::path file;
  fs::path taxonomy;
  fs::path output;
  bool with_rules = false;
};

void Import(const ImportOptions& options, const CliContext& context) {
  // Two files are made, of which the user has named one.
  for (const fs::path& made : {options.output, RulesInfoPath(options.output)}) {
    CheckIsNoInput(made, {options.file, options.taxonomy});
  }
  const PmmlFile file(options.file);
  const PmmlHead head = file.ReadHead(context.progress);
  const TaxonomyStore taxonomy(options.taxonomy, OpenMode::kShared);
  const PulseScope pulse = taxonomy.PulseDuring(context.progress);
  std::vector<Rule> rules;
  if (options.with_rules) rules = file.ReadRules(taxonomy, context.progress);
  if (options.with_rules && rules.empty() && head.declared_rules > 0) {
    throw InputError(fmt::format(
        "{}: the file declares {} rules and holds none that can be read; export them again, or import "
        "without --rules",
        options.file.string(), head.declared_rules));
  }
  // Before anything is made, as the taxonomy may turn out to be damaged.
  const NodeNumber largest = taxonomy.source().LargestNodeNamedIn(head.taxonomy_codes);
  ImportRules(head, options.with_rules ? &rules : nullptr, options.output, ExistingFile::kRefuse,
              context.progress);
  context.progress.SetStatus("Completed!!");
  fmt::print(
      context.err,
      "table {}: the file declares {} rules, {} were taken over; the greatest node of its taxonomies is {}\n",
      head.parameters.name, head.declared_rules, rules.size(), largest);
}

void AddImport(CLI::App& group, const CliContext& context) {
  CLI::App* command = group.add_subcommand("import", "Make a rules database of an association model");
  auto options = std::make_shared<ImportOptions>();
  command->add_option("FILE", options->file, "Association model, of version 1.1 or 4")->required();
  command->add_option("--taxonomy", options->taxonomy, "Taxonomy database")->required()->type_name("TAXDB");
  command->add_option("--output", options->output, "Rules database to make")
      ->required()
      ->type_name("RULESDB");
  command->add_flag("--rules", options->with_rules,
                    "Take the rules over too; without it the table is empty, as from the workbench");
  command->footer(
      "Example:\n  selvane-cli pmml import rules.xml --taxonomy tax.mdb --output imported.mdb --rules");
  command->callback([options, &context] { Import(*options, context); });
}

}  // namespace

void AddPmmlCommands(CLI::App& app, const CliContext& context) {
  CLI::App* group = app.add_subcommand("pmml", "Exchange rules with other programs");
  group->require_subcommand(1);
  AddExport(*group, context);
  AddImport(*group, context);
}

}  // namespace selvane
