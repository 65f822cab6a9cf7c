// What both extractions, from a term table to a rules database, are asked for and tell of.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "base/fraction.h"
#include "base/new_file.h"
#include "rules/rule_line.h"
#include "rules/rule_tally.h"
#include "rules/rules_store.h"

namespace selvane {

// What every extraction is asked for.
struct ExtractionRequest {
  std::string table;  // of the term database
  float min_support = kDefaultMinSupport;
  float min_confidence = kDefaultMinConfidence;
  // The sign that the numbers of the information file are written with, after the user's locale.
  char decimal_sign = '.';
  // Where to keep a copy of the run's itemset file, or of its file of closed itemsets; empty for none.
  std::filesystem::path itemset_copy{};
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
  // Told of each term that was brought back into the working taxonomy, when it is there to stay: at the end.
  std::function<void(const std::string& term)> restored;
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

// What every extraction tells of itself.
struct ExtractionReport {
  ExtractionEnd end = ExtractionEnd::kOnlySingleItems;
  std::filesystem::path output;
  std::uint32_t rows = 0;
  std::size_t items = 0;  // nodes found for terms and, when generalizing, their ancestors
  std::uint64_t rules_found = 0;
  long rules_stored = 0;     // the first of those found, as many as the table is to hold
  double check_seconds = 0;  // of checking and restoring items
  double search_seconds = 0;
  double rules_seconds = 0;  // of counting, generating and storing rules
};

// Checks, before mining, that the rules can go there: nothing is there unless it is to be replaced, the
// folder is there, neither the database nor its information file is one of `others`, the other files of the
// run, and both can be made. Throws DatabaseError, FileError and InputError.
void CheckRulesOutput(const RulesOutput& output, const std::vector<std::filesystem::path>& others);

}  // namespace selvane
