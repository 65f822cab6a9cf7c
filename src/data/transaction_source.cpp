#include "data/transaction_source.h"

#include <fmt/format.h>

#include <algorithm>
#include <new>
#include <utility>

#include "base/text.h"
#include "data/database_error.h"
#include "data/sql_dialect.h"

namespace selvane {

Database& TransactionSource::database() const {
  if (!database_) throw DatabaseError(file_name_, "no term database is open");
  return *database_;
}

void TransactionSource::Open(const std::filesystem::path& path, OpenMode mode) {
  Close();
  database_.emplace(Database::Open(path, mode));
  file_name_ = path;
}

// In this order: cursors and sets keep the file open.
void TransactionSource::Close() {
  cursor_.reset();
  set_rows_.reset();
  sets_.reset();
  known_table_.clear();
  ahead_ = {};
  database_.reset();
}

void TransactionSource::ListTables(std::vector<std::string>& names) const {
  for (TableDefinition& table : database().Tables()) {
    if (table.attributes == 0) names.push_back(std::move(table.name));
  }
}

void TransactionSource::ListItemFields(std::string_view table, std::vector<std::string>& names) const {
  if (const auto sets = Sets(table)) {
    names = sets->names();
    return;
  }
  std::vector<Field> fields = database().Fields(table);
  names.clear();
  for (std::size_t i = 1; i < fields.size(); ++i) names.push_back(std::move(fields[i].name));
}

int TransactionSource::FieldCount(std::string_view table) const {
  try {
    if (const auto sets = Sets(table)) return static_cast<int>(sets->names().size()) + 1;
    return static_cast<int>(database().Fields(table).size());
  } catch (const DatabaseError&) {
    throw SilentAbort();
  } catch (const std::bad_alloc&) {
    throw SilentAbort();
  }
}

long TransactionSource::CountRows(std::string_view table) const {
  if (const auto sets = Sets(table)) return static_cast<long>(sets->rows());
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

std::shared_ptr<const SetTable> TransactionSource::Sets(std::string_view table) const {
  if (known_table_ != table || table.empty()) {
    known_table_.clear();
    sets_.reset();
    if (SetTable::IsOne(database(), table)) sets_ = std::make_shared<SetTable>(database(), table);
    known_table_ = table;
  }
  return sets_;
}

bool TransactionSource::OpenReader(std::string_view table, RowValues& row) {
  CheckTableName(table);
  cursor_.reset();
  set_rows_.reset();
  if (const auto sets = Sets(table)) {
    set_rows_.emplace(sets);
    if (!set_rows_->Next(row)) throw DatabaseError(file_name_, "there is no current row");
    return true;
  }
  cursor_.emplace(database().OpenRecordset("SELECT * from " + SqlDialect::NameText(table)));
  cursor_->Int16Row(row);
  return true;
}

bool TransactionSource::NextRow(RowValues& row) {
  if (!cursor_ && !set_rows_) throw DatabaseError(file_name_, "no reading is open");
  row.clear();
  if (set_rows_) {
    if (set_rows_->Next(row)) return true;
    set_rows_.reset();
    return false;
  }
  cursor_->MoveNext();
  if (cursor_->AtEnd()) {
    cursor_.reset();
    return false;
  }
  cursor_->Int16Row(row);
  return true;
}

namespace {

constexpr std::size_t kColumnsAhead = 128;

// The column as SQL, and the value that says that a row has the item.
std::string Bracketed(const Field& field) {
  std::string text = "[";
  for (const char c : field.name) text.append(c == ']' ? 2 : 1, c);
  return text + ']';
}

const char* OneOf(const Field& field) {
  return field.type == FieldType::kText ? "'1'" : "1";
}

}  // namespace

// Leaves nothing read where a row cannot be read in this way; asking for the one column then says why.
void TransactionSource::ReadAhead(int first) const {
  ahead_.first = first;
  ahead_.ids.clear();
  const auto begin = static_cast<std::size_t>(first);
  const std::size_t end = std::min(ahead_.fields.size(), begin + kColumnsAhead);
  std::string sql = "select Index";
  std::vector<bool> is_text;
  for (std::size_t i = begin; i < end; ++i) {
    const Field& field = ahead_.fields[i];
    if (field.type == FieldType::kUnknown) break;
    sql += ',' + Bracketed(field);
    is_text.push_back(field.type == FieldType::kText);
  }
  std::vector<std::vector<std::uint16_t>> ids(is_text.size());
  try {
    std::vector<std::size_t> places;
    for (Recordset rows = database().OpenRecordset(sql + " from " + SqlDialect::NameText(ahead_.table));
         !rows.AtEnd(); rows.MoveNext()) {
      rows.FindOnes(is_text, places);
      if (places.empty()) continue;
      const auto id = static_cast<std::uint16_t>(rows.Int16(0));
      for (const std::size_t place : places) ids[place].push_back(id);
    }
  } catch (const DatabaseError&) {
    return;
  }
  ahead_.ids = std::move(ids);
}

void TransactionSource::ItemRowIds(std::string_view table, int position, std::vector<std::uint32_t>& ids,
                                   std::string& field_name) const {
  CheckTableName(table);
  ids.clear();
  if (const auto sets = Sets(table)) {
    if (position < 1 || position > static_cast<int>(sets->names().size())) {
      throw DatabaseError(file_name_, fmt::format("table {} has no term {}", table, position));
    }
    field_name = sets->names()[static_cast<std::size_t>(position) - 1];
    sets->RowsOf(static_cast<std::uint32_t>(position), ids);
    return;
  }
  if (ahead_.table != table) {
    std::vector<Field> fields = database().Fields(table);
    ahead_ = {};
    ahead_.fields = std::move(fields);
    ahead_.table = table;
    const auto is_index = [](const Field& field) { return LowerCase(field.name) == "index"; };
    if (std::none_of(ahead_.fields.begin(), ahead_.fields.end(), is_index)) {
      ahead_ = {};
      throw DatabaseError(file_name_, fmt::format("table {} has no column Index for the numbers of its rows; "
                                                  "give its first column this name",
                                                  table));
    }
  }
  if (position < 0 || position >= static_cast<int>(ahead_.fields.size())) {
    throw DatabaseError(file_name_, fmt::format("table \"{}\" has no column {}", table, position));
  }
  const Field& field = ahead_.fields[static_cast<std::size_t>(position)];
  field_name = field.name;
  if (field.type == FieldType::kUnknown) {
    throw DatabaseError(file_name_,
                        fmt::format("column \"{}\" of table {} holds neither numbers nor text; declare it as "
                                    "SMALLINT, or make a table without it",
                                    field_name, table));
  }
  const auto is_ahead = [this, position] {
    return position >= ahead_.first && position < ahead_.first + static_cast<int>(ahead_.ids.size());
  };
  // Reading ahead pays only for callers that go through the columns; any other is answered one by one.
  if (position > std::exchange(ahead_.last_asked, position) && !is_ahead()) ReadAhead(position);
  if (is_ahead()) {
    const std::vector<std::uint16_t>& known = ahead_.ids[static_cast<std::size_t>(position - ahead_.first)];
    ids.assign(known.begin(), known.end());
    return;
  }
  Recordset rows = database().OpenRecordset(fmt::format(
      "select Index from {} where {} = {}", SqlDialect::NameText(table), Bracketed(field), OneOf(field)));
  for (; !rows.AtEnd(); rows.MoveNext()) ids.push_back(static_cast<std::uint16_t>(rows.Int16(0)));
}

}  // namespace selvane
