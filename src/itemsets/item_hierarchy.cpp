#include "itemsets/item_hierarchy.h"

#include <algorithm>

#include "taxonomy/position_code.h"

namespace selvane {

namespace {

void AppendOnce(NodeNumber item, std::vector<NodeNumber>& items) {
  if (std::find(items.begin(), items.end(), item) == items.end()) items.push_back(item);
}

}  // namespace

NodeNumber ItemHierarchy::ItemOfNode(const TaxonomyNode& node) const {
  if (kind_ == ItemKind::kPositions || node.term.empty()) return node.number;
  const auto found = of_term_.find(node.term);
  if (found != of_term_.end()) return found->second;
  const std::vector<NodeNumber> nodes = taxonomy_.working().NodesOfTerm(node.term);
  // A term that holds a quote, which a foreign file may have, is not found by looking for it.
  const NodeNumber item = nodes.empty() ? node.number : nodes.front();
  of_term_.emplace(node.term, item);
  return item;
}

const std::vector<NodeNumber>& ItemHierarchy::ItemsAt(std::string_view code) const {
  const auto found = at_position_.find(code);
  if (found != at_position_.end()) return found->second;
  std::vector<NodeNumber> items;
  for (const NodeNumber number : taxonomy_.working().NodesAtPosition(code)) {
    if (const auto node = taxonomy_.working().FindNode(number)) AppendOnce(ItemOfNode(*node), items);
  }
  return at_position_.emplace(std::string(code), std::move(items)).first->second;
}

void ItemHierarchy::AppendAbove(std::string_view code, std::vector<NodeNumber>& items) const {
  while (code.size() > 1) {
    code = ParentCode(code);
    for (const NodeNumber item : ItemsAt(code)) AppendOnce(item, items);
  }
}

std::vector<NodeNumber> ItemHierarchy::ItemsOfTerm(std::string_view term) const {
  std::vector<NodeNumber> nodes = taxonomy_.working().NodesOfTerm(term);
  if (kind_ == ItemKind::kTerms && nodes.size() > 1) nodes.erase(nodes.begin() + 1, nodes.end());
  return nodes;
}

std::vector<NodeNumber> ItemHierarchy::ItemsAboveTerm(std::string_view term) const {
  if (kind_ == ItemKind::kPositions) return taxonomy_.AncestorsOfTerm(term);
  std::vector<NodeNumber> items;
  for (const std::string& code : taxonomy_.working().PositionsOfTerm(term)) AppendAbove(code, items);
  // A term may stand below itself, at another of its positions.
  for (const NodeNumber own : ItemsOfTerm(term)) std::erase(items, own);
  return items;
}

const std::vector<NodeNumber>& ItemHierarchy::Above(NodeNumber item) const {
  const auto found = above_.find(item);
  if (found != above_.end()) return found->second;
  std::vector<NodeNumber> items;
  if (const auto node = taxonomy_.working().FindNode(item)) {
    const bool is_term = kind_ == ItemKind::kTerms && !node->term.empty();
    if (is_term) {
      items = ItemsAboveTerm(node->term);
    } else {
      AppendAbove(node->code, items);
    }
  }
  std::erase(items, item);
  std::sort(items.begin(), items.end());
  return above_.emplace(item, std::move(items)).first->second;
}

// An item on the way to itself counts as 0, which ends a circle.
std::size_t ItemHierarchy::DepthOf(NodeNumber item) const {
  const auto [found, is_new] = depth_.emplace(item, 0);
  if (!is_new) return found->second;
  std::size_t depth = 0;
  for (const NodeNumber above : Above(item)) depth = std::max(depth, DepthOf(above) + 1);
  depth_[item] = depth;
  return depth;
}

std::vector<NodeNumber> ItemHierarchy::ItemsNamed(std::string_view named, bool with_below) const {
  const TaxonomyTable table = taxonomy_.working();
  std::vector<std::string> codes = table.PositionsOfTerm(named);
  if (codes.empty()) {
    if (std::optional<std::string> code = table.FindPosition(named)) codes.push_back(std::move(*code));
  }
  std::vector<NodeNumber> items;
  for (const std::string& code : codes) {
    const auto add = [&](const TaxonomyNode& node) { items.push_back(ItemOfNode(node)); };
    // A depth of one level is the position itself.
    table.ForEachBelow(code, with_below ? 0 : 1, add);
  }
  std::sort(items.begin(), items.end());
  items.erase(std::unique(items.begin(), items.end()), items.end());
  return items;
}

}  // namespace selvane
