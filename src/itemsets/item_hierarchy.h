// What the items of a run are, and which of them stands above which.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/text.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// A run counts positions, each node of the taxonomy for itself, or terms: one item for a term wherever it
// stands, numbered by its first node in row order. A node without a term is an item of its own either way.
enum class ItemKind { kPositions, kTerms };

// Asks the working taxonomy and remembers the answers. The store must outlive it. Throws DatabaseError.
class ItemHierarchy {
 public:
  ItemHierarchy(const TaxonomyStore& taxonomy, ItemKind kind) : taxonomy_(taxonomy), kind_(kind) {}

  ItemKind kind() const { return kind_; }
  // The items that a term of a table stands for.
  std::vector<NodeNumber> ItemsOfTerm(std::string_view term) const;
  // The items above it, in the order in which a run registers them; of positions as often as they are met.
  std::vector<NodeNumber> ItemsAboveTerm(std::string_view term) const;
  // The items strictly above an item, by whole components of position codes: each once, ascending. Valid as
  // long as this lives.
  const std::vector<NodeNumber>& Above(NodeNumber item) const;
  // The longest way up from an item: greater than that of any item above it, unless terms stand above each
  // other in a circle.
  std::size_t DepthOf(NodeNumber item) const;
  // The items of the positions or terms that a user names: by a term, a position code or a tree number, and
  // with all items below when `with_below`. Empty when the taxonomy knows no such name.
  std::vector<NodeNumber> ItemsNamed(std::string_view named, bool with_below) const;

 private:
  NodeNumber ItemOfNode(const TaxonomyNode& node) const;
  // The items at the positions above a position, from the nearest on.
  void AppendAbove(std::string_view code, std::vector<NodeNumber>& items) const;
  const std::vector<NodeNumber>& ItemsAt(std::string_view code) const;

  const TaxonomyStore& taxonomy_;
  ItemKind kind_;
  mutable TextMap<std::vector<NodeNumber>> at_position_;
  mutable TextMap<NodeNumber> of_term_;
  mutable std::unordered_map<NodeNumber, std::vector<NodeNumber>> above_;
  mutable std::unordered_map<NodeNumber, std::size_t> depth_;
};

}  // namespace selvane
