// Reads a term table: one row per abstract, one column or one set of rows per term.
#pragma once

#include <climits>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "data/database.h"
#include "data/pulse_scope.h"
#include "data/recordset.h"
#include "data/set_table.h"

namespace selvane {

// The values of one row: element 0 is the row id, element j is 1 exactly when item j is present. In a table
// of rows each is a 16-bit signed integer kept in 32 bits, so -1 is 0xFFFFFFFF; in one of sets a row id has
// 32 bits.
using RowValues = std::vector<std::uint32_t>;

// A term database, opened read-only and, where nothing else is asked for, exclusively, with one reader at a
// time. Its tables have either of two forms, which are read alike: a row for each abstract, or a set of rows
// for each term. Columns are counted from 0; column 0 is the row id and never an item. Failures are
// DatabaseErrors unless another error is named.
class TransactionSource {
 public:
  void Open(const std::filesystem::path& path, OpenMode mode = OpenMode::kReadOnly);
  // Lets this work be stopped while the engine is busy.
  PulseScope PulseDuring(Progress& progress) const { return {database(), progress}; }
  bool IsOpen() const { return database_.has_value(); }
  const std::filesystem::path& file_name() const { return file_name_; }

  // Appends the name of every ordinary table, in the database's own order.
  void ListTables(std::vector<std::string>& names) const;
  // Replaces `names` by those of the columns from 1 on; the name of item j is element j - 1.
  void ListItemFields(std::string_view table, std::vector<std::string>& names) const;
  // The number of all columns, and of all rows. Any failure is a SilentAbort.
  int FieldCount(std::string_view table) const;
  long RecordCount(std::string_view table) const;

  // The number of all rows, with the reason where that cannot be told.
  long CountRows(std::string_view table) const;

  // True for a table of sets. Its rows are numbered from 1 on without a gap, as many as there are, and asking
  // for the rows of an item is quicker than reading row by row, which makes rows of the sets.
  bool IsOfSets(std::string_view table) const { return Sets(table) != nullptr; }

  // Starts reading and delivers the first row; an earlier reading is abandoned. The name of the table goes
  // into the SQL text as it is, so one with blanks or signs fails here and in ItemRowIds. Fails on an empty
  // table: it has no first row.
  bool OpenReader(std::string_view table, RowValues& row);
  // Delivers the next row; false behind the last one, which ends the reading.
  bool NextRow(RowValues& row);

  // Replaces `ids` by the row ids of the rows in which the column is exactly 1, or exactly the text '1', in
  // the order of the table; ids of 16 bits are without a sign. Fails on a column that is neither a number nor
  // text. Asking for one column after the other reads several of them at a time.
  void ItemRowIds(std::string_view table, int position, std::vector<std::uint32_t>& ids,
                  std::string& field_name) const;

  void Close();

 private:
  Database& database() const;
  void CheckTableName(std::string_view table) const;
  // The table as one of sets; nullptr for one of rows.
  std::shared_ptr<const SetTable> Sets(std::string_view table) const;
  // The answers for some neighbouring columns of a table, read in one walk over its rows: a walk for each
  // column would pass over the columns before it every time.
  struct RowIdsAhead {
    std::string table;
    std::vector<Field> fields;
    int last_asked = INT_MAX;
    int first = 0;
    std::vector<std::vector<std::uint16_t>> ids;  // of the columns from `first` on
  };
  void ReadAhead(int first) const;

  std::filesystem::path file_name_;
  mutable std::optional<Database> database_;
  std::optional<Recordset> cursor_;
  // The table that was asked for last, and its sets where it has any.
  mutable std::string known_table_;
  mutable std::shared_ptr<const SetTable> sets_;
  std::optional<SetTableRows> set_rows_;
  mutable RowIdsAhead ahead_;
};

}  // namespace selvane
