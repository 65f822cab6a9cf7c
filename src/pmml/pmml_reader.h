// Reads association models.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/new_file.h"
#include "base/progress.h"
#include "pmml/pmml_model.h"
#include "rules/rules_store.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// What an import takes from a file besides its rules.
struct PmmlHead {
  ModelParameters parameters;
  std::int32_t declared_rules = 0;
  std::int32_t declared_items = 0;
  // The taxonomies that its items come from: their names, and their letters one after the other.
  std::vector<std::string> taxonomies;
  std::string taxonomy_codes;
};

// A model's whole text, as UTF-8.
class PmmlFile {
 public:
  // Throws FileError when the file cannot be read.
  explicit PmmlFile(const std::filesystem::path& path);

  // The model's name, its figures and its taxonomies, which are the items whose code is one letter. Version
  // 1.1 is read line by line, as in any layout that keeps an element with its attributes on one line; other
  // versions as XML. Moves the bar along the items. Throws InputError, naming what is missing.
  PmmlHead ReadHead(Progress& progress) const;
  // The rules in their order; those of version 1.1 only as our own writer lays them out, with the item
  // numbers   // of the file. An item of version 4 becomes the taxonomy's node of its name, the one at its
  // position where there are several, so that the file may come from another taxonomy database. Throws
  // InputError, also for an item that the taxonomy does not have, and for two items that are one node there.
  std::vector<Rule> ReadRules(const TaxonomyStore& taxonomy, Progress& progress) const;

 private:
  bool IsLineOriented() const;

  std::filesystem::path path_;
  std::string text_;
};

// The text between the first double quote behind the attribute's name, as "value=", and the next one. The
// name is looked for as a plain text, in capitals or not: "value=" is also found in mappedValue="...".
// Nothing when there is none.
std::optional<std::string> LineAttribute(std::string_view line, std::string_view name);

// Makes a rules database with a table named like the model: empty, or with these rules and an information
// file beside it. Throws DatabaseError, and InputError for a name that cannot be a table or more rules than a
// table holds; nothing is left then.
void ImportRules(const PmmlHead& head, const std::vector<Rule>* rules, const std::filesystem::path& path,
                 ExistingFile existing, Progress& progress);

}  // namespace selvane
