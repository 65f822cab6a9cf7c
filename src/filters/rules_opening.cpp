#include "filters/rules_opening.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/text.h"
#include "data/transaction_source.h"

namespace selvane {

namespace {

// Places of the texts in the information file.
constexpr std::size_t kTermTable = 0;
constexpr std::size_t kMinimumSupport = 2;
constexpr std::size_t kMinimumConfidence = 3;
constexpr std::size_t kFirstTaxonomy = 4;

std::string MissingText(std::span<const std::string> used) {
  std::string text = "Unable to load rules:\n ";
  for (const std::string& name : used) text.append(name).append("\n ");
  return text + " are missing taxonomies in taxonomies database";
}

float NumberAt(const RulesInfo& info, std::size_t place) {
  if (place >= info.texts.size()) return 0;
  return static_cast<float>(NumberOf(info.texts[place]).value_or(0));
}

// The names of the taxonomies tell, and where these have none, the items that generalization added.
bool WasGeneralized(const RulesInfo& info) {
  return !TaxonomiesOf(info).empty() || std::any_of(info.second_map.begin(), info.second_map.end(),
                                                    [](std::int32_t entry) { return entry > 0; });
}

// The table in the database's own spelling.
std::string FindTermTable(const TransactionSource& source, const RulesInfo& info) {
  if (info.texts.size() <= kTermTable) {
    throw InputError("how the rules were made is not known: the information file names no term table");
  }
  const std::string& wanted = info.texts[kTermTable];
  std::vector<std::string> tables;
  source.ListTables(tables);
  for (const std::string& table : tables) {
    if (LowerCase(table) == LowerCase(wanted)) return table;
  }
  throw InputError(fmt::format(
      "{}: there is no table {}, of which the rules were made; choose the term database that they "
      "were extracted from. This one holds: {}",
      source.file_name().string(), wanted, fmt::join(tables, ", ")));
}

}  // namespace

MissingTaxonomies::MissingTaxonomies(std::span<const std::string> used) : InputError(MissingText(used)) {}

RulesInfo OpenRulesForFiltering(RulesStore& store, const TaxonomyStore& taxonomy,
                                const std::filesystem::path& path) {
  store.OpenRulesDatabase(path);
  RulesInfo info = ReadRulesInfo(path);
  const auto used = TaxonomiesOf(info);
  const bool all_there =
      std::all_of(used.begin(), used.end(), [&](const std::string& name) { return taxonomy.HasTerm(name); });
  // All are named, as it is the set that tells which taxonomy database is the right one.
  if (!all_there) throw MissingTaxonomies(used);
  return info;
}

std::span<const std::string> TaxonomiesOf(const RulesInfo& info) {
  return std::span(info.texts).subspan(std::min(kFirstTaxonomy, info.texts.size()));
}

float MinimumSupportOf(const RulesInfo& info) {
  return NumberAt(info, kMinimumSupport);
}

float MinimumConfidenceOf(const RulesInfo& info) {
  return NumberAt(info, kMinimumConfidence);
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
