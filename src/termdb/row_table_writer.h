// Makes a term table of rows: the first form of a term table (docs/formats/term-database.md).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/clock.h"
#include "data/bulk_insert.h"
#include "data/database.h"

namespace selvane {

// So many terms fit beside the row id; the engine ends at 2,000 columns.
inline constexpr std::size_t kMostTermColumns = 1990;

// What a term table made now is called.
std::string TermTableName(const Clock& clock);

// Throws InputError for names that cannot be columns side by side.
void CheckColumnNames(std::span<const std::string> names);

// Takes the rows of a table one after the other. Throws DatabaseError.
class RowTableWriter {
 public:
  // Makes the table, with a column for each name, in `database`, which must outlive this.
  RowTableWriter(Database& database, std::string_view table, std::span<const std::string> names);

  // Adds the row 1, 2, 3, ...: the places in the list of names, from 0, of the terms that it holds. For many
  // rows, use it inside a Transaction.
  void AddRow(std::span<const std::uint32_t> terms);
  std::int64_t rows() const { return rows_; }

 private:
  BulkInsert insert_;
  std::int64_t rows_ = 0;
  std::vector<std::uint32_t> set_;  // of the row before
};

}  // namespace selvane
