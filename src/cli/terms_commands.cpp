// selvane-cli terms build|list
#include <fmt/format.h>
#include <fmt/ostream.h>

#include <chrono>
#include <memory>
#include <ostream>

#include "cli/cli.h"
#include "data/transaction_source.h"
#include "termdb/term_table.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

struct BuildOptions {
  fs::path taxonomy;
  fs::path output;
  std::vector<fs::path> paths;
};

void Build(const BuildOptions& options, const CliContext& context) {
  const auto start = std::chrono::steady_clock::now();
  const std::vector<fs::path> files = QueryFiles(options.paths);
  long skipped = 0;
  TermCollection collection;
  {
    const TaxonomyStore taxonomy(options.taxonomy);
    collection = CollectTerms(
        taxonomy, files,
        [&](const fs::path& file, const std::string& reason) {
          ++skipped;
          const bool named = reason.find(file.string()) != std::string::npos;
          fmt::print(context.err, "selvane-cli: {}; the file is passed over\n",
                     named ? reason : fmt::format("{}: {}", file.string(), reason));
        },
        context.progress);
  }
  const double read_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const TermTableReport report =
      WriteTermTable(collection, options.output, ExistingFile::kRefuse, context.clock, context.progress);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  fmt::print(
      context.err,
      "table {}: {} rows, {} of {} terms; {} files read, {} passed over; {:.2f} s, reading {:.0f} MB/s\n",
      report.table, report.rows, report.columns.size(), collection.terms.size(),
      files.size() - static_cast<std::size_t>(skipped), skipped, seconds,
      static_cast<double>(collection.bytes) / 1e6 / read_seconds);
}

void AddBuild(CLI::App& group, const CliContext& context) {
  CLI::App* command = group.add_subcommand("build", "Make a term database of tagged abstracts");
  auto options = std::make_shared<BuildOptions>();
  command->add_option("--taxonomy", options->taxonomy, "Taxonomy database")->required()->type_name("TAXDB");
  command->add_option("--output", options->output, "Term database to make")->required()->type_name("TERMDB");
  command->add_option("PATH", options->paths, "Tagged files (*.txt), or folders of them")->required();
  command->footer(
      "The first abstract of each file gives a row, the ten most frequent terms of all give the columns.\n"
      "Example:\n  selvane-cli terms build --taxonomy tax.mdb --output terms.mdb samples/abstracts");
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
    source.Open(options->database);
    std::vector<std::string> tables;
    source.ListTables(tables);
    const std::string table = ChooseTable(tables, options->table, options->database);
    std::vector<std::string> terms;
    source.ListItemFields(table, terms);
    std::string lines;
    std::vector<std::uint32_t> ids;
    std::string name;
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
