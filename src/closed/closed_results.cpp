#include "closed/closed_results.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <system_error>

#include "base/error.h"
#include "data/database_error.h"

namespace selvane {

FoundItemsets::FoundItemsets(const std::filesystem::path& folder, std::span<const NodeNumber> nodes,
                             std::uint32_t row_count)
    : nodes_(nodes), closed_(folder / "FC_s.dat"), pairs_(folder / "FPC_s.dat"), tally_(row_count) {
  for (const NodeNumber node : nodes)
    text_sizes_.push_back(static_cast<int>(ItemsetToText({&node, 1}).size()));
}

void FoundItemsets::Encode(std::span<const std::uint32_t> items, std::uint32_t support, std::string& bytes) {
  numbers_.clear();
  for (const std::uint32_t item : items) numbers_.push_back(static_cast<std::uint32_t>(nodes_[item]));
  bytes.clear();
  AppendRecord(numbers_, support, bytes);
}

int FoundItemsets::TextSize(std::span<const std::uint32_t> items) const {
  return std::accumulate(items.begin(), items.end(), 0,
                         [this](int sum, std::uint32_t item) { return sum + text_sizes_[item]; });
}

void FoundItemsets::OnGenerator(std::span<const std::uint32_t> generator,
                                std::span<const std::uint32_t> closure, std::uint32_t support,
                                bool is_first) {
  Encode(generator, support, generator_);
  generator_size_ = generator.size();
  generator_support_ = support;
  generator_text_size_ = TextSize(generator);
  ++generator_count_;
  AddPair(closure, support);
  if (generator.size() < closure.size()) ++exact_count_;
  if (!is_first) return;
  closed_.Add(closure.size(), {larger_});
  ++closed_count_;
  largest_size_ = std::max(largest_size_, closure.size());
}

void FoundItemsets::OnLarger(std::span<const std::uint32_t> larger, std::uint32_t support) {
  AddPair(larger, support);
}

void FoundItemsets::AddPair(std::span<const std::uint32_t> larger, std::uint32_t support) {
  Encode(larger, support, larger_);
  pairs_.Add(larger.size(), {generator_, larger_});
  ++pair_count_;
  if (larger.size() == generator_size_) return;
  if (std::max(generator_text_size_, TextSize(larger) - generator_text_size_) > kLongestItemsetText) {
    ++too_long_count_;
  } else {
    tally_.Add(static_cast<float>(support) / static_cast<float>(generator_support_), support);
  }
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
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    std::string reason = "a folder has this name";
    try {
      std::error_code error;
      if (!std::filesystem::is_directory(kNames[i], error)) {
        files_[i].emplace(kNames[i]);
        continue;
      }
    } catch (const FileError& error) {
      reason = error.what();
    }
    std::error_code gone;
    throw FileError(fmt::format(
        "the current folder {} cannot take {}, one of the files that this extraction leaves there: {}; "
        "start the program in another folder",
        std::filesystem::current_path(gone).string(), kNames[i], reason));
  }
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

ClosedRuleStorer::ClosedRuleStorer(const ColumnItems& items, const TaxonomyStore& taxonomy, RulesStore& rules,
                                   const RuleLine& line, long most_rules)
    : items_(items),
      taxonomy_(taxonomy),
      rules_(rules),
      line_(line),
      most_rules_(most_rules),
      transaction_(rules.database()),
      rows_(items.rows.words()),
      rendered_(items.nodes.size()) {
  for (const NodeNumber node : items.nodes)
    item_of_.emplace(node, static_cast<std::uint32_t>(item_of_.size()));
}

void ClosedRuleStorer::Store(const EncodedRecord& generator, const EncodedRecord& larger) {
  if (stored_ >= most_rules_) return;
  const std::vector<std::uint32_t> antecedent = ItemsOf(generator);
  std::vector<std::uint32_t> consequent;
  std::ranges::set_difference(ItemsOf(larger), antecedent, std::back_inserter(consequent));
  rule_.antecedent = NodesOf(antecedent);
  rule_.consequent = NodesOf(consequent);
  const std::size_t longest =
      std::max(ItemsetToText(rule_.antecedent).size(), ItemsetToText(rule_.consequent).size());
  if (longest > std::size_t{kLongestItemsetText}) return;
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

std::string ClosedRuleStorer::Rendered(std::span<const std::uint32_t> items) {
  std::string text;
  for (const std::uint32_t item : items) text += RenderedItem(item);
  CutLastAnd(text);
  return text;
}

const std::string& ClosedRuleStorer::RenderedItem(std::uint32_t item) {
  std::string& text = rendered_[item];
  if (!text.empty()) return text;
  const std::string& code = items_.codes[item];
  std::vector<NodeNumber> numbers;
  try {
    if (!code.empty()) taxonomy_.RenderOrnex({&code, 1}, text, numbers);
  } catch (const DatabaseError&) {
    numbers.clear();  // a row of another term, whose number is none
  }
  // Without that table; or another term stands first at the position.
  if (numbers != std::vector{items_.nodes[item]}) text = items_.names[item] + " AND ";
  return text;
}

}  // namespace selvane
