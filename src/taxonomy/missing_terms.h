// Terms that a run needs and that pruning took out of the working taxonomy.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "base/progress.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// Of these terms, the ones of which the working taxonomy lacks a position, with what else the full taxonomy
// has at their positions; each once, the last one missing first. Shows its progress. Throws DatabaseError.
std::vector<std::string> FindMissingTerms(const TaxonomyStore& taxonomy, std::span<const std::string> terms,
                                          Progress& progress);

}  // namespace selvane
