#include "selection/selection.h"

#include <fmt/format.h>

#include <cmath>
#include <limits>

#include "base/error.h"
#include "measures/fisher.h"
#include "selection/passed_rules.h"
#include "selection/rule_candidates.h"
#include "selection/specific_step.h"

namespace selvane {

namespace {

// What the steps that compare rules may hold: some 50 bytes each.
constexpr std::size_t kMostPassed = 20'000'000;

// Collects the rules that pass the tests of single rules.
class Collector {
 public:
  Collector(const RunItems& items, std::uint32_t row_count, const SelectionOptions& options)
      : options_(options), passed_(row_count) {
    if (options.specific) specific_.emplace(items, *options.specific);
    // Nothing that comes later needs the rules that the table will not hold.
    if (options.keep == KeptRules::kStrongest && !options.interesting && !options.shortest)
      room_ = static_cast<std::size_t>(options.most_rules);
  }

  // `greatest` is the logarithm of the greatest p-value that is significant.
  void Visit(const RuleCandidate& candidate, double greatest) {
    if (options_.significance && !(LogFisher(candidate.rule) <= greatest)) return;
    ++significant_;
    if (specific_ && !IsSpecific(candidate.items)) return;
    ++special_;
    side_[0].clear();
    side_[1].clear();
    for (std::size_t i = 0; i < candidate.items.size(); ++i) {
      side_[(candidate.antecedent >> i & 1U) != 0 ? 0 : 1].push_back(candidate.items[i]);
    }
    passed_.Add(side_[0], side_[1], candidate.rule);
    // Twice the room is filled before the weaker half is dropped, so that each rule costs little.
    if (room_ > 0 && passed_.size() >= 2 * room_ + 1024) passed_ = Compacted();
    CheckRoom();
  }

  std::uint64_t significant() const { return significant_; }
  std::uint64_t special() const { return special_; }
  PassedRules& passed() { return passed_; }

 private:
  // The rules of one itemset come one after the other, and the step asks for the itemset only.
  bool IsSpecific(std::span<const std::uint32_t> items) {
    if (!std::equal(items.begin(), items.end(), last_.begin(), last_.end())) {
      last_.assign(items.begin(), items.end());
      last_keeps_ = specific_->Keeps(items);
    }
    return last_keeps_;
  }

  PassedRules Compacted() {
    passed_.KeepStrongest(options_.by, room_);
    PassedRules rest = passed_.Empty();
    for (const PassedRule& rule : passed_.rules()) {
      rest.Add(passed_.Antecedent(rule), passed_.Consequent(rule), passed_.Counts(rule));
    }
    return rest;
  }

  void CheckRoom() const {
    if (passed_.size() <= kMostPassed) return;
    throw InputError(
        fmt::format("more than {} rules are left before they are compared with each other; raise the minimum "
                    "support or confidence, ask for --significant or --improvement, or for fewer items with "
                    "--max-size",
                    kMostPassed));
  }

  const SelectionOptions& options_;
  std::optional<SpecificStep> specific_;
  std::size_t room_ = 0;  // of the strongest rules; 0 for all
  PassedRules passed_;
  std::uint64_t significant_ = 0;
  std::uint64_t special_ = 0;
  std::vector<std::uint32_t> last_;
  bool last_keeps_ = false;
  std::vector<std::uint32_t> side_[2];
};

// The logarithm of the greatest p-value that is significant, after one walk over all candidates; minus
// infinity when none is.
double GreatestSignificant(const ItemsetTrie& itemsets, std::uint32_t row_count,
                           const SelectionOptions& options, std::uint64_t& tested, Progress& progress) {
  SignificanceTally tally(*options.significance);
  ForEachCandidate(
      itemsets, row_count, options,
      [&tally](const RuleCandidate& candidate) { tally.Add(LogFisher(candidate.rule)); }, progress);
  tested = tally.tested();
  return tally.GreatestSignificant(options.correction).value_or(-std::numeric_limits<double>::infinity());
}

std::vector<SelectedRule> RulesOf(const PassedRules& passed) {
  std::vector<SelectedRule> rules;
  rules.reserve(passed.size());
  const auto nodes = [](std::span<const std::uint32_t> side) {
    return std::vector<NodeNumber>(side.begin(), side.end());
  };
  for (const PassedRule& rule : passed.rules()) {
    rules.push_back({nodes(passed.Antecedent(rule)), nodes(passed.Consequent(rule)), passed.Counts(rule)});
  }
  return rules;
}

}  // namespace

bool SelectionOptions::IsAsked() const {
  return !antecedent_items.empty() || !consequent_items.empty() || min_lift || improvement || significance ||
         specific || interesting || shortest || keep != KeptRules::kFirst;
}

Selection SelectRules(const ItemsetTrie& itemsets, const RunItems& items, std::uint32_t row_count,
                      const SelectionOptions& options, Progress& progress) {
  Selection selection;
  progress.SetRange(0, 100);
  progress.SetPosition(0);
  // The logarithm of a p-value of 1, which every rule reaches. Where significance counts there are two walks:
  // the limit follows from the p-values of all candidates, and computing them twice takes no memory for
  // these.
  double greatest = 0;
  if (options.significance) {
    greatest = GreatestSignificant(itemsets, row_count, options, selection.tested, progress);
  }
  Collector collector(items, row_count, options);
  const CandidateCounts counts = ForEachCandidate(
      itemsets, row_count, options,
      [&](const RuleCandidate& candidate) { collector.Visit(candidate, greatest); }, progress);
  selection.steps.push_back({"confidence", counts.confident});
  if (options.min_lift) selection.steps.push_back({"min-lift", counts.lifted});
  if (options.improvement) selection.steps.push_back({"improvement", counts.improving});
  if (options.significance) selection.steps.push_back({"significant", collector.significant()});
  if (options.specific) selection.steps.push_back({"specific", collector.special()});
  PassedRules& passed = collector.passed();
  if (options.interesting) {
    passed.Keep(InterestingRules(passed, items, itemsets, *options.interesting, progress));
    selection.steps.push_back({"interesting", passed.size()});
  }
  if (options.shortest) {
    passed.Keep(ShortestRules(passed, items, progress));
    selection.steps.push_back({"shortest", passed.size()});
  }
  if (options.keep == KeptRules::kStrongest) {
    passed.KeepStrongest(options.by, static_cast<std::size_t>(options.most_rules));
  }
  selection.rules = RulesOf(passed);
  return selection;
}

}  // namespace selvane
