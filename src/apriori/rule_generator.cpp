#include "apriori/rule_generator.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>

#include "base/error.h"

namespace selvane {

namespace {

// One way to divide an itemset. The spans are valid until the next one.
struct Division {
  std::span<const std::uint32_t> antecedent;
  std::span<const std::uint32_t> consequent;
  std::uint32_t antecedent_count;
  float confidence;
};

// Visits the divisions of itemsets that reach a minimum confidence.
class Divider {
 public:
  explicit Divider(float minimum_confidence) : minimum_confidence_(minimum_confidence) {}

  // level_ holds the consequents of one size that gave a rule, or whose antecedent has no count; bit i stands
  // for the item at place i. Extending by higher places only forms each consequent once, in the order of the
  // itemset.
  template <typename Visit>
  void ForEach(const ItemsetRecord& record, const SupportCounts& counts, const Visit& visit) {
    const std::size_t size = record.items.size();
    if (size < 2) return;
    if (size > 64) throw InputError("the itemset file holds an itemset of more than 64 items; it is damaged");
    level_.clear();
    for (std::size_t i = 0; i < size; ++i) level_.push_back(std::uint64_t{1} << i);
    for (std::size_t consequent_size = 1;; ++consequent_size) {
      std::erase_if(level_,
                    [&](std::uint64_t consequent) { return !Try(record, counts, consequent, visit); });
      if (consequent_size + 1 >= size || level_.empty()) return;
      next_.clear();
      for (const std::uint64_t consequent : level_) {
        for (std::size_t i = static_cast<std::size_t>(std::bit_width(consequent)); i < size; ++i) {
          next_.push_back(consequent | std::uint64_t{1} << i);
        }
      }
      level_.swap(next_);
    }
  }

 private:
  // False when no extension of the consequent can give a rule.
  template <typename Visit>
  bool Try(const ItemsetRecord& record, const SupportCounts& counts, std::uint64_t consequent,
           const Visit& visit) {
    antecedent_.clear();
    consequent_.clear();
    for (std::size_t i = 0; i < record.items.size(); ++i) {
      ((consequent >> i & 1U) != 0 ? consequent_ : antecedent_).push_back(record.items[i]);
    }
    const std::optional<std::uint32_t> count = counts.Find(antecedent_);
    const float confidence =
        count ? static_cast<float>(record.support_count) / static_cast<float>(*count) : 0.0F;
    if (confidence >= minimum_confidence_) {
      visit(Division{antecedent_, consequent_, count.value_or(0), confidence});
      return true;
    }
    return !count;  // a count that is not found says nothing about smaller antecedents
  }

  float minimum_confidence_;
  std::vector<std::uint64_t> level_;  // consequents of one size, a bit for each position
  std::vector<std::uint64_t> next_;
  std::vector<std::uint32_t> antecedent_;
  std::vector<std::uint32_t> consequent_;
};

}  // namespace

RuleGenerator::RuleGenerator(float minimum_confidence, const TaxonomyStore& taxonomy, std::uint32_t row_count,
                             Options options)
    : minimum_confidence_(minimum_confidence),
      row_count_(row_count),
      options_(std::move(options)),
      names_(taxonomy) {}

// Loaded at first use and kept, so that counting the rules and storing them share it.
const ItemsetTrie* RuleGenerator::Trie(Progress& progress) {
  if (!trie_tried_) {
    trie_ = ItemsetTrie::Load(options_.itemset_file, options_.itemset_count, options_.file_budget, progress);
    trie_tried_ = true;
  }
  return trie_ ? &*trie_ : nullptr;
}

void RuleGenerator::ForEach(Progress& progress, const VisitItemset& visit) {
  if (const ItemsetTrie* const trie = Trie(progress)) {
    ForEachItemset(options_.itemset_file, options_.itemset_count, *trie, progress, visit);
  } else {
    ForEachItemsetInBatches(options_.itemset_file, options_.itemset_count, options_.scan_budget, progress,
                            visit);
  }
}

RuleTally RuleGenerator::Tally(Progress& progress) {
  RuleTally tally(row_count_);
  progress.SetRange(0, 100);
  progress.SetPosition(0);
  if (const ItemsetTrie* const trie = Trie(progress)) {
    trie->CountRules(minimum_confidence_, tally, progress);
    return tally;
  }
  Divider divider(minimum_confidence_);
  ForEach(progress, [&](const ItemsetRecord& record, const SupportCounts& counts) {
    divider.ForEach(record, counts,
                    [&](const Division& division) { tally.Add(division.confidence, record.support_count); });
    return true;
  });
  return tally;
}

long RuleGenerator::Generate(RulesStore& rules, const RuleLine& line, Progress& progress) {
  long stored = 0;
  rules.InsertRules([&](RuleBatch& batch) { stored = Generate(batch, line, progress); });
  return stored;
}

long RuleGenerator::Generate(RuleBatch& batch, const RuleLine& line, Progress& progress) {
  progress.SetRange(0, static_cast<int>(options_.itemset_count));
  progress.SetStep(1);
  progress.SetPosition(0);
  const auto rows = static_cast<float>(row_count_);
  Divider divider(minimum_confidence_);
  long stored = 0;
  Rule rule;
  const auto store = [&](const ItemsetRecord& record, const SupportCounts& counts, const Division& division) {
    // The itemset at which the table fills up may have more rules.
    if (stored >= options_.most_rules) return;
    rule.antecedent.assign(division.antecedent.begin(), division.antecedent.end());
    rule.consequent.assign(division.consequent.begin(), division.consequent.end());
    rule.support = static_cast<float>(record.support_count) / rows;
    rule.confidence = division.confidence;
    rule.pa = static_cast<float>(division.antecedent_count) / rows;
    rule.pc = static_cast<float>(counts.Find(division.consequent).value_or(0)) / rows;
    rule.aspec = static_cast<std::int32_t>(rule.antecedent.size());
    rule.cspec = static_cast<std::int32_t>(rule.consequent.size());
    batch.Insert(rule);
    if (++stored % 256 == 0) progress.Pulse();
    if (line) line(names_.Rendered(rule.antecedent) + " => " + names_.Rendered(rule.consequent));
  };
  ForEach(progress, [&](const ItemsetRecord& record, const SupportCounts& counts) {
    progress.StepIt();
    divider.ForEach(record, counts, [&](const Division& division) { store(record, counts, division); });
    return stored < options_.most_rules;
  });
  return stored;
}

}  // namespace selvane
