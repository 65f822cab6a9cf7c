#include "filters/rules_opening.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/text.h"
#include "data/transaction_source.h"
#include "rules/new_rules_database.h"

namespace selvane {

namespace {

std::string MissingText(std::span<const std::string> used) {
  std::string text = "Unable to load rules:\n ";
  for (const std::string& name : used) text.append(name).append("\n ");
  return text + " are missing taxonomies in taxonomies database";
}

// The names of the taxonomies tell, and where these have none, the items that generalization added.
bool WasGeneralized(const RulesInfo& info) {
  return !info.taxonomies.empty() || !ItemsOfMap(info.second_map).empty();
}

// The table in the database's own spelling.
std::string FindTermTable(const TransactionSource& source, const RulesInfo& info) {
  if (info.term_table.empty()) {
    throw InputError("how the rules were made is not known: the information file names no term table");
  }
  std::vector<std::string> tables;
  source.ListTables(tables);
  for (const std::string& table : tables) {
    if (LowerCase(table) == LowerCase(info.term_table)) return table;
  }
  throw InputError(fmt::format(
      "{}: there is no table {}, of which the rules were made; choose the term database that they "
      "were extracted from. This one holds: {}",
      source.file_name().string(), info.term_table, fmt::join(tables, ", ")));
}

}  // namespace

MissingTaxonomies::MissingTaxonomies(std::span<const std::string> used) : InputError(MissingText(used)) {}

RulesInfo OpenRulesForFiltering(RulesStore& store, const TaxonomyStore& taxonomy,
                                const std::filesystem::path& path) {
  store.OpenRulesDatabase(path);
  RulesInfo info = ReadInfoOf(store);
  const bool all_there =
      std::all_of(info.taxonomies.begin(), info.taxonomies.end(),
                  [&](const std::string& name) { return taxonomy.working().HasTerm(name); });
  // All are named, as it is the set that tells which taxonomy database is the right one.
  if (!all_there) throw MissingTaxonomies(info.taxonomies);
  return info;
}

ItemRegistry ReadTermTable(const std::filesystem::path& path, const RulesInfo& info,
                           const TaxonomyStore& taxonomy, Progress& progress) {
  TransactionSource source;
  source.Open(path);
  const std::string table = FindTermTable(source, info);
  std::vector<std::string> item_names;
  source.ListItemFields(table, item_names);
  progress.SetStatus("Reading term table ...");
  return ReadItems(source, table, item_names, taxonomy, WasGeneralized(info), progress);
}

}  // namespace selvane
