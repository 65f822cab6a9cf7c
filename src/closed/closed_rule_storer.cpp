#include "closed/closed_rule_storer.h"

#include <algorithm>
#include <iterator>

#include "data/database_error.h"
#include "taxonomy/rendering.h"

namespace selvane {

ClosedRuleStorer::ClosedRuleStorer(const ColumnItems& items, const TaxonomyStore& taxonomy, RuleBatch& batch,
                                   const RuleLine& line, long most_rules)
    : items_(items),
      taxonomy_(taxonomy),
      batch_(batch),
      line_(line),
      most_rules_(most_rules),
      rows_(items.rows.words()),
      rendered_(items.nodes.size()) {
  for (const NodeNumber node : items.nodes)
    item_of_.emplace(node, static_cast<std::uint32_t>(item_of_.size()));
}

void ClosedRuleStorer::Store(const EncodedRecord& generator, const EncodedRecord& larger) {
  if (stored_ >= most_rules_) return;
  // Both ascend by item, which is canonical order; node numbers would not.
  const std::vector<std::uint32_t> antecedent = ItemsOf(generator);
  std::vector<std::uint32_t> consequent;
  std::ranges::set_difference(ItemsOf(larger), antecedent, std::back_inserter(consequent));
  rule_.antecedent = NodesOf(antecedent);
  rule_.consequent = NodesOf(consequent);
  const std::size_t longest =
      std::max(ItemsetToText(rule_.antecedent).size(), ItemsetToText(rule_.consequent).size());
  if (longest > std::size_t{kLongestItemsetText}) return;
  const auto rows = static_cast<float>(items_.row_count);
  rule_.support = static_cast<float>(larger.support_count) / rows;
  rule_.confidence = static_cast<float>(larger.support_count) / static_cast<float>(generator.support_count);
  rule_.pa = static_cast<float>(generator.support_count) / rows;
  rule_.pc = static_cast<float>(SupportOf(consequent)) / rows;
  rule_.aspec = static_cast<std::int32_t>(rule_.antecedent.size());
  rule_.cspec = static_cast<std::int32_t>(rule_.consequent.size());
  batch_.Insert(rule_);
  ++stored_;
  if (line_) line_(Rendered(antecedent) + " => " + Rendered(consequent));
}

// A consequent need be neither closed nor a generator, so its count stands in no file.
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
    if (!code.empty()) taxonomy_.ornex().Render({&code, 1}, text, numbers);
  } catch (const DatabaseError&) {
    numbers.clear();  // a row of another term, whose number is none
  }
  // Without that table; or another term stands first at the position.
  if (numbers != std::vector{items_.nodes[item]}) {
    text.clear();
    AppendWithAnd(items_.names[item], text);
  }
  return text;
}

}  // namespace selvane
