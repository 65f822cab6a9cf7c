#include "mining/closed_extraction.h"

#include <fmt/format.h>

#include "base/error.h"
#include "closed/closed_itemset_search.h"
#include "closed/closed_result_files.h"
#include "closed/closed_rule_storer.h"
#include "closed/found_itemsets.h"
#include "itemsets/least_rows.h"
#include "mining/extraction_steps.h"
#include "rules/rules_info.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

// None of the files that the run makes may be one that it reads, or the copy.
void CheckNames(const fs::path& terms, const fs::path& taxonomy, const fs::path& copy) {
  for (const char* const made : ClosedResultFiles::kNames) {
    for (const fs::path& input : {terms, taxonomy}) {
      if (!IsSamePlace(made, input)) continue;
      throw InputError(
          fmt::format("{}: the run would replace this file; start it in another folder, or rename the file",
                      input.string()));
    }
    if (copy.empty() || !IsSamePlace(made, copy)) continue;
    throw InputError(fmt::format(
        "{}: the run makes a file of this name anyway; choose another name for the copy", copy.string()));
  }
}

ColumnItems ReadAndCheckItems(const TransactionSource& source, const TaxonomyStore& taxonomy,
                              const ExtractionRequest& request, ClosedReport& report, Progress& progress) {
  progress.SetStatus("Checking items presence ...");
  ColumnItems items = ReadColumnItems(source, request.table, taxonomy, request.min_support, progress);
  CheckInfoItems(items.in_column_order);
  report.run.rows = items.row_count;
  report.run.items = items.met;
  report.unknown_columns = items.unknown_columns;
  report.joined_columns = items.joined_columns;
  report.renumbered = items.renumbered;
  return items;
}

void Search(const ColumnItems& items, const ClosedRequest& request, FoundItemsets& found,
            ClosedReport& report, Progress& progress) {
  progress.SetStatus("Searching for closed itemsets...");
  progress.SetRange(0, 100);
  progress.SetPosition(0);
  // A support so small that it asks for no row must not let sets through that stand in none.
  const std::uint32_t least_rows = std::max(1U, LeastRows(request.run.min_support, items.row_count));
  const ClosedItemsetSearch::Options options{.least_rows = least_rows,
                                             .min_confidence = request.run.min_confidence,
                                             .covers_only = request.covers_only};
  ClosedItemsetSearch(items.rows, options, found, progress).Run();
  report.closed_itemsets = found.closed_itemsets();
  report.generators = found.generators();
  report.exact_rules = found.exact_rules();
  report.too_long_rules = found.too_long_rules();
  report.run.rules_found = found.tally().total() + found.too_long_rules();
  progress.SetStatus("Completed!!");
  progress.SetPosition(100);
}

// Writes the files; `store` receives each rule, unless it is empty.
void WriteFiles(FoundItemsets& found, ClosedResultFiles& files, const FoundItemsets::VisitPair& store,
                Progress& progress) {
  found.ForEachBlockOfClosed([&files](std::string_view records) { files.AddClosedItemsets(records); });
  found.ForEachPair(progress, [&](const EncodedRecord& generator, const EncodedRecord& larger) {
    files.AddPair(generator, larger);
    // A generator that is its own closure is written, but as a rule its right side would be empty.
    if (store && generator.size() < larger.size()) store(generator, larger);
  });
  files.Close();
}

// All that the run leaves beside the rules database.
std::vector<NewFile*> AllOf(ClosedResultFiles& files, NewFile* copy) {
  std::vector<NewFile*> all = files.files();
  if (copy != nullptr) all.push_back(copy);
  return all;
}

}  // namespace

ClosedReport ExtractClosedRules(const TransactionSource& source, const TaxonomyStore& taxonomy,
                                const ItemsetFileHold& hold, const ClosedRequest& request,
                                const ExtractionHooks& hooks, Progress& progress) {
  const PulseScope source_pulse = source.PulseDuring(progress);
  const PulseScope taxonomy_pulse = taxonomy.PulseDuring(progress);
  CheckRequest(source, request.run);
  std::vector<fs::path> others = {source.file_name(), taxonomy.path(), request.run.itemset_copy};
  CheckNames(source.file_name(), taxonomy.path(), request.run.itemset_copy);
  ClosedResultFiles files;  // made first, so that a folder that takes no files is told of at once
  ClosedReport report;
  const StageTimer check_timer;
  const ColumnItems items = ReadAndCheckItems(source, taxonomy, request.run, report, progress);
  report.run.check_seconds = check_timer.Seconds();

  const StageTimer search_timer;
  FoundItemsets found(hold.path().parent_path(), items.nodes, items.row_count);
  Search(items, request, found, report, progress);
  report.run.search_seconds = search_timer.Seconds();
  if (found.largest_size() < 2) {
    WriteFiles(found, files, {}, progress);
    const std::unique_ptr<NewFile> copy = CopyOf(files.closed_itemsets(), request.run.itemset_copy);
    CommitTogether(AllOf(files, copy.get()));
    report.run.end = EndWithoutPairs(report.run);
    return report;
  }

  others.insert(others.end(), ClosedResultFiles::kNames.begin(), ClosedResultFiles::kNames.end());
  RulesInfo info = InfoOf(request.run, items.row_count);
  info.first_map = MapOfItems(items.in_column_order);
  // This search adds no ancestors. The map is there all the same, as every reader of the file takes two.
  info.second_map = MapOfItems({});
  std::unique_ptr<NewFile> copy;
  const auto fill = [&](RulesStore& rules) {
    TellWhetherFits(found.tally(), request.run, hooks);
    rules.InsertRules([&](RuleBatch& batch) {
      ClosedRuleStorer storer(items, taxonomy, batch, hooks.rule_line, request.run.most_rules);
      const auto store = [&storer](const EncodedRecord& generator, const EncodedRecord& larger) {
        storer.Store(generator, larger);
      };
      WriteFiles(found, files, store, progress);
      report.run.rules_stored = storer.stored();
    });
    copy = CopyOf(files.closed_itemsets(), request.run.itemset_copy);
    return AllOf(files, copy.get());
  };
  StoreRules(hooks, others, {.info = std::move(info), .fill = fill}, report.run, progress);
  // Lower thresholds would be the wrong advice here: there are rules, but only in the file of the search.
  if (report.run.end == ExtractionEnd::kNoRules && report.too_long_rules > 0) {
    report.run.end = ExtractionEnd::kOnlyTooLongRules;
  }
  return report;
}

}  // namespace selvane
