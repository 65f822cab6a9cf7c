#include "itemsets/item_registry.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <numeric>
#include <unordered_map>
#include <utility>

#include "data/database_error.h"
#include "itemsets/least_rows.h"
#include "itemsets/row_places.h"

namespace selvane {

namespace {

// The rows of each column while a table is read: bitsets where rows are few, lists of places otherwise.
class ColumnRows {
 public:
  ColumnRows(std::size_t columns, std::size_t rows) : bits_(columns, rows), counts_(columns, 0) {}
  explicit ColumnRows(std::vector<std::vector<std::uint32_t>> lists) : lists_(std::move(lists)) {}

  void Set(std::size_t column, std::size_t row) {
    bits_.Set(column, row);
    ++counts_[column];
  }
  // At least as many as the column has.
  std::uint64_t MostRows(std::size_t column) const {
    return lists_.empty() ? counts_[column] : lists_[column].size();
  }
  // Calls `visit` with each row of the column.
  template <typename Visit>
  void ForEachRow(std::size_t column, const Visit& visit) const {
    if (!lists_.empty()) {
      for (const std::uint32_t row : lists_[column]) visit(std::size_t{row});
      return;
    }
    for (std::size_t i = 0; i < bits_.words(); ++i) {
      for (RowWord word = bits_[column][i]; word != 0; word &= word - 1) {
        visit(i * 64 + static_cast<std::size_t>(std::countr_zero(word)));
      }
    }
  }
  void AddTo(RowWord* target, std::size_t column) const {
    if (lists_.empty()) {
      const RowWord* const source = bits_[column];
      for (std::size_t i = 0; i < bits_.words(); ++i) target[i] |= source[i];
      return;
    }
    for (const std::uint32_t row : lists_[column]) target[row / 64] |= RowWord{1} << (row % 64);
  }

 private:
  RowBits bits_;
  std::vector<std::uint64_t> counts_;
  std::vector<std::vector<std::uint32_t>> lists_;
};

// The other way round: the columns of each row. Counted first, so that each finds its place.
RowTerms TermsOfRows(const ColumnRows& column_rows, std::size_t columns, std::size_t rows) {
  RowTerms terms;
  terms.begin.assign(rows + 1, 0);
  for (std::size_t column = 0; column < columns; ++column) {
    column_rows.ForEachRow(column, [&terms](std::size_t row) { ++terms.begin[row + 1]; });
  }
  std::partial_sum(terms.begin.begin(), terms.begin.end(), terms.begin.begin());
  terms.columns.resize(terms.begin.back());
  std::vector<std::size_t> next(terms.begin.begin(), terms.begin.end() - 1);
  for (std::size_t column = 0; column < columns; ++column) {
    column_rows.ForEachRow(
        column, [&](std::size_t row) { terms.columns[next[row]++] = static_cast<std::uint32_t>(column); });
  }
  return terms;
}

// Registers nodes and remembers which columns give each of them.
class NodeColumns {
 public:
  NodeColumns(ItemRegistry& registry, const ItemHierarchy& hierarchy, std::span<const std::string> names,
              bool generalize)
      : registry_(registry), hierarchy_(hierarchy), names_(names), generalize_(generalize) {}

  // Takes the columns that a row is the first to have. Nodes that a column gives are registered with that
  // row; later rows add nothing new. All terms of the row come before all ancestors, as asking for items and
  // then for ancestors of each row gives it.
  void AddFirstRow(std::span<const std::size_t> columns) {
    for (const std::size_t column : columns) {
      for (const NodeNumber node : hierarchy_.ItemsOfTerm(names_[column]))
        Add(node, column, registry_.direct);
    }
    if (!generalize_) return;
    for (const std::size_t column : columns) {
      for (const NodeNumber node : hierarchy_.ItemsAboveTerm(names_[column]))
        Add(node, column, registry_.generalized);
    }
  }

  // The rows of a node are those of any of its columns.
  void FillRows(const ColumnRows& column_rows, std::size_t rows, float minimum_support) {
    const std::uint32_t least = std::max(1U, LeastRows(minimum_support, registry_.row_count));
    std::vector<std::size_t> candidates;
    for (std::size_t node = 0; node < columns_.size(); ++node) {
      std::uint64_t most = 0;
      for (const std::size_t column : columns_[node]) most += column_rows.MostRows(column);
      if (most >= least) candidates.push_back(node);
    }
    registry_.rows = RowBits(candidates.size(), rows);
    for (const std::size_t node : candidates) {
      RowWord* const target = registry_.rows[registry_.frequent.size()];
      std::fill_n(target, registry_.rows.words(), RowWord{0});  // of a candidate that was none
      for (const std::size_t column : columns_[node]) column_rows.AddTo(target, column);
      const std::uint32_t count = CountOf({target, registry_.rows.words()});
      if (count < least) continue;
      registry_.frequent.push_back(node);
      registry_.support_counts.push_back(count);
    }
    registry_.rows.Shrink(registry_.frequent.size());
  }

  void FillColumns() {
    for (const std::size_t node : registry_.frequent) {
      std::vector<std::uint32_t>& columns = registry_.columns.emplace_back();
      for (const std::size_t column : columns_[node]) columns.push_back(static_cast<std::uint32_t>(column));
    }
  }

 private:
  static std::uint32_t CountOf(std::span<const RowWord> rows) {
    return std::accumulate(rows.begin(), rows.end(), 0U, [](std::uint32_t sum, RowWord word) {
      return sum + static_cast<std::uint32_t>(std::popcount(word));
    });
  }

  // A node that is a term of one row and an ancestor in another belongs to what it was met as first. That a
  // column may stand twice for a node does no harm; looking for it would take long under nodes near the root.
  void Add(NodeNumber node, std::size_t column, std::vector<NodeNumber>& added) {
    const auto [found, is_new] = places_.emplace(node, registry_.nodes.size());
    if (is_new) {
      registry_.nodes.push_back(node);
      added.push_back(node);
      columns_.emplace_back();
    }
    columns_[found->second].push_back(column);
  }

  ItemRegistry& registry_;
  const ItemHierarchy& hierarchy_;
  std::span<const std::string> names_;
  bool generalize_;
  std::unordered_map<NodeNumber, std::size_t> places_;
  std::vector<std::vector<std::size_t>> columns_;
};

ColumnRows ReadRows(TransactionSource& source, std::string_view table, std::size_t columns,
                    std::size_t records, NodeColumns& nodes, ItemRegistry& registry, Progress& progress) {
  RowPlaces places;
  ColumnRows column_rows(columns, records);
  std::vector<bool> met(columns, false);
  std::vector<std::size_t> new_columns;
  RowValues row;
  for (bool more = source.OpenReader(table, row); more; more = source.NextRow(row)) {
    // Places are given in order of first appearance, so there are never more of them than rows.
    const std::size_t place = places.PlaceOf(row[0]);
    if (row.size() != columns + 1 || place >= records) {
      throw DatabaseError(source.file_name(),
                          fmt::format("table {} does not hold what it says it holds", table));
    }
    if (row[0] == 0) registry.zero_row = place;
    new_columns.clear();
    for (std::size_t j = 1; j < row.size(); ++j) {
      if (row[j] != 1) continue;
      column_rows.Set(j - 1, place);
      if (met[j - 1]) continue;
      met[j - 1] = true;
      new_columns.push_back(j - 1);
    }
    nodes.AddFirstRow(new_columns);
    if (++registry.row_count % 1024 == 0) progress.Pulse();
  }
  return column_rows;
}

// Rows without any item get no place: `rows` is how many have one.
ColumnRows ReadSets(const TransactionSource& source, std::string_view table, std::size_t columns,
                    std::size_t& rows, NodeColumns& nodes, Progress& progress) {
  RowPlaces places;
  std::vector<std::vector<std::uint32_t>> lists(columns);
  std::vector<std::pair<std::uint32_t, std::size_t>> first_rows;  // and the columns
  std::string name;
  for (std::size_t column = 0; column < columns; ++column) {
    std::vector<std::uint32_t>& list = lists[column];
    source.ItemRowIds(table, static_cast<int>(column) + 1, list, name);
    if (!list.empty()) first_rows.emplace_back(list.front(), column);
    for (std::uint32_t& row : list) row = static_cast<std::uint32_t>(places.PlaceOf(row));
    progress.Pulse();
  }
  // As if read row by row.
  std::sort(first_rows.begin(), first_rows.end());
  std::vector<std::size_t> new_columns;
  for (std::size_t i = 0; i < first_rows.size(); ++i) {
    new_columns.push_back(first_rows[i].second);
    if (i + 1 < first_rows.size() && first_rows[i + 1].first == first_rows[i].first) continue;
    nodes.AddFirstRow(new_columns);
    new_columns.clear();
    progress.Pulse();
  }
  rows = places.size();
  return ColumnRows(std::move(lists));
}

}  // namespace

ItemRegistry ReadItems(TransactionSource& source, std::string_view table,
                       std::span<const std::string> item_names, const ItemHierarchy& hierarchy,
                       const ItemReading& reading, Progress& progress) {
  ItemRegistry registry;
  auto rows = static_cast<std::size_t>(source.CountRows(table));
  if (rows == 0) return registry;
  NodeColumns nodes(registry, hierarchy, item_names, reading.generalize);
  const auto fill = [&](const ColumnRows& column_rows) {
    nodes.FillRows(column_rows, rows, reading.minimum_support);
    if (!reading.witnesses) return;
    nodes.FillColumns();
    registry.terms = TermsOfRows(column_rows, item_names.size(), rows);
  };
  if (source.IsOfSets(table)) {
    registry.row_count = static_cast<std::uint32_t>(rows);
    fill(ReadSets(source, table, item_names.size(), rows, nodes, progress));
  } else {
    fill(ReadRows(source, table, item_names.size(), rows, nodes, registry, progress));
  }
  return registry;
}

}  // namespace selvane
