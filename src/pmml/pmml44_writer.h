// Writes a rules table as an association model of version 4.4, which today's programs read.
#pragma once

#include <filesystem>

#include "base/clock.h"
#include "base/new_file.h"
#include "base/progress.h"
#include "pmml/pmml_model.h"
#include "rules/rules_store.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// Items are those of the rules, each once, with its name and its position code; itemsets are written once
// each. An itemset has the figures of the rules' sides, so that rules come back as they went out. Throws
// FileError, DatabaseError and Interrupted; no file is left then.
void WritePmml44(const RulesStore& rules, const ModelParameters& parameters, const TaxonomyStore& taxonomy,
                 const std::filesystem::path& path, ExistingFile existing, const Clock& clock,
                 Progress& progress);

}  // namespace selvane
