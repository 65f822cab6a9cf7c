// The whole extraction as one call: from a term table to a rules database with its information file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "apriori/level.h"
#include "apriori/rule_generator.h"
#include "base/file.h"
#include "base/fraction.h"
#include "base/progress.h"
#include "data/transaction_source.h"
#include "itemsets/itemset_file.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

struct ExtractionRequest {
  std::string table;  // of the term database
  float min_support = kDefaultMinSupport;
  float min_confidence = kDefaultMinConfidence;
  bool generalize = true;
  // The sign that the numbers of the information file are written with, after the user's locale.
  char decimal_sign = '.';
  // Where to keep a copy of the run's itemset file, or of its file of closed itemsets; empty for none.
  std::filesystem::path itemset_copy{};
  // Of closed itemsets: of the approximate rules only those to the next larger closed itemsets.
  bool covers_only = true;
  long most_rules = kMostRules;  // what the table is to hold
};

// Where the rules go, asked for when there are itemsets to make rules from.
struct RulesOutput {
  std::filesystem::path path;
  ExistingFile existing = ExistingFile::kRefuse;
};

struct ExtractionHooks {
  std::function<RulesOutput()> choose_output;  // must be set
  RuleLine rule_line;                          // each stored rule, when it is set
  // Told of each entry that was brought back into the working taxonomy. It stays there however the run ends.
  std::function<void(const std::string& entry)> restored;
  // Told, before storing begins, that the run gives more rules than a table holds.
  std::function<void(const TooManyRules&)> will_not_fit;
};

// How a run ended, and what its user may do about it.
enum class ExtractionEnd {
  kRules,  // rules were stored
  // "No extracted rules". The database is there, with an empty table.
  kNoRules,           // none reached the confidence: a lower one may help
  kOnlyTooLongRules,  // of closed itemsets: all that were found have a side that the table has no room for
  // "No extractable rules". Nothing was written.
  kEmptyTable,
  kNoKnownTerm,     // no row holds a term of the taxonomy: do the table and the taxonomy belong together?
  kOnlySingleItems  // no two items are frequent together: a lower support may help
};

struct ClosedItemsetReport {
  std::uint64_t closed_itemsets = 0;
  std::uint64_t generators = 0;
  std::uint64_t exact_rules = 0;  // found, of confidence 1; all others are approximate
  // Rules of which one side has more items than the table has room for. They stand in the files only.
  std::uint64_t too_long_rules = 0;
  std::vector<std::string> unknown_columns;  // left out, having no node in the taxonomy
  std::vector<std::string> joined_columns;   // taken as one item with an earlier column of the same node
  std::vector<std::string> renumbered;       // items whose numbers are not theirs in `Taxonomy`
};

struct ExtractionReport {
  ExtractionEnd end = ExtractionEnd::kOnlySingleItems;
  std::filesystem::path output;
  std::uint32_t rows = 0;
  std::size_t items = 0;  // nodes found for terms and, when generalizing, their ancestors
  std::uint32_t itemsets = 0;
  std::uint64_t rules_found = 0;
  long rules_stored = 0;  // the first of those found, as many as the table is to hold
  SearchWork work;
  ClosedItemsetReport closed;  // of an extraction by closed itemsets
  double check_seconds = 0;    // of checking and restoring items
  double search_seconds = 0;
  double rules_seconds = 0;  // of counting, generating and storing rules
};

// Entries of the full taxonomy that the working taxonomy lacks, for these terms; the last one missing first.
std::vector<std::string> FindMissingEntries(const TaxonomyStore& taxonomy, std::span<const std::string> terms,
                                            Progress& progress);

// Checks, before mining, that the rules can go there: nothing is there unless it is to be replaced, the
// folder is there, and neither the database nor its information file is one of `others`, the other files of
// the run. Throws DatabaseError and InputError.
void CheckRulesOutput(const RulesOutput& output, const std::vector<std::filesystem::path>& others);

// The most rows that a term table may have.
inline constexpr long kMostTableRows = 32767;

// Checks that the items of the table are in the working taxonomy and brings missing ones back, searches for
// frequent itemsets, makes rules of them and stores them, with the rules information file beside the
// database. The itemset file under `hold` is removed in the end. Nothing is left under the output's name when
// it fails. Throws InputError for thresholds outside (0, 1], a table that is too long and item numbers that
// are too great, DatabaseError, FileError and Interrupted.
ExtractionReport ExtractRules(TransactionSource& source, TaxonomyStore& taxonomy, ItemsetFileHold& hold,
                              const ExtractionRequest& request, const ExtractionHooks& hooks,
                              Progress& progress);

}  // namespace selvane
