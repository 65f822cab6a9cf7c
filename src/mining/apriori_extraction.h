// The whole extraction as one call: from a term table to a rules database with its information file.
#pragma once

#include <cstdint>
#include <vector>

#include "apriori/level.h"
#include "base/progress.h"
#include "data/transaction_source.h"
#include "itemsets/itemset_file.h"
#include "mining/extraction.h"
#include "mining/selected_rules.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

struct AprioriRequest {
  ExtractionRequest run;
  bool generalize = true;  // false leaves the ancestors of terms out
  RunChoices choices{};
};

struct AprioriReport {
  ExtractionReport run;
  std::uint32_t itemsets = 0;
  SearchWork work;
  // Of a run that selects rules: how many were left after each step, and how many were tested.
  std::vector<StepReport> steps;
  std::uint64_t tested = 0;
};

// Checks that the items of the table are in the working taxonomy and brings missing ones back, searches for
// frequent itemsets, makes rules of them and stores them, with the rules information file beside the
// database. The itemset file under `hold` is removed in the end. When it fails, nothing is left under the
// output's name and the taxonomy is as it was; only when a name cannot be given in the very end do the terms
// stay that were brought back and told of. Throws InputError for thresholds outside (0, 1], a table that is
// too long and item numbers that are too great, DatabaseError, FileError and Interrupted.
AprioriReport ExtractRules(TransactionSource& source, TaxonomyStore& taxonomy, ItemsetFileHold& hold,
                           const AprioriRequest& request, const ExtractionHooks& hooks, Progress& progress);

}  // namespace selvane
