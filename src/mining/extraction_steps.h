// Steps that both extractors take.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/new_file.h"
#include "base/progress.h"
#include "data/transaction_source.h"
#include "mining/extraction.h"
#include "rules/rules_info.h"
#include "rules/rules_store.h"

namespace selvane {

class StageTimer {
 public:
  double Seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// Throws InputError for thresholds outside (0, 1], a table that is too long or has no plain name, and
// FileError when the copy of the itemset file cannot be made.
void CheckRequest(const TransactionSource& source, const ExtractionRequest& request);

// A copy of the itemset file in the making, to be committed with what else the run makes; nullptr where
// `copy` is empty. Throws FileError.
std::unique_ptr<NewFile> CopyOf(const std::filesystem::path& itemsets, const std::filesystem::path& copy);

// Tells of it when the rules will not fit the table.
void TellWhetherFits(const RuleTally& tally, const ExtractionRequest& request, const ExtractionHooks& hooks);

// How a run ends in which no two items were frequent together.
ExtractionEnd EndWithoutPairs(const ExtractionReport& report);

// How the rules of this run are made; the taxonomies and the maps are left to the caller.
RulesInfo InfoOf(const ExtractionRequest& request, std::uint32_t rows);

// Fills the target table of a new rules database. Returns the other files of the run, which are named
// together with the database and so must live until then.
using FillRules = std::function<std::vector<NewFile*>(RulesStore& rules)>;

// What goes into the rules database and its information file.
struct RulesToStore {
  RulesInfo info{};
  FillRules fill;
  std::function<void()> last_step{};  // as in CommitTogether
};

// Asks for the output, checks it against the other files of the run, and makes the rules database with its
// information file. Puts into the report where the rules went, how the run ended and how long this took.
// Throws as CheckRulesOutput, NewRulesDatabase and what is called do.
void StoreRules(const ExtractionHooks& hooks, const std::vector<std::filesystem::path>& others,
                const RulesToStore& rules, ExtractionReport& report, Progress& progress);

}  // namespace selvane
