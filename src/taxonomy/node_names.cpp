#include "taxonomy/node_names.h"

#include "taxonomy/rendering.h"

namespace selvane {

const std::optional<std::string>& NodeNames::FindTerm(NodeNumber node) {
  const auto found = terms_.find(node);
  if (found != terms_.end()) return found->second;
  return terms_.emplace(node, taxonomy_.working().FindTerm(node)).first->second;
}

const std::string& NodeNames::CodeOf(NodeNumber node) {
  const auto found = codes_.find(node);
  if (found != codes_.end()) return found->second;
  return codes_.emplace(node, taxonomy_.working().PositionOf(node)).first->second;
}

const std::vector<std::string>& NodeNames::AllCodesOf(NodeNumber node) {
  const auto found = all_codes_.find(node);
  if (found != all_codes_.end()) return found->second;
  const std::string term = FindTerm(node).value_or("");
  std::vector<std::string> codes = {CodeOf(node)};
  if (!term.empty()) codes = taxonomy_.working().PositionsOfTerm(term);
  return all_codes_.emplace(node, std::move(codes)).first->second;
}

std::string NodeNames::WithAnd(std::span<const NodeNumber> nodes) {
  std::string text;
  for (const NodeNumber node : nodes) {
    if (const std::optional<std::string>& term = FindTerm(node)) AppendWithAnd(*term, text);
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
    const std::optional<std::string>& term = FindTerm(node);
    // Without its number a node that has no term could not be told from another, nor chosen.
    text += !term || term->empty() ? "#" + std::to_string(node) : *term;
  }
  return text;
}

}  // namespace selvane
