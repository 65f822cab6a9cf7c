#include "taxonomy/taxonomy_store.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <limits>

#include "base/text.h"
#include "data/database_error.h"
#include "data/recordset.h"
#include "taxonomy/position_code.h"

namespace selvane {

namespace {

constexpr int kTextWidth = 127;

NodeNumber NumberAt(const Recordset& rows, int position) {
  return rows.Int32(position);
}

}  // namespace

std::vector<Field> TaxonomyStore::NodeFields() {
  return {{"Index", FieldType::kText, kTextWidth},
          {"FatherId", FieldType::kText, kTextWidth},
          {"Canonical", FieldType::kText, kTextWidth}};
}

Field TaxonomyStore::SonField(int number) {
  return {fmt::format("SON{}", number), FieldType::kText, kTextWidth};
}

std::string_view TaxonomyStore::FieldName(int number) {
  constexpr std::array<std::string_view, 5> kNames = {"Index", "FatherId", "Canonical", "SON1", "IndexOrnex"};
  return number >= 0 && number < 5 ? kNames[static_cast<std::size_t>(number)] : std::string_view();
}

std::string_view TaxonomyStore::TableName(int number) {
  return number == 0 ? "Source" : number == 1 ? "TaxonomyOrnex" : "";
}

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

TaxonomyStore::TaxonomyStore(const std::filesystem::path& path)
    : database_(Database::Open(path, OpenMode::kWritable)) {
  for (const char* table : {"Taxonomy", "Source"}) {
    if (database_.HasTable(table)) continue;
    throw DatabaseError(path,
                        fmt::format("this is no taxonomy database, it has no table {}; choose one that was "
                                    "made by loading a taxonomy file",
                                    table));
  }
  largest_index_ = FindLargestIndex();
  marks_.assign(static_cast<std::size_t>(std::max(largest_index_, 0)), 0);
}

NodeNumber TaxonomyStore::FindLargestIndex() const {
  NodeNumber largest = 0;
  for (Recordset rows = database_.OpenRecordset("SELECT Index FROM Taxonomy "); !rows.AtEnd();
       rows.MoveNext()) {
    largest = std::max(largest, NumberAt(rows, 0));
  }
  return largest;
}

bool TaxonomyStore::IsMarked(NodeNumber node) const {
  return node >= 1 && node <= largest_index_ && marks_[static_cast<std::size_t>(node - 1)] != 0;
}

void TaxonomyStore::Mark(NodeNumber node, bool marked) {
  if (node >= 1 && node <= largest_index_) marks_[static_cast<std::size_t>(node - 1)] = marked ? 1 : 0;
}

std::int32_t TaxonomyStore::SpecificityBound() const {
  // No side holds more items than there are nodes, and sizes are stored in 16 bits.
  const long nodes = database_.RecordCount("Source");
  constexpr long kBeyond16Bits = std::numeric_limits<std::int16_t>::max() + 1L;
  return static_cast<std::int32_t>(std::max(nodes + 1, kBeyond16Bits));
}

Recordset TaxonomyStore::Select(std::string_view sql, std::string_view value) const {
  std::string text(sql);
  text += WithoutQuotes(value);
  text += '\'';
  return database_.OpenRecordset(text);
}

std::vector<NodeNumber> TaxonomyStore::Numbers(std::string_view sql, std::string_view value) const {
  std::vector<NodeNumber> numbers;
  for (Recordset rows = Select(sql, value); !rows.AtEnd(); rows.MoveNext())
    numbers.push_back(NumberAt(rows, 0));
  return numbers;
}

std::vector<std::string> TaxonomyStore::Texts(std::string_view sql, std::string_view value) const {
  std::vector<std::string> texts;
  for (Recordset rows = Select(sql, value); !rows.AtEnd(); rows.MoveNext()) texts.emplace_back(rows.Text(0));
  return texts;
}

std::optional<std::string> TaxonomyStore::FindTerm(NodeNumber node) const {
  const Recordset rows = Select("SELECT Canonical FROM Taxonomy WHERE Index='", fmt::format("{}", node));
  return rows.AtEnd() ? std::nullopt : std::optional<std::string>(rows.Text(0));
}

std::string TaxonomyStore::PositionOf(NodeNumber node) const {
  const Recordset rows = Select("SELECT FatherId FROM Taxonomy WHERE Index='", fmt::format("{}", node));
  if (rows.AtEnd()) {
    throw DatabaseError(database_.path(),
                        fmt::format("the taxonomy has no node {}; restore it and try again", node));
  }
  return std::string(rows.Text(0));
}

std::vector<NodeNumber> TaxonomyStore::NodesOfTerm(std::string_view term) const {
  return Numbers("SELECT Index FROM Taxonomy WHERE Canonical='", term);
}

std::vector<std::string> TaxonomyStore::PositionsOfTerm(std::string_view term) const {
  return Texts("SELECT FatherId FROM Taxonomy WHERE Canonical='", term);
}

std::vector<NodeNumber> TaxonomyStore::NodesAtPosition(std::string_view code) const {
  return Numbers("SELECT Index FROM Taxonomy WHERE FatherId='", code);
}

bool TaxonomyStore::HasTerm(std::string_view term) const {
  return !Select("SELECT FatherId FROM Taxonomy WHERE Canonical='", term).AtEnd();
}

bool TaxonomyStore::HasPosition(std::string_view code) const {
  return !Select("SELECT Index FROM Taxonomy WHERE FatherId='", code).AtEnd();
}

namespace {

void ForEach(Recordset rows, const std::function<void(const TaxonomyStore::Node&)>& visit) {
  TaxonomyStore::Node node;
  for (; !rows.AtEnd(); rows.MoveNext()) {
    node.number = NumberAt(rows, 0);
    node.code = rows.Text(1);
    node.term = rows.Text(2);
    visit(node);
  }
}

}  // namespace

void TaxonomyStore::ForEachNode(const std::function<void(const Node&)>& visit) const {
  ForEach(database_.OpenRecordset("select Index,FatherId,Canonical FROM Taxonomy "), visit);
}

void TaxonomyStore::ForEachSourceNode(const std::function<void(const Node&)>& visit) const {
  ForEach(database_.OpenRecordset("select Index,FatherId,Canonical FROM Source "), visit);
}

std::vector<TaxonomyStore::Node> TaxonomyStore::Children(NodeNumber node) const {
  const std::string code = PositionOf(node);
  std::vector<Node> children;
  const Recordset row = Select("SELECT * FROM Taxonomy WHERE FatherId='", code);
  if (row.AtEnd()) return children;
  for (int field = 3; field < row.FieldCount(); ++field) {
    const std::string son(row.Text(field));
    if (son.empty()) continue;
    Recordset found = Select("select Index,FatherId from Taxonomy WHERE Canonical='", son);
    for (; !found.AtEnd(); found.MoveNext()) {
      if (ParentCode(found.Text(1)) != code) continue;
      children.push_back({NumberAt(found, 0), std::string(found.Text(1)), son});
    }
  }
  return children;
}

std::vector<std::string> TaxonomyStore::TaxonomiesInUse() const {
  std::vector<std::string> names;
  ForEachNode([&names](const Node& node) {
    if (IsCategory(node.code) && !node.term.empty()) names.push_back(node.term);
  });
  return names;
}

TaxonomyStore::Node TaxonomyStore::SourceNode(NodeNumber node) const {
  const Recordset rows =
      Select("SELECT FatherId,Canonical FROM Source WHERE Index='", fmt::format("{}", node));
  if (rows.AtEnd()) return {node, {}, {}};
  return {node, std::string(rows.Text(0)), std::string(rows.Text(1))};
}

bool TaxonomyStore::SourceHasPosition(std::string_view code) const {
  return !Select("SELECT Index FROM Source WHERE FatherId='", code).AtEnd();
}

NodeNumber TaxonomyStore::LargestNodeNamedIn(std::string_view text) const {
  NodeNumber largest = 0;
  Recordset rows = database_.OpenRecordset("SELECT Index,FatherId FROM Source ");
  for (; !rows.AtEnd(); rows.MoveNext()) {
    if (text.find(rows.Text(1)) != std::string_view::npos) largest = std::max(largest, NumberAt(rows, 0));
  }
  return largest;
}

bool TaxonomyStore::IsMissing(std::string_view term) const {
  const std::vector<std::string> codes = PositionsOfTerm(term);
  return codes.empty() || std::any_of(codes.begin(), codes.end(),
                                      [this](const std::string& code) { return !HasPosition(code); });
}

std::vector<std::string> TaxonomyStore::SourceTermsAtPositionsOf(std::string_view term) const {
  std::vector<std::string> terms;
  for (const std::string& code : Texts("SELECT FatherId FROM Source WHERE Canonical='", term)) {
    for (std::string& found : Texts("SELECT Canonical FROM Source WHERE FatherId='", code)) {
      terms.push_back(std::move(found));
    }
  }
  return terms;
}

}  // namespace selvane
