// The part of TaxonomyStore that fills `Taxonomy` from `Source`.
#include <fmt/format.h>

#include <map>

#include "base/text.h"
#include "data/bulk_insert.h"
#include "data/database_error.h"
#include "data/recordset.h"
#include "data/sql_dialect.h"
#include "taxonomy/taxonomy_schema.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

namespace {

constexpr const char* kSavedQuery = "SQLstatement";

// Copies rows of `Source`, each as one INSERT of its leading fields that are not empty. One statement is kept
// for each number of fields.
class RowCopier {
 public:
  RowCopier(Database& database, const std::vector<Field>& fields) : database_(database) {
    for (const Field& field : fields) names_.push_back(field.name);
  }

  void Copy(const Recordset& row) {
    const int fields = row.FieldCount();
    // What stands behind the first empty value is left out, so a position without a term has no sons in
    // `Taxonomy`, as in every taxonomy database that was made so far.
    int filled = 0;
    while (filled < fields && !row.Text(filled).empty()) ++filled;
    // A row whose first field is empty gives a statement without columns, which the engine refuses.
    auto insert = inserts_.find(filled);
    if (insert == inserts_.end()) {
      const auto leading = std::span(names_).first(static_cast<std::size_t>(filled));
      insert = inserts_.emplace(filled, database_.OpenBulkInsert("Taxonomy", leading)).first;
    }
    for (int i = 0; i < filled; ++i) insert->second.Set(i, row.Text(i));
    insert->second.Insert();
  }

  // The statement that copied this row, as the saved query holds it.
  std::string StatementOf(const Recordset& row) const {
    std::string columns;
    std::string values;
    for (int i = 0; i < row.FieldCount() && !row.Text(i).empty(); ++i) {
      columns += (columns.empty() ? "" : ",") + SqlDialect::NameText(names_[static_cast<std::size_t>(i)]);
      values += (values.empty() ? "" : ",") + SqlDialect::ValueText(row.Text(i));
    }
    return fmt::format("INSERT INTO Taxonomy ({}) values({})", columns, values);
  }

 private:
  Database& database_;
  std::vector<std::string> names_;
  std::map<int, BulkInsert> inserts_;
};

}  // namespace

void TaxonomyStore::Rebuild(Progress& progress) {
  const PulseScope pulse = PulseDuring(progress);
  LargestIndex();
  const auto count = static_cast<std::uint64_t>(database_.RecordCount("Source"));
  if (count == 0) {
    throw DatabaseError(
        database_.path(),
        "the table Source is empty, so there is nothing to restore, and Taxonomy was left as it "
        "is; load the taxonomy file again");
  }
  HundredthSteps steps(progress, count);
  Transaction transaction(database_);
  // Making the indexes afterwards is faster than keeping them up to date row by row.
  database_.DropIndexes("Taxonomy");
  database_.Execute("DELETE * FROM Taxonomy");
  {
    RowCopier copier(database_, database_.Fields("Source"));
    Recordset rows = database_.OpenRecordset("SELECT * FROM Source ");
    for (std::uint64_t copied = 1; !rows.AtEnd(); ++copied) {
      copier.Copy(rows);
      if (copied == count) SetInsertQuery(copier.StatementOf(rows));
      rows.MoveNext();
      steps.Reached(copied);
    }
  }
  for (const Field& field : NodeFields()) database_.CreateIndex("Taxonomy", field.name);
  transaction.Commit();
}

void TaxonomyStore::CopyWholeSource(Progress& progress) {
  const PulseScope pulse = PulseDuring(progress);
  LargestIndex();
  HundredthSteps steps(progress, 1);
  Transaction transaction(database_);
  database_.Execute("DELETE * FROM Taxonomy");
  progress.Pulse();
  database_.CopyRows("Source", "Taxonomy");
  const RowCopier copier(database_, database_.Fields("Source"));
  const Recordset last = database_.OpenRecordset("SELECT * FROM Source ORDER BY rowid DESC LIMIT 1");
  if (!last.AtEnd()) SetInsertQuery(copier.StatementOf(last));
  transaction.Commit();
  steps.Reached(1);
}

void TaxonomyStore::SetInsertQuery(std::string_view statement) {
  if (database_.HasQuery(kSavedQuery)) database_.SetQuery(kSavedQuery, statement);
}

void TaxonomyStore::RestoreTerm(std::string_view term) {
  LargestIndex();
  const std::vector<std::string> codes = source().PositionsOfTerm(term);
  std::vector<std::string> names;
  for (const Field& field : database_.Fields("Source")) names.push_back(field.name);
  BulkInsert insert = database_.OpenBulkInsert("Taxonomy", names);
  for (const std::string& code : codes) {
    // What is still there goes and comes again, so that nothing is there twice and all stands in one order.
    const std::string begins = "FatherId Like " + SqlDialect::BeginningText(code);
    database_.Execute("DELETE * FROM Taxonomy WHERE " + begins);
    // In the order of the table: mining registers nodes in the order of their rows.
    Recordset rows = database_.OpenRecordset("SELECT * FROM Source WHERE " + begins + " ORDER BY rowid");
    for (; !rows.AtEnd(); rows.MoveNext()) {
      for (int i = 0; i < rows.FieldCount(); ++i) insert.Set(i, rows.Text(i));
      insert.Insert();
    }
  }
}

}  // namespace selvane
