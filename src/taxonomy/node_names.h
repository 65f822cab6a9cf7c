// Names and codes of nodes, each looked up once.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "taxonomy/taxonomy_store.h"

namespace selvane {

// For one run over many rules. What the taxonomy holds must not change during its life.
class NodeNames {
 public:
  // The taxonomy must outlive it.
  explicit NodeNames(const TaxonomyStore& taxonomy) : taxonomy_(taxonomy) {}

  // Nothing when there is no such node.
  const std::optional<std::string>& FindTerm(NodeNumber node);
  // The position code. Throws DatabaseError when there is no such node.
  const std::string& CodeOf(NodeNumber node);
  // The position codes of all nodes of its term; of a node without a term its own.
  const std::vector<std::string>& AllCodesOf(NodeNumber node);

  // As the store renders them before it cuts the last AND: each term followed by " AND "; nodes that are not
  // there are left out.
  std::string WithAnd(std::span<const NodeNumber> nodes);
  // As TaxonomyStore::Render: the same with the last AND cut so that its blanks stay.
  std::string Rendered(std::span<const NodeNumber> nodes);
  // For people: terms joined by " AND ", a node that is not there by its number, as #17.
  std::string Joined(std::span<const NodeNumber> nodes);

 private:
  const TaxonomyStore& taxonomy_;
  std::unordered_map<NodeNumber, std::optional<std::string>> terms_;
  std::unordered_map<NodeNumber, std::string> codes_;
  std::unordered_map<NodeNumber, std::vector<std::string>> all_codes_;
};

}  // namespace selvane
