#include "mining/extraction_steps.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "base/error.h"
#include "base/file.h"
#include "base/text.h"
#include "data/database_error.h"
#include "data/sql_dialect.h"
#include "rules/new_rules_database.h"

namespace selvane {

namespace fs = std::filesystem;

namespace {

void CheckOutputNames(const RulesOutput& output, const std::vector<fs::path>& others) {
  if (output.path.empty())
    throw DatabaseError({}, "no file was named; choose a rules database and try again");
  if (output.existing == ExistingFile::kRefuse && IsTaken(output.path)) {
    throw DatabaseError(output.path, kTakenReason);
  }
  std::error_code error;
  if (output.path.has_parent_path() && !fs::is_directory(output.path.parent_path(), error)) {
    throw DatabaseError(output.path, "there is no such folder; make it first, or choose another one");
  }
  const fs::path info = RulesInfoPath(output.path);
  for (const fs::path& other : others) {
    if (other.empty()) continue;
    for (const fs::path& made : {output.path, info}) {
      if (!IsSamePlace(made, other)) continue;
      throw InputError(fmt::format(
          "{}: the rules would replace a file that the run needs; choose another name", made.string()));
    }
  }
}

}  // namespace

void CheckRequest(const TransactionSource& source, const ExtractionRequest& request) {
  if (!IsFraction(request.min_support)) throw InputError("the minimum support must be above 0 and at most 1");
  if (!IsFraction(request.min_confidence))
    throw InputError("the minimum confidence must be above 0 and at most 1");
  const long rows = source.CountRows(request.table);
  // A table of rows numbers them in 16 bits, so rows beyond would be taken for others. Sets number them in
  // 32.
  if (rows > kMostNumberedRows && !source.IsOfSets(request.table)) {
    throw InputError(
        fmt::format("table {} has {} rows, and at most {} can be mined; divide it into several tables",
                    request.table, rows, kMostNumberedRows));
  }
  if (!SqlDialect::IsPlainName(request.table)) {
    throw InputError(
        fmt::format("the table name \"{}\" holds blanks or signs; rename the table with letters, digits "
                    "and underscores only",
                    request.table));
  }
  const fs::path& copy = request.itemset_copy;
  if (copy.empty()) return;
  CheckIsFree(copy, ExistingFile::kRefuse);
  std::error_code error;
  if (copy.has_parent_path() && !fs::is_directory(copy.parent_path(), error)) {
    throw FileError(fmt::format("{}: there is no such folder; make it first", copy.parent_path().string()));
  }
}

std::unique_ptr<NewFile> CopyOf(const fs::path& itemsets, const fs::path& copy) {
  if (copy.empty()) return nullptr;
  auto file = std::make_unique<NewFile>(copy, ExistingFile::kRefuse);
  CopyFile(itemsets, file->temporary(), file->path());
  return file;
}

void TellWhetherFits(const RuleTally& tally, const ExtractionRequest& request, const ExtractionHooks& hooks) {
  const auto most = static_cast<std::uint64_t>(request.most_rules);
  if (tally.total() <= most || !hooks.will_not_fit) return;
  hooks.will_not_fit({tally.total(), request.most_rules, tally.Fitting(most)});
}

ExtractionEnd EndWithoutPairs(const ExtractionReport& report) {
  if (report.rows == 0) return ExtractionEnd::kEmptyTable;
  return report.items == 0 ? ExtractionEnd::kNoKnownTerm : ExtractionEnd::kOnlySingleItems;
}

void StoreRules(const ExtractionHooks& hooks, const std::vector<fs::path>& others, const RulesToStore& rules,
                ExtractionReport& report, Progress& progress) {
  constexpr const char* kTable = "Extracted";
  // Asked only now that there are itemsets to make rules from: nobody is to choose a name for nothing.
  const RulesOutput output = hooks.choose_output();
  CheckOutputNames(output, others);
  report.output = output.path;
  const StageTimer timer;
  NewRulesDatabase made(output.path, output.existing, kTable);
  progress.SetStatus("Generating rules ....");
  std::vector<NewFile*> files;
  made.Fill([&](RulesStore& store) { files = rules.fill(store); });
  made.Commit(rules.info, files, rules.last_step);
  report.rules_seconds = timer.Seconds();
  report.end = report.rules_stored > 0 ? ExtractionEnd::kRules : ExtractionEnd::kNoRules;
  progress.SetStatus("Completed!!");
}

RulesInfo InfoOf(const ExtractionRequest& request, std::uint32_t rows) {
  RulesInfo info;
  info.term_table = request.table;
  info.rows = fmt::format("{}", rows);
  info.min_support = SingleText(request.min_support, request.decimal_sign);
  info.min_confidence = SingleText(request.min_confidence, request.decimal_sign);
  return info;
}

void CheckRulesOutput(const RulesOutput& output, const std::vector<fs::path>& others) {
  CheckOutputNames(output, others);
  NewRulesDatabase::Check(output.path, output.existing);
}

}  // namespace selvane
