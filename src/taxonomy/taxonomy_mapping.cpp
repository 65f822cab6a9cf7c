// The part of TaxonomyStore that maps rows to nodes and nodes to texts.
#include <algorithm>

#include "taxonomy/position_code.h"
#include "taxonomy/rendering.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

namespace {

// The lists are searched from the front, and their order is what callers see. ItemRegistry gives the same
// lists without the searching; this is what it is compared with.
void RecordNode(NodeNumber node, std::uint32_t row_id, std::vector<NodeNumber>& nodes,
                std::vector<NodeNumber>& added, std::vector<TidList>& tid_lists) {
  const auto found = std::find(nodes.begin(), nodes.end(), node);
  if (found == nodes.end()) {
    nodes.push_back(node);
    added.push_back(node);
    tid_lists.push_back({row_id});
    return;
  }
  TidList& tids = tid_lists[static_cast<std::size_t>(found - nodes.begin())];
  if (std::find(tids.begin(), tids.end(), row_id) == tids.end()) tids.push_back(row_id);
}

}  // namespace

void TaxonomyStore::RecordItems(const RowValues& row, std::span<const std::string> item_names,
                                std::vector<NodeNumber>& nodes, std::vector<NodeNumber>& added,
                                std::vector<TidList>& tid_lists) const {
  for (std::size_t j = 1; j < row.size(); ++j) {
    if (row[j] != 1) continue;
    for (const NodeNumber node : working().NodesOfTerm(item_names[j - 1]))
      RecordNode(node, row[0], nodes, added, tid_lists);
  }
}

void TaxonomyStore::RecordAncestors(const RowValues& row, std::span<const std::string> item_names,
                                    std::vector<NodeNumber>& nodes, std::vector<NodeNumber>& added,
                                    std::vector<TidList>& tid_lists) const {
  for (std::size_t j = 1; j < row.size(); ++j) {
    if (row[j] != 1) continue;
    for (const NodeNumber node : AncestorsOfTerm(item_names[j - 1])) {
      RecordNode(node, row[0], nodes, added, tid_lists);
    }
  }
}

// An ancestor of several of the term's positions comes once for each. Recording it again changes nothing.
std::vector<NodeNumber> TaxonomyStore::AncestorsOfTerm(std::string_view term) const {
  std::vector<NodeNumber> ancestors;
  for (const std::string& position : working().PositionsOfTerm(term)) {
    // A code of several characters without a "." is cut to the empty code, which is looked up like any other.
    for (std::string_view code = position; code.size() > 1;) {
      code = ParentCode(code);
      const std::vector<NodeNumber> found = working().NodesAtPosition(code);
      ancestors.insert(ancestors.end(), found.begin(), found.end());
    }
  }
  return ancestors;
}

void TaxonomyStore::Render(std::span<const NodeNumber> nodes, std::string& text) const {
  for (const NodeNumber node : nodes) {
    if (const std::optional<std::string> term = working().FindTerm(node)) AppendWithAnd(*term, text);
  }
  CutLastAnd(text);
}

}  // namespace selvane
