#include "termdb/rows_by_term.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

#include "base/error.h"
#include "base/text.h"
#include "itemsets/distinct_witnesses.h"
#include "taxonomy/position_code.h"

namespace selvane {

namespace {

using RowMask = std::vector<bool>;  // for each row id, whether it is in the set

// The columns of a table, asked for their rows.
class Columns {
 public:
  Columns(const TransactionSource& source, std::string_view table)
      : source_(source), table_(table), rows_(static_cast<std::size_t>(source.CountRows(table))) {
    source.ListItemFields(table, names_);
  }

  RowMask AllRows() const {
    RowMask mask(rows_ + 1, true);
    mask[0] = false;  // rows are numbered from 1 on
    return mask;
  }
  // The rows of any of these columns, which are counted from 1. Ascending columns are read several at a time.
  RowMask RowsOfAny(const std::set<int>& positions) const {
    RowMask mask(rows_ + 1, false);
    std::string name;
    for (const int position : positions) {
      source_.ItemRowIds(table_, position, ids_, name);
      for (const auto id : ids_) {
        if (id < mask.size()) mask[id] = true;
      }
    }
    return mask;
  }
  const std::vector<std::string>& names() const { return names_; }

 private:
  const TransactionSource& source_;
  std::string_view table_;
  std::size_t rows_;
  std::vector<std::string> names_;
  mutable std::vector<std::uint32_t> ids_;
};

void Keep(RowMask& rows, const RowMask& others, bool inside) {
  for (std::size_t row = 0; row < rows.size(); ++row) {
    if (others[row] != inside) rows[row] = false;
  }
}

std::vector<std::uint32_t> RowsOf(const RowMask& mask) {
  std::vector<std::uint32_t> rows;
  for (std::size_t row = 0; row < mask.size(); ++row) {
    if (mask[row]) rows.push_back(static_cast<std::uint32_t>(row));
  }
  return rows;
}

// The column of a term that a user has typed: of that name or, where there is none, of one that differs in
// capitals only.
int FindColumn(const TransactionSource& source, std::string_view table, std::span<const std::string> names,
               std::string_view term) {
  const std::string wanted = WithoutQuotes(term);
  auto found = std::find(names.begin(), names.end(), wanted);
  if (found == names.end()) {
    found = std::find_if(names.begin(), names.end(), [lower = LowerCase(wanted)](const std::string& name) {
      return LowerCase(name) == lower;
    });
  }
  if (found == names.end()) {
    throw InputError(fmt::format("{}: the table {} has no term \"{}\"; terms list shows those that it has",
                                 source.file_name().string(), table, term));
  }
  return static_cast<int>(found - names.begin()) + 1;
}

// For each of these nodes, the columns whose rows hold it.
std::vector<std::set<int>> ColumnsOfNodes(const TaxonomyStore& taxonomy, std::span<const std::string> names,
                                          std::span<const NodeNumber> nodes, bool generalized) {
  std::vector<std::string> codes;
  for (const NodeNumber node : nodes) {
    const auto found = taxonomy.working().FindNode(node);
    if (!found) {
      throw InputError(
          fmt::format("{}: the taxonomy has no item #{} of the rule; restore what was pruned, or "
                      "choose the taxonomy that the rules were made with",
                      taxonomy.path().string(), node));
    }
    codes.push_back(found->code);
  }
  TextMap<int> positions;
  for (std::size_t i = 0; i < names.size(); ++i) positions.emplace(names[i], static_cast<int>(i) + 1);
  std::vector<std::set<int>> columns(nodes.size());
  // One walk over the taxonomy for all items. What is above a position is found as
  // TaxonomyStore::AncestorsOfTerm finds it.
  taxonomy.working().ForEachNode([&](const TaxonomyNode& node) {
    const auto position = positions.find(node.term);
    if (position == positions.end()) return;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      bool stands_for = node.number == nodes[i];
      for (std::string_view code = node.code; generalized && !stands_for && code.size() > 1;) {
        code = ParentCode(code);
        stands_for = code == codes[i];
      }
      if (stands_for) columns[i].insert(position->second);
    }
  });
  return columns;
}

// The same for items that stand for all positions of their terms.
std::vector<std::set<int>> ColumnsOfTermItems(const TaxonomyStore& taxonomy,
                                              std::span<const std::string> names,
                                              std::span<const NodeNumber> items, bool generalized) {
  const ItemHierarchy hierarchy(taxonomy, ItemKind::kTerms);
  std::vector<std::set<int>> columns(items.size());
  for (std::size_t column = 0; column < names.size(); ++column) {
    std::vector<NodeNumber> held = hierarchy.ItemsOfTerm(names[column]);
    if (generalized) {
      for (const NodeNumber above : hierarchy.ItemsAboveTerm(names[column])) held.push_back(above);
    }
    for (std::size_t i = 0; i < items.size(); ++i) {
      if (std::find(held.begin(), held.end(), items[i]) != held.end())
        columns[i].insert(static_cast<int>(column) + 1);
    }
  }
  return columns;
}

// Takes the rows out of the set in which one column would have to stand for several items.
void DropIndistinct(const Columns& columns, std::span<const std::set<int>> items, RowMask& rows) {
  // Ordered by column, as the reader answers neighbouring columns from one walk over the table.
  std::map<int, std::vector<std::uint32_t>> items_of;  // by column
  for (std::uint32_t item = 0; item < items.size(); ++item) {
    for (const int column : items[item]) items_of[column].push_back(item);
  }
  std::map<std::size_t, std::vector<std::vector<std::uint32_t>>> witnesses;  // by row and item
  for (const auto& [column, held] : items_of) {
    const RowMask with = columns.RowsOfAny({column});
    for (std::size_t row = 0; row < rows.size(); ++row) {
      if (!rows[row] || !with[row]) continue;
      auto& of_row = witnesses[row];
      of_row.resize(items.size());
      for (const std::uint32_t item : held) of_row[item].push_back(static_cast<std::uint32_t>(column));
    }
  }
  for (const auto& [row, of_row] : witnesses) {
    if (!HaveDistinctRepresentatives(of_row)) rows[row] = false;
  }
}

RowMask RowsWithItems(const Columns& columns, std::span<const std::set<int>> items, bool distinct) {
  RowMask rows = columns.AllRows();
  for (const std::set<int>& item : items) Keep(rows, columns.RowsOfAny(item), true);
  if (distinct) DropIndistinct(columns, items, rows);
  return rows;
}

}  // namespace

std::vector<std::uint32_t> RowsWithTerms(const TransactionSource& source, std::string_view table,
                                         std::span<const std::string> with,
                                         std::span<const std::string> without) {
  const Columns columns(source, table);
  RowMask rows = columns.AllRows();
  const auto keep = [&](std::span<const std::string> terms, bool inside) {
    for (const std::string& term : terms) {
      Keep(rows, columns.RowsOfAny({FindColumn(source, table, columns.names(), term)}), inside);
    }
  };
  keep(with, true);
  keep(without, false);
  return RowsOf(rows);
}

RuleRows RowsOfRule(const TransactionSource& source, std::string_view table, const TaxonomyStore& taxonomy,
                    std::span<const NodeNumber> antecedent, std::span<const NodeNumber> consequent,
                    const RowCounting& counting) {
  const Columns columns(source, table);
  const auto columns_of = [&](std::span<const NodeNumber> side) {
    return counting.items == ItemKind::kTerms
               ? ColumnsOfTermItems(taxonomy, columns.names(), side, counting.generalized)
               : ColumnsOfNodes(taxonomy, columns.names(), side, counting.generalized);
  };
  std::vector<std::set<int>> items = columns_of(antecedent);
  RowMask exceptions = RowsWithItems(columns, items, counting.distinct_witnesses);
  for (std::set<int>& item : columns_of(consequent)) items.push_back(std::move(item));
  const RowMask holding = RowsWithItems(columns, items, counting.distinct_witnesses);
  Keep(exceptions, holding, false);
  return {RowsOf(holding), RowsOf(exceptions)};
}

}  // namespace selvane
