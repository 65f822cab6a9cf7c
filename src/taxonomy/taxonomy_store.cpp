#include "taxonomy/taxonomy_store.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include "base/text.h"
#include "data/database_error.h"
#include "data/recordset.h"
#include "taxonomy/position_code.h"
#include "taxonomy/taxonomy_schema.h"

namespace selvane {

void TaxonomyStore::Create(const std::filesystem::path& path, int son_columns) {
  Database database = Database::Create(path);
  Transaction transaction(database);
  std::vector<Field> fields = NodeFields();
  for (int i = 1; i <= son_columns; ++i) fields.push_back(SonField(i));
  for (const char* table : {"Source", "Taxonomy"}) {
    database.CreateTable(table, fields);
    for (const Field& field : NodeFields()) database.CreateIndex(table, field.name);
  }
  database.CreateQuery("SQLstatement");
  transaction.Commit();
}

TaxonomyStore::TaxonomyStore(const std::filesystem::path& path, OpenMode mode)
    : database_(Database::Open(path, mode)) {
  // Any database opens. Told here, the user hears which file is wrong and not which statement failed.
  for (const char* table : {"Taxonomy", "Source"}) {
    if (database_.HasTable(table)) continue;
    throw DatabaseError(path,
                        fmt::format("this is no taxonomy database, it has no table {}; choose one that was "
                                    "made by loading a taxonomy file",
                                    table));
  }
}

NodeNumber TaxonomyStore::LargestIndex() const {
  if (largest_index_) return *largest_index_;
  NodeNumber largest = 0;
  for (Recordset rows = database_.OpenRecordset("SELECT Index FROM Taxonomy "); !rows.AtEnd();
       rows.MoveNext()) {
    largest = std::max(largest, rows.Int32(0));
  }
  largest_index_ = largest;
  return largest;
}

void TaxonomyStore::Mark(NodeNumber node, bool marked) {
  if (!marked) {
    marked_.erase(node);
  } else if (node >= 1 && node <= LargestIndex()) {
    marked_.insert(node);
  }
}

std::int32_t TaxonomyStore::SpecificityBound() const {
  // No side holds more items than there are nodes, and sizes are stored in 16 bits.
  const long nodes = database_.RecordCount("Source");
  constexpr long kBeyond16Bits = std::numeric_limits<std::int16_t>::max() + 1L;
  return static_cast<std::int32_t>(std::max(nodes + 1, kBeyond16Bits));
}

// Children are kept as terms, which may stand elsewhere too: only the positions right below this one count.
std::vector<TaxonomyNode> TaxonomyStore::Children(NodeNumber node) const {
  const std::string code = working().PositionOf(node);
  std::vector<TaxonomyNode> children;
  const Recordset row =
      database_.OpenRecordset(fmt::format("SELECT * FROM Taxonomy WHERE FatherId='{}'", WithoutQuotes(code)));
  if (row.AtEnd()) return children;
  for (int field = kFirstSonField; field < row.FieldCount(); ++field) {
    const std::string son(row.Text(field));
    if (son.empty()) continue;
    Recordset found = database_.OpenRecordset(
        fmt::format("select Index,FatherId from Taxonomy WHERE Canonical='{}'", WithoutQuotes(son)));
    for (; !found.AtEnd(); found.MoveNext()) {
      if (ParentCode(found.Text(1)) != code) continue;
      children.push_back({found.Int32(0), std::string(found.Text(1)), son});
    }
  }
  return children;
}

std::vector<TaxonomyNode> TaxonomyStore::DistinctChildren(NodeNumber node) const {
  std::vector<TaxonomyNode> children = Children(node);
  std::unordered_set<NodeNumber> seen;
  std::erase_if(children, [&seen](const TaxonomyNode& child) { return !seen.insert(child.number).second; });
  return children;
}

std::vector<std::string> TaxonomyStore::TaxonomiesInUse() const {
  std::vector<std::string> terms;
  // A category that only came as somebody's parent has no name to show.
  for (TaxonomyNode& category : working().Categories()) {
    if (!category.term.empty()) terms.push_back(std::move(category.term));
  }
  return terms;
}

}  // namespace selvane
