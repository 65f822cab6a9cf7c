#include "taxonomy/taxonomy_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "base/shown_text.h"
#include "base/text.h"
#include "data/database_error.h"
#include "data/recordset.h"
#include "taxonomy/position_code.h"

namespace selvane {

// Work on a code goes by its levels, so one of a damaged file without any bound could take hours.
std::string TaxonomyTable::CodeAt(const Recordset& row, int field) const {
  const std::string_view code = row.Text(field);
  if (code.size() <= kLongestPositionCode) return std::string(code);
  throw DatabaseError(
      database_.path(),
      fmt::format("the table {} holds the position code {} of {} bytes; at most {} are taken. "
                  "Load the taxonomy file again",
                  name_, Shortened(code), code.size(), kLongestPositionCode));
}

// The engine keeps a statement by its text without the values, so each lookup is compiled once. Numbers are
// looked up as the texts that they are stored as.
Recordset TaxonomyTable::Select(std::string_view columns, std::string_view where,
                                std::string_view value) const {
  std::string text;
  text.reserve(columns.size() + name_.size() + where.size() + value.size() + 32);
  // Appended rather than formatted: this is asked for each of a hundred thousand nodes.
  text.append("SELECT ").append(columns).append(" FROM ").append(name_).append(" WHERE ").append(where);
  text.append("='").append(WithoutQuotes(value)).append("'");
  return database_.OpenRecordset(text);
}

std::vector<NodeNumber> TaxonomyTable::Numbers(std::string_view where, std::string_view value) const {
  std::vector<NodeNumber> numbers;
  for (Recordset rows = Select("Index", where, value); !rows.AtEnd(); rows.MoveNext()) {
    numbers.push_back(rows.Int32(0));
  }
  return numbers;
}

std::vector<std::string> TaxonomyTable::Texts(std::string_view column, std::string_view where,
                                              std::string_view value) const {
  std::vector<std::string> texts;
  for (Recordset rows = Select(column, where, value); !rows.AtEnd(); rows.MoveNext()) {
    texts.emplace_back(rows.Text(0));
  }
  return texts;
}

std::optional<TaxonomyNode> TaxonomyTable::FindNode(NodeNumber node) const {
  const Recordset rows = Select("FatherId,Canonical", "Index", fmt::format_int(node).c_str());
  if (rows.AtEnd()) return std::nullopt;
  return TaxonomyNode{node, CodeAt(rows, 0), std::string(rows.Text(1))};
}

std::optional<std::string> TaxonomyTable::FindTerm(NodeNumber node) const {
  const Recordset rows = Select("Canonical", "Index", fmt::format_int(node).c_str());
  return rows.AtEnd() ? std::nullopt : std::optional<std::string>(rows.Text(0));
}

std::string TaxonomyTable::PositionOf(NodeNumber node) const {
  const Recordset rows = Select("FatherId", "Index", fmt::format_int(node).c_str());
  if (rows.AtEnd()) {
    throw DatabaseError(database_.path(),
                        fmt::format("the taxonomy has no node {}; restore it and try again", node));
  }
  return CodeAt(rows, 0);
}

std::vector<NodeNumber> TaxonomyTable::NodesOfTerm(std::string_view term) const {
  return Numbers("Canonical", term);
}

std::vector<std::string> TaxonomyTable::PositionsOfTerm(std::string_view term) const {
  std::vector<std::string> codes;
  for (Recordset rows = Select("FatherId", "Canonical", term); !rows.AtEnd(); rows.MoveNext()) {
    codes.push_back(CodeAt(rows, 0));
  }
  return codes;
}

std::vector<NodeNumber> TaxonomyTable::NodesAtPosition(std::string_view code) const {
  return Numbers("FatherId", code);
}

std::vector<std::string> TaxonomyTable::TermsAtPosition(std::string_view code) const {
  return Texts("Canonical", "FatherId", code);
}

bool TaxonomyTable::HasTerm(std::string_view term) const {
  return !Select("FatherId", "Canonical", term).AtEnd();
}

bool TaxonomyTable::HasPosition(std::string_view code) const {
  return !Select("Index", "FatherId", code).AtEnd();
}

std::optional<std::string> TaxonomyTable::FindPosition(std::string_view named) const {
  for (std::string code : {std::string(named), PositionCode(named)}) {
    if (HasPosition(code)) return code;
  }
  return std::nullopt;
}

long TaxonomyTable::Count() const {
  return database_.RecordCount(name_);
}

void TaxonomyTable::ForEachNode(const VisitNode& visit) const {
  TaxonomyNode node;  // its texts keep their memory from row to row
  Recordset rows = database_.OpenRecordset(fmt::format("select Index,FatherId,Canonical FROM {} ", name_));
  for (; !rows.AtEnd(); rows.MoveNext()) {
    node.number = rows.Int32(0);
    if (rows.Text(1).size() > kLongestPositionCode) CodeAt(rows, 1);  // throws
    node.code = rows.Text(1);
    node.term = rows.Text(2);
    visit(node);
  }
}

void TaxonomyTable::ForEachBelow(std::string_view code, int levels, const VisitNode& visit) const {
  const std::ptrdiff_t end = LevelOf(code) + levels;  // the position itself is the first level
  ForEachNode([&](const TaxonomyNode& node) {
    if (IsAtOrBelow(node.code, code) && (levels == 0 || LevelOf(node.code) < end)) visit(node);
  });
}

std::vector<TaxonomyNode> TaxonomyTable::Categories() const {
  std::vector<TaxonomyNode> categories;
  ForEachNode([&categories](const TaxonomyNode& node) {
    if (IsCategory(node.code)) categories.push_back(node);
  });
  return categories;
}

// A file may repeat the letter of a taxonomy for each of its items, so the text is walked once for each
// length of codes rather than for each node.
NodeNumber TaxonomyTable::LargestNodeNamedIn(std::string_view text) const {
  std::map<std::size_t, TextMap<NodeNumber>> largest_of_code;  // by the length of the code
  ForEachNode([&](const TaxonomyNode& node) {
    if (node.code.size() > text.size()) return;
    NodeNumber& known = largest_of_code[node.code.size()].try_emplace(node.code, 0).first->second;
    known = std::max(known, node.number);
  });
  NodeNumber largest = 0;
  for (const auto& [length, codes] : largest_of_code) {
    for (std::size_t at = 0; at + length <= text.size(); ++at) {
      const auto found = codes.find(text.substr(at, length));
      if (found != codes.end()) largest = std::max(largest, found->second);
    }
  }
  return largest;
}

}  // namespace selvane
