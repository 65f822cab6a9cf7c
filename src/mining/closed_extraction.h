// The extraction of rule bases by closed itemsets, as one call: the second way from a term table to a rules
// database.
#pragma once

#include "mining/extraction.h"

namespace selvane {

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
ExtractionReport ExtractClosedRules(const TransactionSource& source, const TaxonomyStore& taxonomy,
                                    const ItemsetFileHold& hold, const ExtractionRequest& request,
                                    const ExtractionHooks& hooks, Progress& progress);

}  // namespace selvane
