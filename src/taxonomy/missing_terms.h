// Terms that a run needs and that pruning took out of the working taxonomy.
#pragma once

#include <functional>
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

// Terms brought back into the working taxonomy for a run. The run sees them; the file keeps them only when
// Keep was called, since a run that is stopped or fails is to leave the taxonomy as it was.
class RestoredTerms {
 public:
  // Brings them back in this order. Throws DatabaseError and Interrupted.
  RestoredTerms(TaxonomyStore& taxonomy, std::vector<std::string> terms, Progress& progress);
  // Then names each to `tell`, where that is set. Throws DatabaseError.
  void Keep(const std::function<void(const std::string& term)>& tell);

 private:
  std::vector<std::string> terms_;
  Transaction change_;
};

}  // namespace selvane
