// Writes a rules table as an association model of version 1.1.
#pragma once

#include <filesystem>
#include <functional>
#include <string_view>

#include "base/new_file.h"
#include "base/progress.h"
#include "rules/rules_info.h"
#include "rules/rules_store.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// Writes the rules of the store's source table, under the name `model_name`. The file is in ISO-8859-1; what
// that does not hold, and a line end, becomes a numeric character reference; what XML cannot hold a blank or
// a question mark. Nothing else is escaped. There is an item line for every entry of both maps of the
// information file, and every itemset is written with each rule that has it.
//
// The taxonomy, which must live until the end, is asked for when the head is written. Where there is none,
// the file ends behind its head, and other programs do not read it.
//
// Throws DatabaseError, FileError and Interrupted; no file is left then.
void WritePmml11(const RulesStore& rules, std::string_view model_name, const RulesInfo& info,
                 const std::function<const TaxonomyStore*()>& choose_taxonomy,
                 const std::filesystem::path& path, ExistingFile existing, Progress& progress);

// The name that an export is written to: ".xml" is always added.
std::filesystem::path ExportPath(const std::filesystem::path& chosen);

// What an export is written to, and an import makes, when no file is chosen; in the current folder.
inline constexpr const char* kDefaultExport = "XmlRules.xml";
inline constexpr const char* kDefaultImport = "RulesDB.mdb";

}  // namespace selvane
