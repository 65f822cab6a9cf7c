// selvane-cli taxonomy find
#include <fmt/format.h>
#include <fmt/ostream.h>

#include <array>
#include <memory>
#include <nlohmann/json.hpp>
#include <ostream>

#include "base/shown_text.h"
#include "base/text.h"
#include "cli/cli.h"
#include "cli/rules_output.h"
#include "taxonomy/position_code.h"
#include "taxonomy/term_search.h"

namespace selvane {

namespace {

// In the order of FoundBy.
constexpr std::array<std::string_view, 7> kWays = {
    "position", "identifier", "name", "entry term", "supplementary", "part of name", "part of entry term"};

std::string_view WayOf(const SearchedTerm& term) {
  return kWays[static_cast<std::size_t>(term.found_by)];
}

// The way that a position was found is seen in the positions, and that of a name in the name.
bool NeedsReason(const SearchedTerm& term) {
  return term.found_by != FoundBy::kPosition && term.found_by != FoundBy::kId &&
         term.found_by != FoundBy::kName && term.found_by != FoundBy::kPartOfName;
}

// As MeSH writes them; pruned ones in brackets.
std::string Positions(const SearchedTerm& term) {
  std::string text;
  for (const SearchedTerm::Position& position : term.positions) {
    const std::string number = TreeNumber(position.node.code);
    text += (text.empty() ? "" : " ") + (position.is_pruned ? "(" + number + ")" : number);
  }
  return text;
}

std::string AsText(const std::vector<SearchedTerm>& terms) {
  std::string text;
  for (const SearchedTerm& term : terms) {
    fmt::format_to(std::back_inserter(text), "{}\t{}\t{}", term.term, term.id, Positions(term));
    if (NeedsReason(term)) fmt::format_to(std::back_inserter(text), "\t{}", term.found);
    text += '\n';
  }
  return text;
}

std::string AsCsv(const std::vector<SearchedTerm>& terms, bool guards_formulas) {
  std::string text = "TERM,ID,POSITIONS,FOUND_BY,FOUND\n";
  const auto cell = [guards_formulas](const std::string& value) {
    return DoubleQuoted(guards_formulas ? Guarded(value) : value);
  };
  for (const SearchedTerm& term : terms) {
    fmt::format_to(std::back_inserter(text), "{},{},{},{},{}\n", cell(term.term), cell(term.id),
                   cell(Positions(term)), WayOf(term), cell(term.found));
  }
  return text;
}

std::string AsJson(const std::vector<SearchedTerm>& terms) {
  auto all = nlohmann::ordered_json::array();
  for (const SearchedTerm& term : terms) {
    auto positions = nlohmann::ordered_json::array();
    for (const auto& [node, is_pruned] : term.positions) {
      positions.push_back(
          {{"position", TreeNumber(node.code)}, {"index", node.number}, {"pruned", is_pruned}});
    }
    all.push_back({{"term", term.term},
                   {"id", term.id},
                   {"positions", std::move(positions)},
                   {"entry_terms", term.entry_terms},
                   {"found_by", WayOf(term)},
                   {"found", term.found}});
  }
  return all.dump(1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

struct FindOptions {
  std::filesystem::path database;
  std::string text;
  RuleLayout layout;
};

void Find(const FindOptions& options, const CliContext& context) {
  std::vector<SearchedTerm> terms;
  {
    // The file is released before anything is printed, since a pager may take its output for as long as it
    // likes.
    const TaxonomyStore store(options.database, OpenMode::kShared);
    const PulseScope pulse = store.PulseDuring(context.progress);
    terms = SearchTerms(store, options.text);
  }
  switch (options.layout.format) {
    case RuleFormat::kCsv:
      WriteOut(context, AsCsv(terms, options.layout.guards_formulas));
      break;
    case RuleFormat::kJson:
      WriteOut(context, AsJson(terms));
      break;
    default:
      WriteOut(context, AsText(terms));
  }
  fmt::print(context.err, "{} terms found\n", terms.size());
}

}  // namespace

void AddTaxonomyFindCommand(CLI::App& taxonomy, const CliContext& context) {
  CLI::App* command =
      taxonomy.add_subcommand("find", "Look terms up by name, entry term, identifier or position");
  auto options = std::make_shared<FindOptions>();
  command->add_option("TAXDB", options->database, "Taxonomy database")->required();
  command
      ->add_option(
          "TEXT", options->text,
          "Part of a name or an entry term, or a whole identifier or position, as D001249 or C08.127")
      ->required();
  AddRuleLayout(*command, options->layout);
  command->footer(
      "Prints term, identifier and positions, pruned ones in brackets, and what was found where that is not "
      "among them.\n"
      "Examples:\n  selvane-cli taxonomy find tax.mdb \"lung dis\"\n  selvane-cli taxonomy find tax.mdb "
      "C08.127");
  command->callback([options, &context] { Find(*options, context); });
}

}  // namespace selvane
