#include "taxonomy/node_names.h"

namespace selvane {

const NodeNames::Name& NodeNames::Find(NodeNumber node) {
  const auto found = names_.find(node);
  if (found != names_.end()) return found->second;
  // A node without a name is rendered as " AND ", one that is not there as nothing.
  std::string text;
  taxonomy_.RenderWithAnd(std::span(&node, 1), text);
  const bool is_there = !text.empty();
  if (is_there) text.resize(text.size() - std::string_view(" AND ").size());
  return names_.emplace(node, Name{std::move(text), is_there}).first->second;
}

const std::string& NodeNames::NameOf(NodeNumber node) {
  return Find(node).text;
}

const std::string& NodeNames::CodeOf(NodeNumber node) {
  const auto found = codes_.find(node);
  if (found != codes_.end()) return found->second;
  return codes_.emplace(node, taxonomy_.PositionOf(node)).first->second;
}

std::string NodeNames::WithAnd(std::span<const NodeNumber> nodes) {
  std::string text;
  for (const NodeNumber node : nodes) {
    const Name& name = Find(node);
    if (name.is_there) text.append(name.text).append(" AND ");
  }
  return text;
}

std::string NodeNames::Rendered(std::span<const NodeNumber> nodes) {
  std::string text = WithAnd(nodes);
  CutLastAnd(text);
  return text;
}

std::string NodeNames::Joined(std::span<const NodeNumber> nodes) {
  std::string text;
  for (const NodeNumber node : nodes) {
    if (!text.empty()) text += " AND ";
    const Name& name = Find(node);
    text += name.text.empty() ? "#" + std::to_string(node) : name.text;
  }
  return text;
}

}  // namespace selvane
