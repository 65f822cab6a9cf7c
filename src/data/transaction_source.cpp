#include "data/transaction_source.h"

#include <fmt/format.h>

#include <new>

#include "data/database_error.h"
#include "data/sql_dialect.h"

namespace selvane {

Database& TransactionSource::database() const {
  if (!database_) throw DatabaseError(file_name_, "no term database is open");
  return *database_;
}

void TransactionSource::Open(const std::filesystem::path& path) {
  Close();
  database_.emplace(Database::Open(path, OpenMode::kReadOnly));
  file_name_ = path;
}

void TransactionSource::Close() {
  cursor_.reset();
  database_.reset();
}

void TransactionSource::ListTables(std::vector<std::string>& names) const {
  for (TableDefinition& table : database().Tables()) {
    if (table.attributes == 0) names.push_back(std::move(table.name));
  }
}

void TransactionSource::ListItemFields(std::string_view table, std::vector<std::string>& names) const {
  std::vector<Field> fields = database().Fields(table);
  names.clear();
  for (std::size_t i = 1; i < fields.size(); ++i) names.push_back(std::move(fields[i].name));
}

int TransactionSource::FieldCount(std::string_view table) const {
  try {
    return static_cast<int>(database().Fields(table).size());
  } catch (const DatabaseError&) {
    throw SilentAbort();
  } catch (const std::bad_alloc&) {
    throw SilentAbort();
  }
}

long TransactionSource::CountRows(std::string_view table) const {
  return database().RecordCount(table);
}

long TransactionSource::RecordCount(std::string_view table) const {
  try {
    return CountRows(table);
  } catch (const DatabaseError&) {
    throw SilentAbort();
  } catch (const std::bad_alloc&) {
    throw SilentAbort();
  }
}

// A word behind a blank would be read as another name for the table before it.
void TransactionSource::CheckTableName(std::string_view table) const {
  if (SqlDialect::IsPlainName(table)) return;
  throw DatabaseError(file_name_,
                      fmt::format("the table name \"{}\" holds blanks or signs; rename the table with "
                                  "letters, digits and underscores only",
                                  table));
}

bool TransactionSource::OpenReader(std::string_view table, RowValues& row) {
  CheckTableName(table);
  cursor_.emplace(database().OpenRecordset(fmt::format("SELECT * from {}", table)));
  cursor_->Int16Row(row);
  return true;
}

bool TransactionSource::NextRow(RowValues& row) {
  if (!cursor_) throw DatabaseError(file_name_, "no reading is open");
  row.clear();
  cursor_->MoveNext();
  if (cursor_->AtEnd()) {
    cursor_.reset();
    return false;
  }
  cursor_->Int16Row(row);
  return true;
}

void TransactionSource::ItemRowIds(std::string_view table, int position, std::vector<std::uint16_t>& ids,
                                   std::string& field_name) const {
  CheckTableName(table);
  ids.clear();
  const std::vector<Field> fields = database().Fields(table);
  if (position < 0 || position >= static_cast<int>(fields.size())) {
    throw DatabaseError(file_name_, fmt::format("table \"{}\" has no column {}", table, position));
  }
  const Field& field = fields[static_cast<std::size_t>(position)];
  field_name = field.name;
  if (field.type == FieldType::kUnknown) {
    throw DatabaseError(file_name_, fmt::format("column \"{}\" holds neither numbers nor text", field_name));
  }
  std::string bracketed;
  for (const char c : field_name) bracketed.append(c == ']' ? 2 : 1, c);
  const char* const one = field.type == FieldType::kText ? "'1'" : "1";
  Recordset rows =
      database().OpenRecordset(fmt::format("select Index from {} where [{}] = {}", table, bracketed, one));
  for (; !rows.AtEnd(); rows.MoveNext()) ids.push_back(static_cast<std::uint16_t>(rows.Int16(0)));
}

}  // namespace selvane
