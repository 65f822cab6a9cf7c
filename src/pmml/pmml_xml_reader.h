// Association models of version 4, and what the readers of both versions share. For pmml_reader only.
#pragma once

#include <filesystem>
#include <string>
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

// The rule of two itemsets: their supports become PA and PC, their sizes ASPEC and CSPEC.
Rule MakeRule(const FileItemset& antecedent, const FileItemset& consequent, float support, float confidence);
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
