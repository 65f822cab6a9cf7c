// The part of TaxonomyStore that maps rows to nodes and nodes to texts.
#include <fmt/format.h>

#include <algorithm>

#include "base/text.h"
#include "data/database_error.h"
#include "data/recordset.h"
#include "taxonomy/position_code.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

namespace {

constexpr std::string_view kAnd = " AND ";

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
    for (const NodeNumber node : NodesOfTerm(item_names[j - 1]))
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

std::vector<NodeNumber> TaxonomyStore::AncestorsOfTerm(std::string_view term) const {
  std::vector<NodeNumber> ancestors;
  for (const std::string& position : PositionsOfTerm(term)) {
    // A code of several characters without a "." is cut to the empty code, which is looked up like any other.
    for (std::string_view code = position; code.size() > 1;) {
      code = ParentCode(code);
      const std::vector<NodeNumber> found = NodesAtPosition(code);
      ancestors.insert(ancestors.end(), found.begin(), found.end());
    }
  }
  return ancestors;
}

void CutLastAnd(std::string& text) {
  const std::size_t last = text.rfind('A');
  if (last != std::string::npos) text.erase(last, 3);
}

void TaxonomyStore::RenderWithAnd(std::span<const NodeNumber> nodes, std::string& text) const {
  for (const NodeNumber node : nodes) {
    if (const std::optional<std::string> term = FindTerm(node)) text.append(*term).append(kAnd);
  }
}

void TaxonomyStore::Render(std::span<const NodeNumber> nodes, std::string& text) const {
  RenderWithAnd(nodes, text);
  CutLastAnd(text);
}

bool TaxonomyStore::HasOrnex() const {
  return database_.HasTable(TableName(1));
}

void TaxonomyStore::ForEachOrnexNode(const VisitOrnexNode& visit) const {
  std::string columns;
  const std::vector<Field> fields = database_.Fields(TableName(1));
  for (const int number : {0, 1, 2}) {
    const auto is_there = [number](const Field& field) {
      return LowerCase(field.name) == LowerCase(FieldName(number));
    };
    if (std::none_of(fields.begin(), fields.end(), is_there)) {
      throw DatabaseError(database_.path(),
                          fmt::format("the table {} has no column {}; complete it, or drop it to "
                                      "use Taxonomy instead",
                                      TableName(1), FieldName(number)));
    }
    columns += fmt::format("{}{}", number == 0 ? "" : ",", FieldName(number));
  }
  for (Recordset rows = database_.OpenRecordset(fmt::format("SELECT {} FROM {} ", columns, TableName(1)));
       !rows.AtEnd(); rows.MoveNext()) {
    visit(std::string(rows.Text(0)), std::string(rows.Text(1)), std::string(rows.Text(2)));
  }
}

void TaxonomyStore::RenderOrnex(std::span<const std::string> codes, std::string& text,
                                std::vector<NodeNumber>& numbers) const {
  for (const std::string& code : codes) {
    const Recordset rows = Select(fmt::format("SELECT {},{} FROM {} WHERE {}='", FieldName(2), FieldName(0),
                                              TableName(1), FieldName(1)),
                                  code);
    if (rows.AtEnd()) continue;
    text += rows.Text(0);
    text += kAnd;
    numbers.push_back(rows.Int32(1));
  }
}

}  // namespace selvane
