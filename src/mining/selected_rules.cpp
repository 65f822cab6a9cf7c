#include "mining/selected_rules.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_map>

#include "base/error.h"
#include "base/text.h"
#include "itemsets/itemset_file.h"
#include "version.h"

namespace selvane {

namespace {

// More than plain generation has: that finds the counts by scans of the file where they do not fit, and for
// the selection there is no such way.
constexpr std::size_t kTreeBudget = std::size_t{2} << 30;  // bytes

std::vector<NodeNumber> ItemsOf(const std::vector<std::string>& names, const ItemHierarchy& hierarchy) {
  std::vector<NodeNumber> items;
  for (const std::string& name : names) {
    const std::vector<NodeNumber> named = hierarchy.ItemsNamed(name, true);
    if (named.empty()) {
      throw InputError(fmt::format(
          "the taxonomy has neither a term nor a position {}; look it up with taxonomy find", name));
    }
    items.insert(items.end(), named.begin(), named.end());
  }
  std::sort(items.begin(), items.end());
  items.erase(std::unique(items.begin(), items.end()), items.end());
  return items;
}

std::string KeyOf(std::vector<std::uint32_t> items) {
  std::sort(items.begin(), items.end());
  return {reinterpret_cast<const char*>(items.data()), items.size() * sizeof(std::uint32_t)};
}

std::vector<std::uint32_t> ItemsOf(const SelectedRule& rule) {
  std::vector<std::uint32_t> items(rule.antecedent.begin(), rule.antecedent.end());
  items.insert(items.end(), rule.consequent.begin(), rule.consequent.end());
  return items;
}

// Where a rule stands among all that plain generation makes: the record of its itemset, then the size of the
// consequent, then the places of its items in the record.
struct Place {
  std::uint32_t record = 0;
  std::vector<std::size_t> consequent;
};

bool operator<(const Place& a, const Place& b) {
  if (a.record != b.record) return a.record < b.record;
  if (a.consequent.size() != b.consequent.size()) return a.consequent.size() < b.consequent.size();
  return a.consequent < b.consequent;
}

// So that a table which holds the first rules only takes those that plain generation would have stored first.
void OrderAsGenerated(std::vector<SelectedRule>& rules, const std::filesystem::path& itemset_file,
                      std::uint32_t itemset_count, Progress& progress) {
  std::unordered_map<std::string, std::vector<std::size_t>> of_itemset;
  for (std::size_t i = 0; i < rules.size(); ++i) of_itemset[KeyOf(ItemsOf(rules[i]))].push_back(i);
  std::vector<Place> places(rules.size());
  ItemsetFile file;
  file.OpenForReading(itemset_file);
  ItemsetRecord record;
  for (std::uint32_t number = 0; number < itemset_count; ++number) {
    file.ReadNext(record);
    if (number % 16384 == 0) progress.Pulse();
    const auto found = of_itemset.find(KeyOf(record.items));
    if (found == of_itemset.end()) continue;
    for (const std::size_t rule : found->second) {
      places[rule].record = number;
      for (const NodeNumber item : rules[rule].consequent) {
        const auto place =
            std::find(record.items.begin(), record.items.end(), static_cast<std::uint32_t>(item));
        places[rule].consequent.push_back(static_cast<std::size_t>(place - record.items.begin()));
      }
    }
  }
  std::vector<std::size_t> order(rules.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::sort(order.begin(), order.end(),
            [&places](std::size_t a, std::size_t b) { return places[a] < places[b]; });
  std::vector<SelectedRule> ordered;
  ordered.reserve(rules.size());
  for (const std::size_t i : order) ordered.push_back(std::move(rules[i]));
  rules = std::move(ordered);
}

}  // namespace

SearchOptions SearchOptionsOf(const RunChoices& choices, float minimum_support, bool generalize,
                              const ItemHierarchy& hierarchy) {
  SearchOptions options{.minimum_support = minimum_support,
                        .generalize = generalize,
                        .distinct_witnesses = choices.distinct_witnesses,
                        .max_size = choices.max_size,
                        .left_out = ItemsOf(choices.left_out, hierarchy)};
  // Where both sides are bound, no itemset with any other item gives a rule or is counted for one.
  if (!choices.antecedent.empty() && !choices.consequent.empty()) {
    options.only = ItemsOf(choices.antecedent, hierarchy);
    const std::vector<NodeNumber> consequent = ItemsOf(choices.consequent, hierarchy);
    options.only.insert(options.only.end(), consequent.begin(), consequent.end());
    std::sort(options.only.begin(), options.only.end());
  }
  if (choices.SelectsRules()) options.keep_share = choices.selection.specific.value_or(1);
  return options;
}

SelectionOptions SelectionOptionsOf(const RunChoices& choices, const ExtractionRequest& request,
                                    const ItemHierarchy& hierarchy) {
  SelectionOptions options = choices.selection;
  options.min_confidence = request.min_confidence;
  options.most_rules = request.most_rules;
  options.antecedent_items = ItemsOf(choices.antecedent, hierarchy);
  options.consequent_items = ItemsOf(choices.consequent, hierarchy);
  return options;
}

Selection SelectRulesOf(const std::filesystem::path& itemset_file, const AprioriSummary& found,
                        const KeptItems& kept, const ItemHierarchy& hierarchy,
                        const SelectionOptions& options, Progress& progress) {
  const std::optional<ItemsetTrie> itemsets =
      ItemsetTrie::Load(itemset_file, found.itemsets_written, kTreeBudget, progress);
  if (!itemsets) {
    throw InputError(fmt::format(
        "{} itemsets are more than rules can be selected from; raise the minimum support, or ask for "
        "fewer items in a rule with --max-size",
        found.itemsets_written));
  }
  const RunItems items(kept.nodes, kept.registry.rows, hierarchy,
                       kept.witnesses ? &*kept.witnesses : nullptr);
  Selection selection = SelectRules(*itemsets, items, found.row_count, options, progress);
  if (options.keep == KeptRules::kFirst) {
    OrderAsGenerated(selection.rules, itemset_file, found.itemsets_written, progress);
  }
  return selection;
}

RunRecord RecordOf(const RunChoices& choices, const ExtractionRequest& request, bool generalize,
                   const RunOutcome& outcome) {
  RunRecord record;
  const auto number = [&record](std::string_view name, const std::optional<double>& value) {
    if (value) record.Set(name, fmt::format("{}", *value));
  };
  record.Set("program", SELVANE_VERSION);
  record.Set("term table", request.table);
  record.Set("rows", fmt::format("{}", outcome.rows));
  record.Set("min-support", SingleText(request.min_support));
  record.Set("min-confidence", SingleText(request.min_confidence));
  record.Set("generalized", generalize ? "yes" : "no");
  record.Set("items", choices.items == ItemKind::kTerms ? "terms" : "positions");
  record.Set("witnesses", choices.distinct_witnesses ? "distinct" : "any");
  if (choices.max_size > 0) record.Set("max-size", fmt::format("{}", choices.max_size));
  for (const std::string& name : choices.antecedent) record.Set("antecedent", name);
  for (const std::string& name : choices.consequent) record.Set("consequent", name);
  for (const std::string& name : choices.left_out) record.Set("leave-out", name);
  number("min-lift", choices.selection.min_lift);
  number("improvement", choices.selection.improvement);
  number("significant", choices.selection.significance);
  if (choices.selection.significance) {
    record.Set("correction", CorrectionName(choices.selection.correction));
    record.Set("tested", fmt::format("{}", outcome.tested));
  }
  number("specific", choices.selection.specific);
  number("interesting", choices.selection.interesting);
  if (choices.selection.shortest) record.Set("shortest", "yes");
  if (choices.selection.keep == KeptRules::kStrongest)
    record.Set("strongest by", InfoOf(choices.selection.by).name);
  for (const StepReport& step : outcome.steps) {
    record.Set(fmt::format("rules after {}", step.step), fmt::format("{}", step.left));
  }
  return record;
}

}  // namespace selvane
