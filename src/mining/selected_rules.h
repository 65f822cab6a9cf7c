// The rules of a run that asks for more than plain rule generation.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "apriori/generalized_apriori.h"
#include "base/progress.h"
#include "itemsets/item_hierarchy.h"
#include "mining/extraction.h"
#include "rules/run_record.h"
#include "selection/selection.h"

namespace selvane {

// What a run may ask for beyond the plain one, which the defaults are.
struct RunChoices {
  ItemKind items = ItemKind::kPositions;
  bool distinct_witnesses = false;
  std::size_t max_size = 0;  // items of both sides together; 0 for any number
  // Terms or positions, each with all below it: what the sides may be made of, and what is no item at all.
  // Empty lists ask for nothing.
  std::vector<std::string> antecedent{};
  std::vector<std::string> consequent{};
  std::vector<std::string> left_out{};
  // Without the items of the sides, which the lists give, and the minimum confidence.
  SelectionOptions selection{};

  // True when rules must be selected, which plain rule generation does not do.
  bool SelectsRules() const { return selection.IsAsked() || !antecedent.empty() || !consequent.empty(); }
};

// The search that these choices ask for. Throws InputError for a name that the taxonomy does not have.
SearchOptions SearchOptionsOf(const RunChoices& choices, float minimum_support, bool generalize,
                              const ItemHierarchy& hierarchy);
// The selection that they ask for, in the same way.
SelectionOptions SelectionOptionsOf(const RunChoices& choices, const ExtractionRequest& request,
                                    const ItemHierarchy& hierarchy);

// Selects the rules of the itemset file of a search that kept its items. Throws InputError when it is too
// large to be held in memory, FileError and Interrupted.
Selection SelectRulesOf(const std::filesystem::path& itemset_file, const AprioriSummary& found,
                        const KeptItems& kept, const ItemHierarchy& hierarchy,
                        const SelectionOptions& options, Progress& progress);

// What is kept of a run beside its rules: how it was asked for, and what its steps left.
struct RunOutcome {
  std::uint32_t rows = 0;
  std::vector<StepReport> steps{};
  std::uint64_t tested = 0;
};
RunRecord RecordOf(const RunChoices& choices, const ExtractionRequest& request, bool generalize,
                   const RunOutcome& outcome);

}  // namespace selvane
