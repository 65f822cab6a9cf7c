// The rows that an SQL text selects, one at a time.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "data/sql_dialect.h"
#include "data/statement.h"
#include "data/variant.h"

namespace selvane {

// A result set, standing on a row or at the end. Fields are read by position (from 0) or by name, without
// regard to case. A result that was opened for changes (Database::OpenEditable) can be edited:
//   AddNew, SetField..., Update   adds a row;
//   Edit, SetField..., Update     changes the row it stands on, whatever became of other rows meanwhile; its
//                                 fields then read as they were stored;
//   Delete                        removes that row; MoveNext then goes on behind it.
// Every operation throws DatabaseError when it fails.
class Recordset {
 public:
  Recordset(std::shared_ptr<Connection> connection, Statement statement);
  // A result that can be edited. Throws DatabaseError unless it is one over the columns of one table.
  static Recordset OpenEditable(std::shared_ptr<Connection> connection, const TranslatedSql& source);

  bool AtEnd() const { return at_end_; }
  void MoveNext();
  int FieldCount() const { return statement_.ColumnCount() - first_column_; }
  std::string FieldName(int position) const { return statement_.ColumnName(position + first_column_); }
  Variant Value(int position) const;
  Variant Value(std::string_view name) const;
  // The text of a field without a copy, valid until the next move.
  std::string_view Text(int position) const;
  // The bytes of a BLOB in the same way.
  std::string_view Bytes(int position) const;
  // The field as a 16-bit integer; fails on a null value and on one that is no such number.
  std::int16_t Int16(int position) const;
  std::int32_t Int32(int position) const;
  // Replaces `values` by all fields of the row, each as Int16 gives it, widened with its sign.
  void Int16Row(std::vector<std::uint32_t>& values) const;
  // Replaces `places` by the places behind the first field, counted from 0, of the fields that are 1 or,
  // where `is_text` says so, exactly '1'. There are as many as it has entries.
  void FindOnes(const std::vector<bool>& is_text, std::vector<std::size_t>& places) const;

  void AddNew();
  void Edit();
  void SetField(int position, const Variant& value);
  void SetField(std::string_view name, const Variant& value);
  void Update();
  void Delete();

 private:
  enum class Editing { kNothing, kNewRow, kRow };

  void NeedRow() const;
  void NeedEditable() const;
  int PositionOf(std::string_view name) const;
  void BeginEditing(Editing editing);
  void ReadAgain(std::int64_t row_number);
  std::int64_t RowNumber() const { return statement_.ColumnInteger(0); }
  // What the fields are read from.
  const Statement& Row() const { return reread_ ? *reread_ : statement_; }
  template <typename Convert>
  auto Converted(int position, Convert convert) const;

  std::shared_ptr<Connection> connection_;
  Statement statement_;
  std::optional<Statement>
      reread_;  // the current row as it was stored by the last Update, until the next move
  bool at_end_ = false;
  int first_column_ = 0;  // 1 when column 0 is the row number of an editable result
  std::string table_;     // of an editable result, as SQL, like its fields
  std::string fields_;
  Editing editing_ = Editing::kNothing;
  std::vector<std::optional<Variant>> edited_;
};

}  // namespace selvane
