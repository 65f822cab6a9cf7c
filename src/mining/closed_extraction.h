// The extraction of rule bases by closed itemsets, as one call: the second way from a term table to a rules
// database.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/progress.h"
#include "data/transaction_source.h"
#include "itemsets/itemset_file.h"
#include "mining/extraction.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

struct ClosedRequest {
  ExtractionRequest run;
  // Of the approximate rules only those to the next larger closed itemsets; false gives those to all larger.
  bool covers_only = true;
};

struct ClosedReport {
  ExtractionReport run;
  std::uint64_t closed_itemsets = 0;
  std::uint64_t generators = 0;
  std::uint64_t exact_rules = 0;  // found, of confidence 1; all others are approximate
  // Rules of which one side has more items than the table has room for. They stand in the files only.
  std::uint64_t too_long_rules = 0;
  std::vector<std::string> unknown_columns;  // left out, having no node in the taxonomy
  std::vector<std::string> joined_columns;   // taken as one item with an earlier column of the same node
  std::vector<std::string> renumbered;       // items whose numbers are not theirs in `Taxonomy`
};

// Searches for the frequent closed itemsets of the table's columns and their minimal generators, and makes
// rules of them: each generator => its closure, with confidence 1 (the generic base), and each generator => a
// larger closed itemset (the informative base; by default only to the next larger ones, its reduction).
// Y. Bastide et al., Mining minimal non-redundant association rules using frequent closed itemsets, 2000.
//
// Rules go to the table that ExtractRules makes, with the information file of a run without generalization,
// ordered by the items of both sides together. All of them, and the itemsets, are left in the current folder
// as FCI.dat, Generator.dat, ExactRules.dat, ApproxRules.dat and Rules.dat (docs/formats/closed-itemsets.md),
// in place of those of an earlier run. The working files FC_s.dat and FPC_s.dat are in the folder of `hold`
// and are removed in the end.
//
// Throws as ExtractRules does, and InputError when an input is one of the files to be made.
ClosedReport ExtractClosedRules(const TransactionSource& source, const TaxonomyStore& taxonomy,
                                const ItemsetFileHold& hold, const ClosedRequest& request,
                                const ExtractionHooks& hooks, Progress& progress);

}  // namespace selvane
