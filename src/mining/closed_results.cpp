#include "mining/closed_results.h"

#include <algorithm>

namespace selvane {

void FoundItemsets::Encode(std::span<const std::uint32_t> items, std::uint32_t support, std::string& bytes) {
  numbers_.clear();
  for (const std::uint32_t item : items) numbers_.push_back(static_cast<std::uint32_t>(nodes_[item]));
  bytes.clear();
  AppendRecord(numbers_, support, bytes);
}

void FoundItemsets::OnGenerator(std::span<const std::uint32_t> generator,
                                std::span<const std::uint32_t> closure, std::uint32_t support,
                                bool is_first) {
  Encode(generator, support, generator_);
  Encode(closure, support, larger_);
  generator_support_ = support;
  ++generator_count_;
  if (is_first) {
    closed_.Add(closure.size(), {larger_});
    ++closed_count_;
    largest_size_ = std::max(largest_size_, closure.size());
  }
  pairs_.Add(closure.size(), {generator_, larger_});
  ++pair_count_;
  if (generator.size() == closure.size()) return;
  ++exact_count_;
  tally_.Add(1, support);
}

void FoundItemsets::OnLarger(std::span<const std::uint32_t> larger, std::uint32_t support) {
  Encode(larger, support, larger_);
  pairs_.Add(larger.size(), {generator_, larger_});
  ++pair_count_;
  tally_.Add(static_cast<float>(support) / static_cast<float>(generator_support_), support);
}

void FoundItemsets::ForEachPair(Progress& progress, const VisitPair& visit) {
  progress.SetRange(0, 100);
  progress.SetPosition(0);
  std::uint64_t done = 0;
  pairs_.ForEachBlock([&](std::string_view records) {
    while (!records.empty()) {
      const EncodedRecord generator = TakeRecord(records);
      visit(generator, TakeRecord(records));
      if (++done % 256 == 0) {
        progress.SetPosition(static_cast<int>(done * 100 / pair_count_));
        progress.Pulse();
      }
    }
  });
  progress.SetPosition(100);
}

ClosedResultFiles::ClosedResultFiles() {
  for (std::size_t i = 0; i < kNames.size(); ++i) files_[i].emplace(kNames[i]);
}

void ClosedResultFiles::AddPair(const EncodedRecord& generator, const EncodedRecord& larger) {
  const bool is_closure = generator.support == larger.support;
  if (is_closure) files_[kGenerators]->records.WriteEncoded(generator.bytes);
  if (generator.size() == larger.size()) return;
  const std::string_view both(generator.bytes.data(), generator.bytes.size() + larger.bytes.size());
  files_[is_closure ? kExact : kApproximate]->records.WriteEncoded(both);
  files_[kAllRules]->records.WriteEncoded(both);
}

void ClosedResultFiles::Close() {
  for (auto& file : files_) file->records.Close();
}

void ClosedResultFiles::Commit() {
  for (auto& file : files_) file->made.Commit();
}

ClosedRuleStorer::ClosedRuleStorer(const ColumnItems& items, RulesStore& rules, const RuleLine& line)
    : items_(items), rules_(rules), line_(line), transaction_(rules.database()), rows_(items.rows.words()) {
  for (const NodeNumber node : items.nodes)
    item_of_.emplace(node, static_cast<std::uint32_t>(item_of_.size()));
}

void ClosedRuleStorer::Store(const EncodedRecord& generator, const EncodedRecord& larger) {
  if (stored_ >= kMostRules) return;
  const std::vector<std::uint32_t> antecedent = ItemsOf(generator);
  std::vector<std::uint32_t> consequent;
  std::ranges::set_difference(ItemsOf(larger), antecedent, std::back_inserter(consequent));
  rule_.antecedent = NodesOf(antecedent);
  rule_.consequent = NodesOf(consequent);
  for (const auto& side : {rule_.antecedent, rule_.consequent}) {
    if (ItemsetToText(side).size() <= std::size_t{kLongestItemsetText}) continue;
    ++too_long_;
    return;
  }
  const auto rows = static_cast<float>(items_.row_count);
  rule_.support = static_cast<float>(larger.support) / rows;
  rule_.confidence = static_cast<float>(larger.support) / static_cast<float>(generator.support);
  rule_.pa = static_cast<float>(generator.support) / rows;
  rule_.pc = static_cast<float>(SupportOf(consequent)) / rows;
  rule_.aspec = static_cast<std::int32_t>(rule_.antecedent.size());
  rule_.cspec = static_cast<std::int32_t>(rule_.consequent.size());
  rules_.InsertRule(rule_);
  ++stored_;
  if (line_) line_(Rendered(antecedent) + " => " + Rendered(consequent));
}

std::uint32_t ClosedRuleStorer::SupportOf(std::span<const std::uint32_t> items) {
  std::copy_n(items_.rows[items.front()], rows_.size(), rows_.begin());
  for (const std::uint32_t item : items.subspan(1)) {
    operations_.store_and(rows_.data(), items_.rows[item], rows_.data(), rows_.size());
  }
  return operations_.count_and(rows_.data(), rows_.data(), rows_.size());
}

std::vector<std::uint32_t> ClosedRuleStorer::ItemsOf(const EncodedRecord& record) const {
  std::vector<std::uint32_t> items;
  record.CopyItems(items);
  for (std::uint32_t& item : items) item = item_of_.at(static_cast<NodeNumber>(item));
  return items;
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
