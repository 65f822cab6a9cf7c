#include "mining/extraction.h"

#include <algorithm>

#include "apriori/generalized_apriori.h"
#include "base/error.h"
#include "mining/extraction_steps.h"
#include "rules/rules_info.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

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

AprioriSummary Search(GeneralizedApriori& engine, const ExtractionRequest& request,
                      const ItemsetFileHold& hold, ExtractionReport& report, Progress& progress) {
  progress.SetStatus("Searching for frequent itemsets...");
  AprioriSummary found = engine.Run(progress);
  // Rules made from a file with records missing would be wrong without anybody seeing it.
  if (!found.file_error.empty()) throw FileError(found.file_error);
  report.rows = found.row_count;
  report.items = found.direct_items.size() + found.generalized_items.size();
  report.itemsets = found.itemsets_written;
  report.work = found.work;
  CheckInfoItems(found.direct_items);
  CheckInfoItems(found.generalized_items);
  progress.SetStatus("Completed!!");
  progress.SetPosition(100);
  KeepCopy(hold.path(), request.itemset_copy);
  return found;
}

}  // namespace

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
  const AprioriSummary found = Search(engine, request, hold, report, progress);
  report.search_seconds = search_timer.Seconds();
  if (found.itemsets_written == found.single_items) {
    hold.Remove();
    report.end = EndWithoutPairs(report);
    return report;
  }

  RulesInfo info = InfoOf(request, found.row_count);
  if (request.generalize) info.taxonomies = taxonomy.TaxonomiesInUse();
  info.first_map = MapOfItems(found.direct_items);
  info.second_map = MapOfItems(found.generalized_items);
  const std::vector<fs::path> others = {source.file_name(), taxonomy.path(), request.itemset_copy};
  StoreRules(hooks, others, info, report, progress, [&](RulesStore& rules) {
    RuleGenerator::Options options{hold.path(), found.itemsets_written};
    options.most_rules = request.most_rules;
    RuleGenerator generator(request.min_confidence, taxonomy, found.row_count, std::move(options));
    const RuleTally tally = generator.Tally(progress);
    report.rules_found = tally.total();
    TellWhetherFits(tally, request, hooks);
    report.rules_stored = generator.Generate(rules, hooks.rule_line, progress);
  });
  hold.Remove();
  return report;
}

}  // namespace selvane
