#include "data/recordset.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/error.h"
#include "base/text.h"
#include "data/database_error.h"

namespace selvane {

namespace {

// The table and the fields of "SELECT fields FROM table ...", as they stand in a translated text, where names
// are in double quotes and one blank stands between two tokens.
struct SimpleSelect {
  std::string_view table;
  std::string_view fields;
};

std::string_view TakeToken(std::string_view& text) {
  std::size_t end = text.find(' ');
  if (text.starts_with('"')) {
    end = text.find('"', 1);
    while (text.substr(end + 1).starts_with('"')) end = text.find('"', end + 2);
    ++end;
  }
  const std::string_view token = text.substr(0, end);
  text.remove_prefix(std::min(token.size() + 1, text.size()));
  return token;
}

// Nothing for a result of which a row is not one row of one table: distinct or grouped rows, joined tables,
// computed fields.
std::optional<SimpleSelect> SimpleSelectOf(std::string_view text) {
  if (TakeToken(text) != "SELECT") return std::nullopt;
  SimpleSelect select;
  const char* const fields = text.data();
  for (std::string_view token = TakeToken(text); token != "FROM"; token = TakeToken(text)) {
    if (!token.starts_with('"') && token != "," && token != "*") return std::nullopt;
    select.fields = std::string_view(fields, static_cast<std::size_t>(token.data() - fields) + token.size());
  }
  select.table = TakeToken(text);
  if (!select.table.starts_with('"')) return std::nullopt;
  std::string_view token = TakeToken(text);
  if (!token.empty() && token != "WHERE" && token != "ORDER" && token != "LIMIT") return std::nullopt;
  while (!text.empty()) {
    token = TakeToken(text);
    if (token == "GROUP" || token == "HAVING") return std::nullopt;
  }
  return select;
}

[[noreturn]] void CannotBeChanged(const Connection& connection, std::string_view sql) {
  throw DatabaseError(connection.path, "this result cannot be changed", sql);
}

}  // namespace

Recordset::Recordset(std::shared_ptr<Connection> connection, Statement statement)
    : connection_(std::move(connection)), statement_(std::move(statement)) {
  at_end_ = !statement_.Step();
}

// The result carries the number of each row from the start: a row that is looked for later, by its place or
// by its values, is another one when rows before it are gone or rows are alike.
Recordset Recordset::OpenEditable(std::shared_ptr<Connection> connection, const TranslatedSql& source) {
  const std::optional<SimpleSelect> select = SimpleSelectOf(source.text);
  if (!select) CannotBeChanged(*connection, source.text);
  std::string numbered = source.text;
  numbered.insert(std::string_view("SELECT ").size(), "rowid, ");
  Statement statement(connection, numbered, source.text);
  for (std::size_t i = 0; i < source.values.size(); ++i) {
    statement.Bind(static_cast<int>(i), source.values[i]);
  }
  Recordset result(std::move(connection), std::move(statement));
  result.first_column_ = 1;
  result.table_ = select->table;
  result.fields_ = select->fields;
  return result;
}

void Recordset::NeedRow() const {
  if (at_end_) throw DatabaseError(connection_->path, "there is no current row");
}

void Recordset::MoveNext() {
  NeedRow();
  reread_.reset();
  at_end_ = !statement_.Step();
  editing_ = Editing::kNothing;
}

int Recordset::PositionOf(std::string_view name) const {
  const std::string wanted = LowerCase(name);
  for (int i = 0; i < FieldCount(); ++i) {
    if (LowerCase(FieldName(i)) == wanted) return i;
  }
  throw DatabaseError(connection_->path, fmt::format("there is no field \"{}\"", name));
}

Variant Recordset::Value(int position) const {
  NeedRow();
  return Row().Column(position + first_column_);
}

Variant Recordset::Value(std::string_view name) const {
  return Value(PositionOf(name));
}

std::string_view Recordset::Text(int position) const {
  NeedRow();
  return Row().ColumnText(position + first_column_);
}

std::string_view Recordset::Bytes(int position) const {
  NeedRow();
  return Row().ColumnBytes(position + first_column_);
}

template <typename Convert>
auto Recordset::Converted(int position, Convert convert) const {
  try {
    return convert(Value(position));
  } catch (const InputError& error) {
    throw DatabaseError(connection_->path,
                        fmt::format("field \"{}\": {}; correct it, or use a copy of the file",
                                    FieldName(position), error.what()));
  }
}

std::int16_t Recordset::Int16(int position) const {
  return Converted(position, [](const Variant& value) { return value.ToInt16(); });
}

std::int32_t Recordset::Int32(int position) const {
  if (const auto value = Int32Of(Text(position))) return *value;
  return Converted(position, [](const Variant& value) { return value.ToInt32(); });
}

void Recordset::Int16Row(std::vector<std::uint32_t>& values) const {
  NeedRow();
  values.clear();
  for (;;) {
    const int read = Row().AppendInt16s(first_column_ + static_cast<int>(values.size()), values);
    if (read >= statement_.ColumnCount()) return;
    values.push_back(
        static_cast<std::uint32_t>(Int16(read - first_column_)));  // text, a fraction, or an error
  }
}

void Recordset::FindOnes(const std::vector<bool>& is_text, std::vector<std::size_t>& places) const {
  NeedRow();
  places.clear();
  Row().FindOnes(first_column_ + 1, is_text, places);
}

void Recordset::NeedEditable() const {
  if (table_.empty()) throw DatabaseError(connection_->path, "this result was not opened for changes");
}

void Recordset::BeginEditing(Editing editing) {
  NeedEditable();
  editing_ = editing;
  edited_.assign(static_cast<std::size_t>(FieldCount()), std::nullopt);
}

void Recordset::AddNew() {
  BeginEditing(Editing::kNewRow);
}

void Recordset::Edit() {
  NeedRow();
  BeginEditing(Editing::kRow);
}

void Recordset::SetField(int position, const Variant& value) {
  if (editing_ == Editing::kNothing || position < 0 || position >= FieldCount()) {
    throw DatabaseError(connection_->path, "no row is being edited, or it has no such field");
  }
  edited_[static_cast<std::size_t>(position)] = value;
}

void Recordset::SetField(std::string_view name, const Variant& value) {
  SetField(PositionOf(name), value);
}

void Recordset::Update() {
  if (editing_ == Editing::kNothing) throw DatabaseError(connection_->path, "no row is being edited");
  const bool adding = editing_ == Editing::kNewRow;
  std::string names;
  std::string places;
  std::string changes;
  for (std::size_t i = 0; i < edited_.size(); ++i) {
    if (!edited_[i]) continue;
    const std::string name = DoubleQuoted(FieldName(static_cast<int>(i)));
    names += (names.empty() ? "" : ", ") + name;
    places += places.empty() ? "?" : ", ?";
    changes += (changes.empty() ? "" : ", ") + name + " = ?";
  }
  editing_ = Editing::kNothing;
  if (names.empty()) return;
  Statement change(connection_, adding ? fmt::format("INSERT INTO {} ({}) VALUES ({})", table_, names, places)
                                       : fmt::format("UPDATE {} SET {} WHERE rowid = ?", table_, changes));
  int parameter = 0;
  for (const auto& value : edited_) {
    if (value) change.Bind(parameter++, *value);
  }
  if (!adding) change.BindInteger(parameter, RowNumber());
  change.Execute();
  if (!adding) ReadAgain(RowNumber());
}

// A stepped statement holds the values of before the change.
void Recordset::ReadAgain(std::int64_t row_number) {
  Statement row(connection_, fmt::format("SELECT rowid, {} FROM {} WHERE rowid = ?", fields_, table_));
  row.BindInteger(0, row_number);
  if (!row.Step()) throw DatabaseError(connection_->path, "the row to change is not there any more");
  reread_ = std::move(row);
}

void Recordset::Delete() {
  NeedRow();
  NeedEditable();
  editing_ = Editing::kNothing;
  Statement remove(connection_, fmt::format("DELETE FROM {} WHERE rowid = ?", table_));
  remove.BindInteger(0, RowNumber());
  remove.Execute();
}

}  // namespace selvane
