#include "data/recordset.h"

#include <fmt/format.h>

#include "base/error.h"
#include "base/text.h"
#include "data/database_error.h"

namespace selvane {

Recordset::Recordset(std::shared_ptr<Connection> connection, Statement statement, TranslatedSql source)
    : connection_(std::move(connection)), statement_(std::move(statement)), source_(std::move(source)) {
  at_end_ = !statement_.Step();
}

void Recordset::NeedRow() const {
  if (at_end_) throw DatabaseError(connection_->path, "there is no current row");
}

void Recordset::MoveNext() {
  NeedRow();
  at_end_ = !statement_.Step();
  ++moves_;
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
  return statement_.Column(position + first_column_);
}

Variant Recordset::Value(std::string_view name) const {
  return Value(PositionOf(name));
}

std::string_view Recordset::Text(int position) const {
  NeedRow();
  return statement_.ColumnText(position + first_column_);
}

template <typename Convert>
auto Recordset::Converted(int position, Convert convert) const {
  try {
    return convert(Value(position));
  } catch (const InputError& error) {
    throw DatabaseError(connection_->path,
                        fmt::format("field \"{}\": {}", FieldName(position), error.what()));
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
    const int read = statement_.AppendInt16s(first_column_ + static_cast<int>(values.size()), values);
    if (read >= statement_.ColumnCount()) return;
    values.push_back(
        static_cast<std::uint32_t>(Int16(read - first_column_)));  // text, a fraction, or an error
  }
}

void Recordset::FindOnes(const std::vector<bool>& is_text, std::vector<std::size_t>& places) const {
  NeedRow();
  places.clear();
  statement_.FindOnes(first_column_ + 1, is_text, places);
}

void Recordset::MakeEditable() {
  if (!table_.empty()) return;
  constexpr std::string_view kSelect = "SELECT ";
  const std::size_t from = source_.text.find(" FROM \"");
  if (!source_.text.starts_with(kSelect) || from == std::string::npos) {
    throw DatabaseError(connection_->path, "this result cannot be changed", source_.text);
  }
  const std::size_t name = from + std::string_view(" FROM ").size();
  std::size_t end = source_.text.find('"', name + 1);
  while (end + 1 < source_.text.size() && source_.text[end + 1] == '"') end = source_.text.find('"', end + 2);
  const std::string table = source_.text.substr(name, end - name + 1);

  std::string numbered = source_.text;
  numbered.insert(kSelect.size(), "rowid, ");
  Statement statement(connection_, numbered, source_.text);
  for (std::size_t i = 0; i < source_.values.size(); ++i)
    statement.Bind(static_cast<int>(i), source_.values[i]);
  bool row = statement.Step();
  for (std::int64_t i = 0; i < moves_ && row; ++i) row = statement.Step();
  statement_ = std::move(statement);
  at_end_ = !row;
  first_column_ = 1;
  table_ = table;
}

void Recordset::AddNew() {
  MakeEditable();
  editing_ = Editing::kNewRow;
  edited_.assign(static_cast<std::size_t>(FieldCount()), std::nullopt);
}

void Recordset::Edit() {
  NeedRow();
  MakeEditable();
  editing_ = Editing::kRow;
  edited_.assign(static_cast<std::size_t>(FieldCount()), std::nullopt);
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
}

void Recordset::Delete() {
  NeedRow();
  MakeEditable();
  editing_ = Editing::kNothing;
  Statement remove(connection_, fmt::format("DELETE FROM {} WHERE rowid = ?", table_));
  remove.BindInteger(0, RowNumber());
  remove.Execute();
}

}  // namespace selvane
