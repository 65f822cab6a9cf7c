// Writes a rules table as an association model of version 1.1.
#pragma once

#include <filesystem>
#include <string_view>

#include "base/file.h"
#include "base/progress.h"
#include "pmml/pmml_model.h"
#include "rules/rules_store.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// The file is in ISO-8859-1; what that does not hold becomes a numeric character reference. Nothing else is
// escaped, and every itemset is written with each rule that has it. WriteHead comes first, then WriteModel;
// a file that is finished with its head only is one that other programs do not read.
class Pmml11Writer {
 public:
  // The file appears when it is finished. Throws FileError.
  Pmml11Writer(const std::filesystem::path& path, ExistingFile existing);

  // Up to the statistics, for a table of this name with so many rules.
  void WriteHead(std::string_view model_name, const RulesInfo& info, long rules);
  // An item line for every entry of both maps of the information file, the itemsets and the rules of the
  // store's source table. Throws DatabaseError, FileError and Interrupted.
  void WriteModel(const RulesStore& rules, const RulesInfo& info, const TaxonomyStore& taxonomy,
                  Progress& progress);
  void Finish();

 private:
  void WriteItems(const std::vector<std::int32_t>& map, std::string_view weight,
                  const TaxonomyStore& taxonomy, Progress& progress);

  NewFile file_;
  OutputFile output_;
};

// The name that an export is written to: ".xml" is always added.
std::filesystem::path ExportPath(const std::filesystem::path& chosen);

// What an export is written to, and an import makes, when no file is chosen; in the current folder.
inline constexpr const char* kDefaultExport = "XmlRules.xml";
inline constexpr const char* kDefaultImport = "RulesDB.mdb";

}  // namespace selvane
