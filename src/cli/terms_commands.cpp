// selvane-cli terms build|list
#include <fmt/format.h>
#include <fmt/ostream.h>

#include <chrono>
#include <memory>
#include <ostream>

#include "base/text.h"
#include "cli/cli.h"
#include "data/transaction_source.h"
#include "termdb/term_table_building.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

struct BuildOptions {
  fs::path taxonomy;
  TermTableRequest request;
};

void TellOf(std::span<const BuildingNotice> notices, const CliContext& context) {
  for (const BuildingNotice& notice : notices) {
    // One unknown name may stand in thousands of records, so the distinct ones are counted first.
    const std::string times =
        notice.distinct > 0 && notice.distinct < notice.count ? fmt::format(" ({} times)", notice.count) : "";
    fmt::print(context.err, "selvane-cli: {}: {}{}, as {}\n", notice.kind,
               notice.distinct > 0 ? notice.distinct : notice.count, times, notice.example);
  }
}

void Build(const BuildOptions& options, const CliContext& context) {
  const auto start = std::chrono::steady_clock::now();
  const TaxonomyStore taxonomy(options.taxonomy, OpenMode::kShared);
  const PulseScope pulse = taxonomy.PulseDuring(context.progress);
  const BuildingReport report = BuildTermTable(
      options.request, taxonomy, context.clock,
      [&context](std::span<const BuildingNotice> notices) { TellOf(notices, context); }, context.progress);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  // Where each file is a record, it is the files that are told of.
  const std::string records =
      report.records == report.files ? "" : fmt::format(" of {} records", report.records);
  fmt::print(
      context.err,
      "table {}: {} rows{}, {} of {} terms{}; {} files read, {} passed over; {:.2f} s, reading {:.0f} MB/s\n",
      report.table, report.rows, records, report.columns.size(), report.terms,
      report.form == TermTableForm::kSets ? " as sets of rows" : "", report.files, report.passed_over,
      seconds, static_cast<double>(report.bytes) / 1e6 / report.read_seconds);
}

// The number of columns, or the word for all of them.
void AddMostTerms(CLI::App& command, ColumnChoice& columns) {
  const auto parse = [&columns](const std::string& text) {
    const std::optional<std::int32_t> number = Int32Of(text);
    if (text != "all" && (!number || *number < 1)) {
      throw CLI::ValidationError("--terms", "needs a number of terms from 1 on, or all; not " + text);
    }
    columns.most = text == "all" ? std::nullopt : std::optional<std::size_t>(*number);
  };
  command
      .add_option_function<std::string>("--terms", parse,
                                        "How many terms become columns, the most frequent first")
      ->type_name("N|all")
      ->default_str("10");
}

void AddChoices(CLI::App& command, TermTableRequest& request) {
  AddMostTerms(command, request.columns);
  command
      .add_option("--min-rows", request.columns.min_rows, "Only terms that stand in so many rows at least")
      ->type_name("N")
      ->check(CLI::Range(1U, UINT32_MAX));
  command
      .add_option(
          "--leave-out", request.columns.leave_out,
          "No column for this term, or for the terms at this position and below it, or for those that "
          "the lines of a file name; may be given several times")
      ->type_name("TERM|CODE|@FILE")
      ->allow_extra_args(false);
  command.add_flag("--major", request.major_only, "Count only headings that a record is mainly about");
  const auto year = [&command](const char* name, std::optional<int>& value, const char* help) {
    command.add_option(name, value, help)->type_name("YEAR")->check(CLI::Range(1, 9999));
  };
  year("--from", request.from_year, "Only records of this year or later");
  year("--to", request.to_year, "Only records of this year or earlier");
  command
      .add_option_function<std::string>(
          "--form",
          [&request](const std::string& word) {
            request.form = word == "rows" ? TermTableForm::kRows : TermTableForm::kSets;
          },
          "rows, or sets for any number of terms and rows; by default sets where rows do not suffice")
      ->check(CLI::IsMember({"rows", "sets"}));
}

void AddBuild(CLI::App& group, const CliContext& context) {
  CLI::App* command = group.add_subcommand("build", "Make a term database of literature");
  auto options = std::make_shared<BuildOptions>();
  command->add_option("--taxonomy", options->taxonomy, "Taxonomy database")->required()->type_name("TAXDB");
  command->add_option("--output", options->request.output, "Term database to make")
      ->required()
      ->type_name("TERMDB");
  AddChoices(*command, options->request);
  command
      ->add_option("PATH", options->request.paths,
                   "Files of literature, and folders of them: tagged texts (*.txt), PubMed's nbib and XML, "
                   "PubTator, BioC; packed (.gz) or not")
      ->required();
  command->footer(
      "Each record that names a term of the taxonomy gives a row; the most frequent terms give the columns.\n"
      "Examples:\n  selvane-cli terms build --taxonomy tax.mdb --output terms.mdb samples/abstracts\n"
      "  selvane-cli terms build --taxonomy tax.mdb --output terms.mdb --terms all --min-rows 5 --leave-out "
      "Humans pubmed.nbib");
  command->callback([options, &context] { Build(*options, context); });
}

void AddList(CLI::App& group, const CliContext& context) {
  struct Options {
    fs::path database;
    std::string table;
  };
  CLI::App* command = group.add_subcommand("list", "Print the terms of a table and how many rows hold each");
  auto options = std::make_shared<Options>();
  command->add_option("TERMDB", options->database, "Term database")->required();
  command->add_option("--table", options->table, "Table, where there are several")->type_name("T");
  command->footer("Example:\n  selvane-cli terms list terms.mdb");
  command->callback([options, &context] {
    TransactionSource source;
    source.Open(options->database, OpenMode::kShared);
    const PulseScope pulse = source.PulseDuring(context.progress);
    std::vector<std::string> tables;
    source.ListTables(tables);
    const std::string table = ChooseTable(tables, options->table, options->database);
    std::vector<std::string> terms;
    source.ListItemFields(table, terms);
    std::string lines;
    std::vector<std::uint32_t> ids;
    std::string name;
    // In the order of the columns, as the reader answers neighbouring ones from one walk over the table.
    for (int position = 1; position <= static_cast<int>(terms.size()); ++position) {
      source.ItemRowIds(table, position, ids, name);
      fmt::format_to(std::back_inserter(lines), "{}\t{}\t{}\n", position, ids.size(), name);
    }
    WriteOut(context, lines);
    fmt::print(context.err, "table {}: {} rows, {} terms\n", table, source.CountRows(table), terms.size());
  });
}

}  // namespace

void AddTermsCommands(CLI::App& app, const CliContext& context) {
  CLI::App* group = app.add_subcommand("terms", "Build and list term tables");
  group->require_subcommand(1);
  AddBuild(*group, context);
  AddList(*group, context);
  AddTermsDocuments(*group, context);
}

}  // namespace selvane
