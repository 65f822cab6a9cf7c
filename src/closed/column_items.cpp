#include "closed/column_items.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <unordered_map>

#include "base/text.h"
#include "data/database_error.h"
#include "itemsets/least_rows.h"
#include "itemsets/row_places.h"
#include "rules/rules_info.h"

namespace selvane {

namespace {

struct NamedNode {
  NodeNumber node;
  std::string name;
  std::string code;
};

// Finds the node of a term.
class NodeFinder {
 public:
  explicit NodeFinder(const TaxonomyStore& taxonomy)
      : taxonomy_(taxonomy), has_ornex_(taxonomy.ornex().Exists()) {
    // Other programs make the table, so it may have no index: it is read once.
    if (!has_ornex_) return;
    taxonomy.ornex().ForEachRow([this](const std::string& number, std::string code, std::string term) {
      ornex_.try_emplace(std::move(term), OrnexNode{number, std::move(code)});
    });
  }

  std::optional<NamedNode> Find(const std::string& column) const {
    const std::string term = WithoutQuotes(column);
    if (has_ornex_) return FindOrnex(term);
    const std::vector<NodeNumber> nodes = taxonomy_.working().NodesOfTerm(term);
    if (nodes.empty()) return std::nullopt;
    return NamedNode{nodes.front(), taxonomy_.working().FindTerm(nodes.front()).value_or(""), {}};
  }
  bool IsRenumbered(const NamedNode& item) const {
    return has_ornex_ && taxonomy_.working().FindTerm(item.node).value_or("") != item.name;
  }

 private:
  struct OrnexNode {
    std::string number;
    std::string code;
  };

  std::optional<NamedNode> FindOrnex(const std::string& term) const {
    const auto found = ornex_.find(term);
    if (found == ornex_.end()) return std::nullopt;
    const std::optional<double> number = NumberOf(found->second.number);  // it may be a column of any type
    if (!number || *number != std::floor(*number) || *number < 0 || *number >= kMostItems) {
      throw DatabaseError(
          taxonomy_.path(),
          fmt::format("the table TaxonomyOrnex gives \"{}\" the Index \"{}\"; it must be a number "
                      "of 0..{}: correct the table, or drop it to use Taxonomy instead",
                      term, found->second.number, kMostItems - 1));
    }
    return NamedNode{static_cast<NodeNumber>(*number), term, found->second.code};
  }

  const TaxonomyStore& taxonomy_;
  bool has_ornex_;
  TextMap<OrnexNode> ornex_;  // the first row of each term
};

// Items with the places of their rows, in the order of the columns.
class ItemCollector {
 public:
  // Two columns of one node are one item: returns false for the second. Bits of a set are set, so it does not
  // matter that rows of both stand twice.
  bool Add(NamedNode item, const std::vector<std::uint32_t>& ids) {
    const auto [found, is_new] = of_node_.emplace(item.node, rows_.size());
    if (is_new) {
      items_.push_back(std::move(item));
      rows_.emplace_back();
    }
    std::vector<std::uint32_t>& rows = rows_[found->second];
    for (const std::uint32_t id : ids) rows.push_back(static_cast<std::uint32_t>(places_.PlaceOf(id)));
    return is_new;
  }

  // Rows that two columns of one item share stand twice, so an item may have fewer than it seems.
  void MoveTo(ColumnItems& result, std::uint32_t least_rows) {
    for (const NamedNode& item : items_) result.in_column_order.push_back(item.node);
    result.met = items_.size();
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < items_.size(); ++i) {
      if (rows_[i].size() >= least_rows) order.push_back(i);
    }
    // Stable, so that of two nodes with one name the earlier column comes first.
    std::stable_sort(order.begin(), order.end(),
                     [this](std::size_t a, std::size_t b) { return items_[a].name < items_[b].name; });
    result.rows = RowBits(order.size(), places_.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
      result.nodes.push_back(items_[order[i]].node);
      result.names.push_back(std::move(items_[order[i]].name));
      result.codes.push_back(std::move(items_[order[i]].code));
      for (const std::uint32_t row : rows_[order[i]]) result.rows.Set(i, row);
    }
  }

 private:
  RowPlaces places_;
  std::vector<NamedNode> items_;
  std::vector<std::vector<std::uint32_t>> rows_;
  std::unordered_map<NodeNumber, std::size_t> of_node_;
};

}  // namespace

ColumnItems ReadColumnItems(const TransactionSource& source, std::string_view table,
                            const TaxonomyStore& taxonomy, float minimum_support, Progress& progress) {
  ColumnItems result;
  result.row_count = static_cast<std::uint32_t>(source.CountRows(table));
  std::vector<std::string> columns;
  source.ListItemFields(table, columns);
  progress.SetRange(0, static_cast<int>(columns.size()));
  progress.SetPosition(0);
  const NodeFinder finder(taxonomy);
  ItemCollector collector;
  std::vector<std::uint32_t> ids;
  std::string name;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (std::optional<NamedNode> item = finder.Find(columns[i])) {
      if (finder.IsRenumbered(*item)) result.renumbered.push_back(item->name);
      source.ItemRowIds(table, static_cast<int>(i) + 1, ids, name);
      if (!ids.empty() && !collector.Add(std::move(*item), ids)) result.joined_columns.push_back(columns[i]);
    } else {
      result.unknown_columns.push_back(columns[i]);
    }
    progress.SetPosition(static_cast<int>(i) + 1);
    progress.Pulse();
  }
  collector.MoveTo(result, LeastRows(minimum_support, result.row_count));
  return result;
}

}  // namespace selvane
