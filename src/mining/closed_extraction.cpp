#include "mining/closed_extraction.h"

#include <fmt/format.h>

#include <array>

#include "base/error.h"
#include "data/new_database.h"
#include "mining/closed_itemset_search.h"
#include "mining/closed_results.h"
#include "mining/extraction_steps.h"
#include "mining/generalized_apriori.h"
#include "rules/rules_info.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

void CheckInputs(const std::vector<fs::path>& inputs) {
  for (const char* const made : ClosedResultFiles::kNames) {
    for (const fs::path& input : inputs) {
      if (input.empty() || !IsSamePlace(made, input)) continue;
      throw InputError(
          fmt::format("{}: the run would replace this file; start it in another folder, or rename the file",
                      input.string()));
    }
  }
}

ColumnItems ReadAndCheckItems(const TransactionSource& source, const TaxonomyStore& taxonomy,
                              const std::string& table, ExtractionReport& report, Progress& progress) {
  progress.SetStatus("Checking items presence ...");
  ColumnItems items = ReadColumnItems(source, table, taxonomy, progress);
  CheckInfoItems(items.in_column_order);
  report.rows = items.row_count;
  report.items = items.nodes.size();
  report.closed.unknown_columns = items.unknown_columns;
  report.closed.renumbered = items.renumbered;
  return items;
}

void Search(const ColumnItems& items, const ExtractionRequest& request, FoundItemsets& found,
            ExtractionReport& report, Progress& progress) {
  progress.SetStatus("Searching for closed itemsets...");
  progress.SetRange(0, 100);
  progress.SetPosition(0);
  const std::uint32_t least_rows = std::max(1U, LeastRows(request.min_support, items.row_count));
  ClosedItemsetSearch(items.rows, {least_rows, request.min_confidence, request.covers_only}, found, progress)
      .Run();
  report.closed.closed_itemsets = found.closed_itemsets();
  report.closed.generators = found.generators();
  report.closed.exact_rules = found.exact_rules();
  report.rules_found = found.tally().total();
  progress.SetStatus("Completed!!");
  progress.SetPosition(100);
}

}  // namespace

ExtractionReport ExtractClosedRules(const TransactionSource& source, const TaxonomyStore& taxonomy,
                                    const ItemsetFileHold& hold, const ExtractionRequest& request,
                                    const ExtractionHooks& hooks, Progress& progress) {
  CheckRequest(source, request);
  std::vector<fs::path> others = {source.file_name(), taxonomy.path(), request.itemset_copy};
  CheckInputs(others);
  ClosedResultFiles files;  // made first, so that a folder that takes no files is told of at once
  ExtractionReport report;
  const StageTimer check_timer;
  const ColumnItems items = ReadAndCheckItems(source, taxonomy, request.table, report, progress);
  report.check_seconds = check_timer.Seconds();

  const StageTimer search_timer;
  FoundItemsets found(hold.path().parent_path(), items.nodes, items.row_count);
  Search(items, request, found, report, progress);
  report.search_seconds = search_timer.Seconds();
  if (found.largest_size() < 2) return report;

  const RulesOutput output = hooks.choose_output();
  others.insert(others.end(), ClosedResultFiles::kNames.begin(), ClosedResultFiles::kNames.end());
  CheckRulesOutput(output, others);
  report.output = output.path;
  const StageTimer rules_timer;
  MakeDatabase(output.path, output.existing, [&](const fs::path& temporary) {
    RulesStore rules;
    rules.CreateRulesDatabase(temporary, kExtractedTable);
    rules.SetTargetTable(kExtractedTable);
    progress.SetStatus("Generating rules ....");
    if (found.tally().total() > kMostRules && hooks.will_not_fit) hooks.will_not_fit(found.tally());
    ClosedRuleStorer storer(items, rules, hooks.rule_line);
    found.ForEachBlockOfClosed([&files](std::string_view records) { files.AddClosedItemsets(records); });
    found.ForEachPair(progress, [&](const EncodedRecord& generator, const EncodedRecord& larger) {
      files.AddPair(generator, larger);
      if (generator.size() < larger.size()) storer.Store(generator, larger);
    });
    storer.Finish();
    report.rules_stored = storer.stored();
    report.closed.too_long_rules = storer.too_long();
    rules.Close();
    files.Close();
    KeepCopy(files.closed_itemsets(), request.itemset_copy);
    WriteRulesInfo(items.in_column_order, {}, InformationTexts(request, items.row_count, {}),
                   RulesInfoBasePath(output.path));
    files.Commit();
  });
  report.rules_seconds = rules_timer.Seconds();
  report.end = report.rules_stored > 0 ? ExtractionEnd::kRules : ExtractionEnd::kNoRules;
  progress.SetStatus("Completed!!");
  return report;
}

}  // namespace selvane
