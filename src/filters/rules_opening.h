// What the filters work on: a rules database that belongs to a taxonomy, how its rules were made, and the
// term table that they were made of.
#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "base/error.h"
#include "base/progress.h"
#include "itemsets/item_registry.h"
#include "rules/rules_info.h"
#include "rules/rules_store.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// The rules were made over taxonomies that the taxonomy database does not hold, or no longer holds.
class MissingTaxonomies : public InputError {
 public:
  explicit MissingTaxonomies(std::span<const std::string> used);
};

// Opens a rules database, reads its information file and checks that the taxonomy holds every taxonomy that
// it names, as far as the file can hold the names. Throws DatabaseError, FileError, EndOfProgram when the
// file is not named *.mdb, and MissingTaxonomies; the database stays open then.
RulesInfo OpenRulesForFiltering(RulesStore& store, const TaxonomyStore& taxonomy,
                                const std::filesystem::path& path, OpenMode mode = OpenMode::kWritable);

// Whether the rules were made of the terms and of all that is above them.
bool WasGeneralized(const RulesInfo& info);

// The table that `info` names, in the spelling of the term database. Throws InputError when there is none.
std::string FindTermTable(const TransactionSource& source, const RulesInfo& info);

// The items of the rows that the rules were made of: reads the table that `info` names out of a term
// database. Throws DatabaseError, Interrupted, and InputError when the database has no such table.
ItemRegistry ReadTermTable(const std::filesystem::path& path, const RulesInfo& info, const RunRecord& run,
                           const TaxonomyStore& taxonomy, Progress& progress,
                           OpenMode mode = OpenMode::kReadOnly);

}  // namespace selvane
