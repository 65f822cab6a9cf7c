#include "itemsets/item_registry.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <unordered_map>

#include "data/database_error.h"
#include "itemsets/row_places.h"

namespace selvane {

namespace {

// Registers nodes and remembers which columns give each of them.
class NodeColumns {
 public:
  explicit NodeColumns(ItemRegistry& registry) : registry_(registry) {}

  // A node that is a term of one row and an ancestor in another belongs to what it was met as first.
  void Add(NodeNumber node, std::size_t column, std::vector<NodeNumber>& added) {
    const auto [found, is_new] = places_.emplace(node, registry_.nodes.size());
    if (is_new) {
      registry_.nodes.push_back(node);
      added.push_back(node);
      columns_.emplace_back();
    }
    std::vector<std::size_t>& columns = columns_[found->second];
    if (std::find(columns.begin(), columns.end(), column) == columns.end()) columns.push_back(column);
  }

  // The rows of a node are those of any of its columns.
  void FillRows(const RowBits& column_rows, std::size_t rows) {
    registry_.rows = RowBits(registry_.nodes.size(), rows);
    for (std::size_t node = 0; node < columns_.size(); ++node) {
      RowWord* const target = registry_.rows[node];
      for (const std::size_t column : columns_[node]) {
        const RowWord* const source = column_rows[column];
        for (std::size_t i = 0; i < registry_.rows.words(); ++i) target[i] |= source[i];
      }
    }
  }

 private:
  ItemRegistry& registry_;
  std::unordered_map<NodeNumber, std::size_t> places_;
  std::vector<std::vector<std::size_t>> columns_;
};

}  // namespace

ItemRegistry ReadItems(TransactionSource& source, std::string_view table,
                       std::span<const std::string> item_names, const TaxonomyStore& taxonomy,
                       bool generalize, Progress& progress) {
  ItemRegistry registry;
  const long records = source.CountRows(table);
  if (records == 0) return registry;
  RowPlaces places;
  NodeColumns nodes(registry);
  RowBits column_rows(item_names.size(), static_cast<std::size_t>(records));
  std::vector<bool> met(item_names.size(), false);
  std::vector<std::size_t> new_columns;
  RowValues row;
  for (bool more = source.OpenReader(table, row); more; more = source.NextRow(row)) {
    // Places are given in order of first appearance, so there are never more of them than rows.
    const std::size_t place = places.PlaceOf(row[0]);
    if (row.size() != item_names.size() + 1 || place >= static_cast<std::size_t>(records)) {
      throw DatabaseError(source.file_name(),
                          fmt::format("table {} does not hold what it says it holds", table));
    }
    if (row[0] == 0) registry.zero_row = place;
    new_columns.clear();
    for (std::size_t j = 1; j < row.size(); ++j) {
      if (row[j] != 1) continue;
      column_rows.Set(j - 1, place);
      if (!met[j - 1]) new_columns.push_back(j - 1);
    }
    // Nodes that a column gives are registered with its first row; later rows add nothing new. All terms of
    // the row come before all ancestors, as asking for items and then for ancestors of each row gives it.
    for (const std::size_t column : new_columns) {
      met[column] = true;
      for (const NodeNumber node : taxonomy.working().NodesOfTerm(item_names[column]))
        nodes.Add(node, column, registry.direct);
    }
    for (const std::size_t column : new_columns) {
      if (!generalize) break;
      for (const NodeNumber node : taxonomy.AncestorsOfTerm(item_names[column])) {
        nodes.Add(node, column, registry.generalized);
      }
    }
    if (++registry.row_count % 1024 == 0) progress.Pulse();
  }
  nodes.FillRows(column_rows, static_cast<std::size_t>(records));
  return registry;
}

}  // namespace selvane
