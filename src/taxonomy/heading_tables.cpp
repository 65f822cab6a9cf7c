#include "taxonomy/heading_tables.h"

#include <string>
#include <vector>

#include "data/recordset.h"

namespace selvane {

namespace {

constexpr const char* kHeadings = "sys_Headings";
constexpr const char* kEntryTerms = "sys_EntryTerms";
constexpr const char* kSupplementary = "sys_Supplementary";
// Real identifiers have ten characters at most; the room is for other vocabularies in the same layout.
constexpr int kIdWidth = 127;

// Makes a table of texts, and of a class where `classed` says so, and opens it for rows.
BulkInsert MakeTable(Database& database, const char* table, std::vector<std::string> names,
                     bool classed = false) {
  std::vector<Field> fields;
  fields.reserve(names.size() + 1);
  for (const std::string& name : names) {
    const bool is_id = name == "Id" || name == "Heading";
    fields.push_back({name, FieldType::kText, is_id ? kIdWidth : static_cast<int>(kHeadingTextWidth)});
  }
  if (classed) fields.push_back({names.emplace_back("Class"), FieldType::kInt16, 0});
  database.CreateTable(table, fields);
  return database.OpenBulkInsert(table, names);
}

}  // namespace

bool HeadingTables::Exist() const {
  return database_.HasTable(kHeadings);
}

void HeadingTables::ForEachHeading(const VisitHeading& visit) const {
  if (!Exist()) return;
  Recordset rows = database_.OpenRecordset("SELECT Id,Term,Name,Class FROM sys_Headings");
  for (; !rows.AtEnd(); rows.MoveNext()) {
    visit({rows.Text(0), rows.Text(1), rows.Text(2), rows.Int32(3)});
  }
}

void HeadingTables::ForEachEntryTerm(const VisitEntryTerm& visit) const {
  if (!database_.HasTable(kEntryTerms)) return;
  Recordset rows = database_.OpenRecordset("SELECT Id,EntryTerm FROM sys_EntryTerms");
  for (; !rows.AtEnd(); rows.MoveNext()) visit(rows.Text(0), rows.Text(1));
}

void HeadingTables::ForEachSupplementary(const VisitSupplementary& visit) const {
  if (!database_.HasTable(kSupplementary)) return;
  Recordset rows = database_.OpenRecordset("SELECT Id,Name,Heading FROM sys_Supplementary");
  for (; !rows.AtEnd(); rows.MoveNext()) visit(rows.Text(0), rows.Text(1), rows.Text(2));
}

HeadingWriter::HeadingWriter(Database& database)
    : headings_(MakeTable(database, kHeadings, {"Id", "Term", "Name"}, true)),
      entry_terms_(MakeTable(database, kEntryTerms, {"Id", "EntryTerm"})),
      supplementary_(MakeTable(database, kSupplementary, {"Id", "Name", "Heading"})) {}

void HeadingWriter::AddHeading(const HeadingRow& heading) {
  headings_.Set(0, heading.id);
  headings_.Set(1, heading.term);
  headings_.Set(2, heading.name);
  headings_.Set(3, std::int64_t{heading.descriptor_class});
  headings_.Insert();
}

void HeadingWriter::AddEntryTerm(std::string_view id, std::string_view entry_term) {
  entry_terms_.Set(0, id);
  entry_terms_.Set(1, entry_term);
  entry_terms_.Insert();
}

void HeadingWriter::AddSupplementary(std::string_view id, std::string_view name,
                                     std::string_view heading_id) {
  supplementary_.Set(0, id);
  supplementary_.Set(1, name);
  supplementary_.Set(2, heading_id);
  supplementary_.Insert();
}

}  // namespace selvane
