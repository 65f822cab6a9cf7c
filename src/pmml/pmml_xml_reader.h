// Association models of version 4, and what the readers of both versions share. For pmml_reader only.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/error.h"
#include "base/progress.h"
#include "base/text.h"
#include "pmml/pmml_reader.h"
#include "rules/rule.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// An itemset of the file: its items, and its support as a fraction of the rows.
struct FileItemset {
  std::vector<std::int32_t> items;
  float support = 0;
};

// The rule of two itemsets: their supports become PA and PC, their sizes ASPEC and CSPEC. Throws InputError
// for a side that no rules table can hold: a file that gives a great itemset to each of its rules would need
// memory without end.
Rule MakeRule(const FileItemset& antecedent, const FileItemset& consequent, float support, float confidence,
              const std::filesystem::path& path);
// The figure that a text says; nothing when it is none, or beyond what a table can hold.
std::optional<float> FigureOf(std::string_view text);
// Throws InputError when a name or a figure of the model is longer than any that is meant.
void CheckParameters(const ModelParameters& parameters, const std::filesystem::path& path);
// The same for the name of a taxonomy.
void CheckTaxonomyName(std::string_view name, const std::filesystem::path& path);
// The itemset of this id. Throws InputError, naming the file at `path`, when there is none.
const FileItemset& FindItemset(const TextMap<FileItemset>& itemsets, const std::string& id,
                               const std::filesystem::path& path);
// What to throw for a file without a model.
InputError NoModel(const std::filesystem::path& path);

// As PmmlFile::ReadHead and PmmlFile::ReadRules, of a text in UTF-8; `path` stands in messages.
PmmlHead ReadXmlHead(const std::string& text, const std::filesystem::path& path);
std::vector<Rule> ReadXmlRules(const std::string& text, const std::filesystem::path& path,
                               const TaxonomyStore& taxonomy, Progress& progress);

}  // namespace selvane
