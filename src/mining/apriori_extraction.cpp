#include "mining/apriori_extraction.h"

#include <optional>

#include "apriori/generalized_apriori.h"
#include "apriori/rule_generator.h"
#include "base/error.h"
#include "mining/extraction_steps.h"
#include "rules/rules_info.h"
#include "taxonomy/missing_terms.h"
#include "taxonomy/node_names.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

std::vector<std::string> MissingTerms(const TransactionSource& source, const TaxonomyStore& taxonomy,
                                      const AprioriRequest& request, Progress& progress) {
  std::vector<std::string> terms;
  source.ListItemFields(request.run.table, terms);
  return FindMissingTerms(taxonomy, terms, progress);
}

AprioriSummary Search(GeneralizedApriori& engine, AprioriReport& report, Progress& progress) {
  progress.SetStatus("Searching for frequent itemsets...");
  AprioriSummary found = engine.Run(progress);
  // Rules made from a file with records missing would be wrong without anybody seeing it.
  if (!found.file_error.empty()) throw FileError(found.file_error);
  report.run.rows = found.row_count;
  report.run.items = found.direct_items.size() + found.generalized_items.size();
  report.itemsets = found.itemsets_written;
  report.work = found.work;
  // A number that the information file cannot hold ends the run here, before rules are made rather than
  // after.
  CheckInfoItems(found.direct_items);
  CheckInfoItems(found.generalized_items);
  progress.SetStatus("Completed!!");
  progress.SetPosition(100);
  return found;
}

// The information file of the run; what was restored is in the taxonomy by then.
RulesInfo InfoOf(const AprioriRequest& request, const TaxonomyStore& taxonomy, const AprioriSummary& found) {
  RulesInfo info = InfoOf(request.run, found.row_count);
  if (request.generalize) info.taxonomies = taxonomy.TaxonomiesInUse();
  info.first_map = MapOfItems(found.direct_items);
  info.second_map = MapOfItems(found.generalized_items);
  return info;
}

std::vector<NewFile*> FilesOf(const std::unique_ptr<NewFile>& copy) {
  return copy ? std::vector{copy.get()} : std::vector<NewFile*>();
}

// How many of them the table takes, in their order.
long StoreSelected(const Selection& selection, std::uint32_t row_count, const AprioriRequest& request,
                   const TaxonomyStore& taxonomy, const RuleLine& line, RulesStore& store,
                   Progress& progress) {
  NodeNames names(taxonomy);
  const auto rows = static_cast<float>(row_count);
  long stored = 0;
  progress.SetRange(0, static_cast<int>(selection.rules.size()));
  progress.SetPosition(0);
  store.InsertRules([&](RuleBatch& batch) {
    for (const SelectedRule& selected : selection.rules) {
      if (stored >= request.run.most_rules) return;
      Rule rule;
      rule.antecedent = selected.antecedent;
      rule.consequent = selected.consequent;
      // In 32-bit floats all along, as plain generation divides: the same rule must have the same figures
      // whichever way it was made.
      rule.support = static_cast<float>(selected.counts.both) / rows;
      rule.confidence =
          static_cast<float>(selected.counts.both) / static_cast<float>(selected.counts.antecedent);
      rule.pa = static_cast<float>(selected.counts.antecedent) / rows;
      rule.pc = static_cast<float>(selected.counts.consequent) / rows;
      rule.aspec = static_cast<std::int32_t>(rule.antecedent.size());
      rule.cspec = static_cast<std::int32_t>(rule.consequent.size());
      batch.Insert(rule);
      if (++stored % 256 == 0) {
        progress.SetPosition(static_cast<int>(stored));
        progress.Pulse();
      }
      if (line) line(names.Rendered(rule.antecedent) + " => " + names.Rendered(rule.consequent));
    }
  });
  return stored;
}

// What the rules of a run are made of, in either of two ways: all that reach the confidence, or those that
// pass the steps that were asked for.
struct RuleStage {
  const AprioriRequest& request;
  const TaxonomyStore& taxonomy;
  const ItemHierarchy& hierarchy;
  const KeptItems& kept;
  const AprioriSummary& found;
  const fs::path& itemset_file;
  const ExtractionHooks& hooks;
  Progress& progress;

  void Generate(RulesStore& rules, AprioriReport& report) const {
    RuleGenerator generator(request.run.min_confidence, taxonomy, found.row_count,
                            {.itemset_file = itemset_file,
                             .itemset_count = found.itemsets_written,
                             .most_rules = request.run.most_rules});
    const RuleTally tally = generator.Tally(progress);
    report.run.rules_found = tally.total();
    TellWhetherFits(tally, request.run, hooks);
    report.run.rules_stored = generator.Generate(rules, hooks.rule_line, progress);
  }

  void Select(RulesStore& rules, AprioriReport& report) const {
    Selection selection =
        SelectRulesOf(itemset_file, found, kept, hierarchy,
                      SelectionOptionsOf(request.choices, request.run, hierarchy), progress);
    report.run.rules_found = selection.rules.size();
    report.run.rules_stored =
        StoreSelected(selection, found.row_count, request, taxonomy, hooks.rule_line, rules, progress);
    report.steps = std::move(selection.steps);
    report.tested = selection.tested;
  }
};

}  // namespace

AprioriReport ExtractRules(TransactionSource& source, TaxonomyStore& taxonomy, ItemsetFileHold& hold,
                           const AprioriRequest& request, const ExtractionHooks& hooks, Progress& progress) {
  const PulseScope source_pulse = source.PulseDuring(progress);
  const PulseScope taxonomy_pulse = taxonomy.PulseDuring(progress);
  CheckRequest(source, request.run);
  AprioriReport report;
  const StageTimer check_timer;
  // What was brought back stays only when the run ends well; else it is undone when this goes.
  std::optional<RestoredTerms> restored;
  const std::vector<std::string> missing = MissingTerms(source, taxonomy, request, progress);
  if (!missing.empty()) restored.emplace(taxonomy, missing, progress);
  const auto keep_restored = [&restored, &hooks] {
    if (restored) restored->Keep(hooks.restored);
  };
  report.run.check_seconds = check_timer.Seconds();

  const StageTimer search_timer;
  // Made after the restoring, so that it knows the nodes that have come back.
  const ItemHierarchy hierarchy(taxonomy, request.choices.items);
  GeneralizedApriori engine(
      source, request.run.table, taxonomy, hierarchy,
      SearchOptionsOf(request.choices, request.run.min_support, request.generalize, hierarchy), hold.path());
  const AprioriSummary found = Search(engine, report, progress);
  report.run.search_seconds = search_timer.Seconds();
  const std::unique_ptr<NewFile> copy = CopyOf(hold.path(), request.run.itemset_copy);
  // Without pairs there are no rules, and no database is made. It is no failure: the copy is left, and so is
  // what was restored.
  if (found.itemsets_written == found.single_items) {
    CommitTogether(FilesOf(copy), keep_restored);
    hold.Remove();
    report.run.end = EndWithoutPairs(report.run);
    return report;
  }

  const std::vector<fs::path> others = {source.file_name(), taxonomy.path(), request.run.itemset_copy};
  const RuleStage stage = {request, taxonomy, hierarchy, engine.kept(), found, hold.path(), hooks, progress};
  const auto fill = [&](RulesStore& rules) {
    request.choices.SelectsRules() ? stage.Select(rules, report) : stage.Generate(rules, report);
    rules.NoteRun(rules.target_table(),
                  RecordOf(request.choices, request.run, request.generalize,
                           {.rows = found.row_count, .steps = report.steps, .tested = report.tested}));
    return FilesOf(copy);
  };
  StoreRules(hooks, others,
             {.info = InfoOf(request, taxonomy, found), .fill = fill, .last_step = keep_restored}, report.run,
             progress);
  hold.Remove();
  return report;
}

}  // namespace selvane
