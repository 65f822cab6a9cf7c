#include "mining/extraction.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

#include "base/error.h"
#include "base/text.h"
#include "data/database_error.h"
#include "data/new_database.h"
#include "data/sql_dialect.h"
#include "mining/generalized_apriori.h"
#include "rules/rules_info.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

constexpr const char* kRulesTable = "Extracted";

class StageTimer {
 public:
  double Seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

void CheckRequest(const TransactionSource& source, const ExtractionRequest& request) {
  if (!IsFraction(request.min_support)) throw InputError("the minimum support must be above 0 and at most 1");
  if (!IsFraction(request.min_confidence))
    throw InputError("the minimum confidence must be above 0 and at most 1");
  const long rows = source.CountRows(request.table);
  if (rows > kMostTableRows) {
    throw InputError(
        fmt::format("table {} has {} rows, and at most {} can be mined; divide it into several tables",
                    request.table, rows, kMostTableRows));
  }
  if (!SqlDialect::IsPlainName(request.table)) {
    throw InputError(
        fmt::format("the table name \"{}\" holds blanks or signs; rename the table with letters, digits "
                    "and underscores only",
                    request.table));
  }
  const fs::path& copy = request.itemset_copy;
  if (copy.empty()) return;
  if (fs::exists(fs::symlink_status(copy))) {
    throw FileError(fmt::format("{}: the file is there already and was left as it is; choose another name",
                                copy.string()));
  }
  if (copy.has_parent_path() && !fs::is_directory(copy.parent_path())) {
    throw FileError(fmt::format("{}: there is no such folder; make it first", copy.parent_path().string()));
  }
}

void RestoreMissing(const TransactionSource& source, TaxonomyStore& taxonomy,
                    const ExtractionRequest& request, const ExtractionHooks& hooks, Progress& progress) {
  std::vector<std::string> terms;
  source.ListItemFields(request.table, terms);
  const std::vector<std::string> missing = FindMissingEntries(taxonomy, terms, progress);
  for (const std::string& entry : missing) {
    taxonomy.RestoreEntry(entry);
    if (hooks.restored) hooks.restored(entry);
    progress.Pulse();
  }
}

void KeepCopy(const fs::path& itemsets, const fs::path& copy) {
  if (copy.empty()) return;
  NewFile file(copy, ExistingFile::kRefuse);
  std::error_code error;
  fs::copy_file(itemsets, file.temporary(), error);
  if (error)
    throw FileError(fmt::format("{}: cannot keep the itemset file: {}", copy.string(), error.message()));
  file.Commit();
}

void Search(GeneralizedApriori& engine, const ExtractionRequest& request, const ItemsetFileHold& hold,
            ExtractionReport& report, Progress& progress) {
  progress.SetStatus("Searching for frequent itemsets...");
  engine.Run(progress);
  // Rules made from a file with records missing would be wrong without anybody seeing it.
  if (!engine.file_error().empty()) throw FileError(engine.file_error());
  report.rows = engine.row_count();
  report.items = engine.direct_items().size() + engine.generalized_items().size();
  report.itemsets = engine.itemsets_written();
  report.work = engine.work();
  CheckInfoItems(engine.direct_items());
  CheckInfoItems(engine.generalized_items());
  progress.SetStatus("Completed!!");
  progress.SetPosition(100);
  KeepCopy(hold.path(), request.itemset_copy);
}

// What the information file tells of the run.
std::vector<std::string> InformationTexts(const ExtractionRequest& request, const TaxonomyStore& taxonomy,
                                          std::uint32_t rows) {
  std::vector<std::string> texts = {request.table, fmt::format("{}", rows),
                                    SingleText(request.min_support, request.decimal_sign),
                                    SingleText(request.min_confidence, request.decimal_sign)};
  if (request.generalize) {
    for (std::string& name : taxonomy.TaxonomiesInUse()) texts.push_back(std::move(name));
  }
  return texts;
}

}  // namespace

void CheckRulesOutput(const RulesOutput& output, const std::vector<fs::path>& others) {
  if (output.path.empty())
    throw DatabaseError({}, "no file was named; choose a rules database and try again");
  if (output.existing == ExistingFile::kRefuse && fs::exists(fs::symlink_status(output.path))) {
    throw DatabaseError(output.path,
                        "the file is there already and was left as it is; choose another name, or have it "
                        "replaced");
  }
  if (output.path.has_parent_path() && !fs::is_directory(output.path.parent_path())) {
    throw DatabaseError(output.path, "there is no such folder; make it first, or choose another one");
  }
  fs::path info = RulesInfoBasePath(output.path);
  info += ".dat";
  for (const fs::path& other : others) {
    if (other.empty()) continue;
    for (const fs::path& made : {output.path, info}) {
      if (!IsSameFile(made, other) &&
          fs::absolute(made).lexically_normal() != fs::absolute(other).lexically_normal()) {
        continue;
      }
      throw InputError(fmt::format(
          "{}: the rules would replace a file that the run needs; choose another name", made.string()));
    }
  }
}

std::vector<std::string> FindMissingEntries(const TaxonomyStore& taxonomy, std::span<const std::string> terms,
                                            Progress& progress) {
  progress.SetStatus("Checking items presence ...");
  progress.SetRange(0, static_cast<int>(terms.size()));
  progress.SetPosition(0);
  std::vector<std::string> entries;
  for (std::size_t i = 0; i < terms.size(); ++i) {
    if (taxonomy.IsMissing(terms[i])) {
      for (std::string& entry : taxonomy.SourceEntriesOf(terms[i])) {
        if (std::find(entries.begin(), entries.end(), entry) == entries.end()) {
          entries.insert(entries.begin(), std::move(entry));
        }
      }
    }
    progress.SetPosition(static_cast<int>(i));
    progress.Pulse();
  }
  return entries;
}

ExtractionReport ExtractRules(TransactionSource& source, TaxonomyStore& taxonomy, ItemsetFileHold& hold,
                              const ExtractionRequest& request, const ExtractionHooks& hooks,
                              Progress& progress) {
  CheckRequest(source, request);
  ExtractionReport report;
  const StageTimer check_timer;
  RestoreMissing(source, taxonomy, request, hooks, progress);
  report.check_seconds = check_timer.Seconds();

  const StageTimer search_timer;
  GeneralizedApriori engine(source, request.table, request.min_support, taxonomy, request.generalize,
                            hold.path());
  Search(engine, request, hold, report, progress);
  report.search_seconds = search_timer.Seconds();
  if (engine.itemsets_written() == engine.single_items()) {
    hold.Remove();
    return report;
  }

  const RulesOutput output = hooks.choose_output();
  CheckRulesOutput(output, {source.file_name(), taxonomy.database().path(), request.itemset_copy});
  report.output = output.path;
  const StageTimer rules_timer;
  MakeDatabase(output.path, output.existing, [&](const fs::path& temporary) {
    RulesStore rules;
    rules.CreateRulesDatabase(temporary, kRulesTable);
    rules.SetTargetTable(kRulesTable);
    progress.SetStatus("Generating rules ....");
    RuleGenerator generator(request.min_confidence, taxonomy, engine.row_count(),
                            {hold.path(), engine.itemsets_written()});
    const RuleTally tally = generator.Tally(progress);
    report.rules_found = tally.total();
    if (tally.total() > kMostRules && hooks.will_not_fit) hooks.will_not_fit(tally);
    report.rules_stored = generator.Generate(rules, hooks.rule_line, progress);
    rules.Close();
    WriteRulesInfo(engine.direct_items(), engine.generalized_items(),
                   InformationTexts(request, taxonomy, engine.row_count()), RulesInfoBasePath(output.path));
  });
  report.rules_seconds = rules_timer.Seconds();
  report.end = report.rules_stored > 0 ? ExtractionEnd::kRules : ExtractionEnd::kNoRules;
  progress.SetStatus("Completed!!");
  hold.Remove();
  return report;
}

}  // namespace selvane
