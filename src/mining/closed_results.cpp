#include "mining/closed_results.h"

#include <algorithm>

namespace selvane {

void FoundItemsets::OnGenerator(std::span<const std::uint32_t> generator,
                                std::span<const std::uint32_t> closure, std::uint32_t support,
                                bool is_first) {
  generator_.items.assign(generator.begin(), generator.end());
  generator_.support = support;
  ++generator_count_;
  if (is_first) {
    closed_.Add(closure.size(), closure, support);
    ++closed_count_;
    largest_size_ = std::max(largest_size_, closure.size());
  }
  AddPair(closure, support);
  if (generator.size() == closure.size()) return;
  ++exact_count_;
  tally_.Add(1, support);
}

void FoundItemsets::OnLarger(std::span<const std::uint32_t> larger, std::uint32_t support) {
  AddPair(larger, support);
  tally_.Add(static_cast<float>(support) / static_cast<float>(generator_.support), support);
}

void FoundItemsets::AddPair(std::span<const std::uint32_t> larger, std::uint32_t support) {
  pairs_.Add(larger.size(), generator_.items, generator_.support);
  pairs_.Add(larger.size(), larger, support);
  ++pair_count_;
}

void FoundItemsets::ForEachPair(Progress& progress, const VisitPair& visit) {
  progress.SetRange(0, 100);
  progress.SetPosition(0);
  std::uint64_t done = 0;
  bool is_second = false;
  ItemsetRecord generator;
  pairs_.ForEach([&](const ItemsetRecord& record) {
    if (!is_second) {
      generator = record;
    } else {
      visit(generator, record);
      if (++done % 256 == 0) {
        progress.SetPosition(static_cast<int>(done * 100 / pair_count_));
        progress.Pulse();
      }
    }
    is_second = !is_second;
  });
}

ClosedResultFiles::ClosedResultFiles(std::span<const NodeNumber> nodes) : nodes_(nodes) {
  for (std::size_t i = 0; i < kNames.size(); ++i) files_[i].emplace(kNames[i]);
}

void ClosedResultFiles::Write(std::size_t file, const ItemsetRecord& record) {
  numbers_.clear();
  for (const std::uint32_t item : record.items) numbers_.push_back(static_cast<std::uint32_t>(nodes_[item]));
  files_[file]->records.Write(numbers_, record.support);
}

void ClosedResultFiles::AddPair(const ItemsetRecord& generator, const ItemsetRecord& larger) {
  const bool is_closure = generator.support == larger.support;
  if (is_closure) Write(1, generator);
  if (generator.items.size() == larger.items.size()) return;
  const std::size_t rules = is_closure ? 2 : 3;
  for (const std::size_t file : {rules, kNames.size() - 1}) {
    Write(file, generator);
    Write(file, larger);
  }
}

void ClosedResultFiles::Close() {
  for (auto& file : files_) file->records.Close();
}

void ClosedResultFiles::Commit() {
  for (auto& file : files_) file->made.Commit();
}

ClosedRuleStorer::ClosedRuleStorer(const ColumnItems& items, RulesStore& rules, const RuleLine& line)
    : items_(items), rules_(rules), line_(line), transaction_(rules.database()), rows_(items.rows.words()) {}

void ClosedRuleStorer::Store(const ItemsetRecord& generator, const ItemsetRecord& larger) {
  if (stored_ >= kMostRules) return;
  consequent_.clear();
  std::set_difference(larger.items.begin(), larger.items.end(), generator.items.begin(),
                      generator.items.end(), std::back_inserter(consequent_));
  rule_.antecedent = NodesOf(generator.items);
  rule_.consequent = NodesOf(consequent_);
  for (const auto& side : {rule_.antecedent, rule_.consequent}) {
    if (ItemsetToText(side).size() <= std::size_t{kLongestItemsetText}) continue;
    ++too_long_;
    return;
  }
  const auto rows = static_cast<float>(items_.row_count);
  rule_.support = static_cast<float>(larger.support) / rows;
  rule_.confidence = static_cast<float>(larger.support) / static_cast<float>(generator.support);
  rule_.pa = static_cast<float>(generator.support) / rows;
  rule_.pc = static_cast<float>(SupportOf(consequent_)) / rows;
  rule_.aspec = static_cast<std::int32_t>(rule_.antecedent.size());
  rule_.cspec = static_cast<std::int32_t>(rule_.consequent.size());
  rules_.InsertRule(rule_);
  ++stored_;
  if (line_) line_(Rendered(generator.items) + " => " + Rendered(consequent_));
}

std::uint32_t ClosedRuleStorer::SupportOf(std::span<const std::uint32_t> items) {
  std::copy_n(items_.rows[items.front()], rows_.size(), rows_.begin());
  for (const std::uint32_t item : items.subspan(1)) {
    operations_.store_and(rows_.data(), items_.rows[item], rows_.data(), rows_.size());
  }
  return operations_.count_and(rows_.data(), rows_.data(), rows_.size());
}

std::vector<NodeNumber> ClosedRuleStorer::NodesOf(std::span<const std::uint32_t> items) const {
  std::vector<NodeNumber> nodes;
  nodes.reserve(items.size());
  for (const std::uint32_t item : items) nodes.push_back(items_.nodes[item]);
  return nodes;
}

std::string ClosedRuleStorer::Rendered(std::span<const std::uint32_t> items) const {
  std::string text;
  for (const std::uint32_t item : items) text += items_.names[item] + " AND ";
  CutLastAnd(text);
  return text;
}

}  // namespace selvane
