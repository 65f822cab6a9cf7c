#include "filters/rules_opening.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <unordered_set>

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

// Whether the taxonomy has every taxonomy that an information file names. Where a name is not found as it
// stands, the taxonomies are compared as the file can hold them.
bool HasAllTaxonomies(const TaxonomyStore& taxonomy, std::span<const std::string> names) {
  std::optional<std::unordered_set<std::string>> held;
  return std::all_of(names.begin(), names.end(), [&](const std::string& name) {
    if (taxonomy.working().HasTerm(name)) return true;
    if (!held) {
      held.emplace();
      for (const std::string& term : taxonomy.TaxonomiesInUse()) held->insert(HeldByInfo(term));
    }
    return held->contains(name);
  });
}

}  // namespace

MissingTaxonomies::MissingTaxonomies(std::span<const std::string> used) : InputError(MissingText(used)) {}

RulesInfo OpenRulesForFiltering(RulesStore& store, const TaxonomyStore& taxonomy,
                                const std::filesystem::path& path, OpenMode mode) {
  store.OpenRulesDatabase(path, mode);
  RulesInfo info = ReadInfoOf(store);
  // All are named, as it is the set that tells which taxonomy database is the right one.
  if (!HasAllTaxonomies(taxonomy, info.taxonomies)) throw MissingTaxonomies(info.taxonomies);
  return info;
}

// The names of the taxonomies tell, and where these have none, the items that generalization added.
bool WasGeneralized(const RulesInfo& info) {
  return !info.taxonomies.empty() || !ItemsOfMap(info.second_map).empty();
}

std::string FindTermTable(const TransactionSource& source, const RulesInfo& info) {
  if (info.term_table.empty()) {
    throw InputError("how the rules were made is not known: the information file names no term table");
  }
  std::vector<std::string> tables;
  source.ListTables(tables);
  for (const std::string& table : tables) {
    if (LowerCase(HeldByInfo(table)) == LowerCase(info.term_table)) return table;
  }
  throw InputError(fmt::format(
      "{}: there is no table {}, of which the rules were made; choose the term database that they "
      "were extracted from. This one holds: {}",
      source.file_name().string(), info.term_table, fmt::join(tables, ", ")));
}

ItemRegistry ReadTermTable(const std::filesystem::path& path, const RulesInfo& info, const RunRecord& run,
                           const TaxonomyStore& taxonomy, Progress& progress, OpenMode mode) {
  TransactionSource source;
  source.Open(path, mode);
  const PulseScope pulse = source.PulseDuring(progress);
  const std::string table = FindTermTable(source, info);
  std::vector<std::string> item_names;
  source.ListItemFields(table, item_names);
  progress.SetStatus("Reading term table ...");
  const ItemHierarchy hierarchy(taxonomy, run.CountsTerms() ? ItemKind::kTerms : ItemKind::kPositions);
  return ReadItems(source, table, item_names, hierarchy, {.generalize = WasGeneralized(info)}, progress);
}

}  // namespace selvane
