// selvane-cli taxonomy load|list|prune|restore; find stands in its own file
#include <fmt/format.h>
#include <fmt/ostream.h>

#include <memory>
#include <ostream>

#include "base/error.h"
#include "cli/cli.h"
#include "taxonomy/mesh_loading.h"
#include "taxonomy/taxonomy_loading.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

struct LoadOptions {
  fs::path file;
  fs::path database;
  std::vector<fs::path> supplementary;
  bool check_tags = false;
};

void LoadFile(const LoadOptions& options, const CliContext& context) {
  const bool is_taxonomy = HoldsTaxonomy(options.file);
  if (is_taxonomy && (options.check_tags || !options.supplementary.empty())) {
    throw InputError(
        fmt::format("{}: this is a taxonomy file, not MeSH, so there are no check tags or "
                    "supplementary records to add; load it without these options",
                    options.file.string()));
  }
  // A taxonomy file is known by its content under any name; the name tells when the content does not.
  const auto load = is_taxonomy ? LoadTaxonomyFile : LoadTaxonomy;
  const TaxonomyLoadReport report =
      load(options.file, options.database, ExistingFile::kRefuse, context.progress);
  if (!report.passed_over.empty()) {
    fmt::print(
        context.err,
        "{} lines hold some of the words canonical, type and tree but not all, and were passed over; the "
        "first is line {}\n",
        report.passed_over.size(), report.passed_over.front());
  }
  if (report.unnamed > 0) {
    fmt::print(context.err, "{} positions have no name\n", report.unnamed);
  }
  if (const std::string odd = OddCategoriesText(report); !odd.empty()) fmt::print(context.err, "{}\n", odd);
  fmt::print(context.err, "{} positions loaded\n", report.rows);
}

void LoadMeshFiles(const LoadOptions& options, const CliContext& context) {
  const MeshLoadReport report = LoadMesh({.file = options.file,
                                          .database = options.database,
                                          .supplementary = options.supplementary,
                                          .check_tags = options.check_tags},
                                         context.progress);
  for (const auto& [kind, problem] : report.problems) {
    fmt::print(context.err, "{} {}; the first: {}{}\n", problem.count, kind, problem.example,
               kind == kWithoutTreeNumber ? "; --check-tags lets them take part" : "");
  }
  if (report.unnamed > 0) {
    fmt::print(context.err, "{} positions stand above others only and have no name\n", report.unnamed);
  }
  const MeshCounts& counts = report.counts;
  if (!options.supplementary.empty()) {
    fmt::print(context.err, "{} supplementary records, {} of them mapped to a heading of the taxonomy\n",
               counts.supplementary, counts.mapped);
  }
  fmt::print(context.err, "{} headings with {} entry terms at {} positions in {} categories loaded\n",
             counts.headings, counts.entry_terms, counts.positions, counts.categories);
}

void AddLoad(CLI::App& group, const CliContext& context) {
  CLI::App* command =
      group.add_subcommand("load", "Make a taxonomy database of a taxonomy file, or of MeSH as published");
  auto options = std::make_shared<LoadOptions>();
  command
      ->add_option("FILE", options->file,
                   "Taxonomy file; or MeSH descriptors in XML or ASCII, the tree, N-Triples; .gz too")
      ->required();
  command->add_option("TAXDB", options->database, "Taxonomy database to make")->required();
  command
      ->add_option("--supplementary", options->supplementary,
                   "MeSH file of supplementary records, to find headings by them")
      ->type_name("FILE")
      ->allow_extra_args(false);
  command->add_flag("--check-tags", options->check_tags,
                    "Let headings without a tree number, as Female, take part in a category T of their own");
  command->footer(
      "Files are known by their content. Of MeSH, identifiers and entry terms are kept too.\n"
      "Examples:\n  selvane-cli taxonomy load samples/taxonomy.xml tax.mdb\n"
      "  selvane-cli taxonomy load desc2024.gz tax.mdb --supplementary supp2024.gz --check-tags");
  command->callback([options, &context] {
    HoldsMesh(options->file) ? LoadMeshFiles(*options, context) : LoadFile(*options, context);
  });
}

void List(const fs::path& database, bool source, const std::string& under, int depth,
          const CliContext& context) {
  const TaxonomyStore store(database, OpenMode::kShared);
  const PulseScope pulse = store.PulseDuring(context.progress);
  const TaxonomyTable table = source ? store.source() : store.working();
  std::string code = under;
  if (!under.empty()) {
    // A position may be typed as MeSH prints it, C23.888, and is walked as the taxonomy writes it.
    code = table.FindPosition(under).value_or("");
    if (code.empty())
      throw InputError(
          fmt::format("{}: the taxonomy has no position {}; list it to see which", database.string(), under));
  }
  std::string lines;
  table.ForEachBelow(code, depth, [&lines](const TaxonomyNode& node) {
    fmt::format_to(std::back_inserter(lines), "{}\t{}\t{}\n", node.number, node.code, node.term);
  });
  WriteOut(context, lines);
}

void AddList(CLI::App& group, const CliContext& context) {
  struct Options {
    fs::path database;
    bool source = false;
    std::string under;
    int depth = 0;
  };
  CLI::App* command = group.add_subcommand("list", "Print index, code and canonical text of each position");
  auto options = std::make_shared<Options>();
  command->add_option("TAXDB", options->database, "Taxonomy database")->required();
  command->add_flag("--source", options->source, "The taxonomy as loaded, not as pruned");
  command->add_option("--under", options->under, "This position and those below it")->type_name("CODE");
  command->add_option("--depth", options->depth, "So many levels only")
      ->type_name("N")
      ->check(CLI::Range(1, 1000));
  command->footer("Example:\n  selvane-cli taxonomy list tax.mdb --under C.08 --depth 2");
  command->callback([options, &context] {
    List(options->database, options->source, options->under, options->depth, context);
  });
}

void AddPrune(CLI::App& group, const CliContext& context) {
  struct Options {
    fs::path database;
    std::vector<std::string> codes;
    bool upward = false;
  };
  CLI::App* command = group.add_subcommand("prune", "Take positions and all below them out of the mining");
  auto options = std::make_shared<Options>();
  command->add_option("TAXDB", options->database, "Taxonomy database")->required();
  command->add_option("CODE", options->codes, "Position codes, such as C.23.888 or C23.888")->required();
  command->add_flag("--upward", options->upward, "Take the positions and all above them out instead");
  command->footer(
      "What is pruned stays in the database; taxonomy restore brings it back.\n"
      "Example:\n  selvane-cli taxonomy prune tax.mdb D.02 E");
  command->callback([options, &context] {
    TaxonomyStore store(options->database);
    // All are looked up before anything is pruned: a slip in the last code must not leave half the work done.
    std::vector<NodeNumber> nodes;
    for (const std::string& code : options->codes) {
      const std::optional<std::string> position = store.working().FindPosition(code);
      if (!position) {
        throw InputError(
            fmt::format("{}: the taxonomy has no position {}; nothing was pruned. "
                        "taxonomy list shows what there is",
                        options->database.string(), code));
      }
      for (const NodeNumber node : store.working().NodesAtPosition(*position)) nodes.push_back(node);
    }
    const std::span<const NodeNumber> none;
    const long pruned =
        store.Prune(options->upward ? nodes : none, options->upward ? none : nodes, context.progress);
    fmt::print(context.err, "{} positions pruned\n", pruned);
  });
}

void AddRestore(CLI::App& group, const CliContext& context) {
  CLI::App* command = group.add_subcommand("restore", "Undo every pruning");
  auto database = std::make_shared<fs::path>();
  command->add_option("TAXDB", *database, "Taxonomy database")->required();
  command->footer("Example:\n  selvane-cli taxonomy restore tax.mdb");
  command->callback([database, &context] {
    RestoreTaxonomy(*database, context.progress);
    fmt::print(context.err, "the taxonomy is as it was loaded\n");
  });
}

}  // namespace

void AddTaxonomyCommands(CLI::App& app, const CliContext& context) {
  CLI::App* group = app.add_subcommand("taxonomy", "Load, list, search, prune and restore taxonomies");
  group->require_subcommand(1);
  AddLoad(*group, context);
  AddList(*group, context);
  AddTaxonomyFindCommand(*group, context);
  AddPrune(*group, context);
  AddRestore(*group, context);
}

}  // namespace selvane
