// Makes a term table of sets: the second form of a term table (docs/formats/term-database.md).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "data/bulk_insert.h"
#include "data/database.h"

namespace selvane {

// Takes the rows of a table one after the other and writes, for each block of 65,536 row numbers, the set of
// rows of each term. It holds one block at a time: four bytes for each term of each of its rows. Use it
// inside a Transaction; nothing is complete before Finish. Throws DatabaseError unless another error is
// named.
class SetTableWriter {
 public:
  // Makes the table in `database`, which must outlive this. Terms get the positions 1, 2, ... in their order.
  // Throws InputError where a name stands twice.
  SetTableWriter(Database& database, std::string_view table, std::span<const std::string> terms);

  // Adds the row 1, 2, 3, ...: the places in the list of terms, from 0, of those that it holds, in any order.
  // Throws InputError where there are more than kMostSetRows.
  void AddRow(std::span<const std::uint32_t> terms);
  // Writes what is left, and the names and counts, without which the table is none.
  void Finish();

  std::uint32_t rows() const { return rows_; }
  // For each term, the rows that hold it.
  std::span<const std::uint32_t> counts() const { return counts_; }

 private:
  void WriteBlock();

  Database& database_;
  std::string table_;
  std::vector<std::string> names_;
  std::vector<std::uint32_t> counts_;
  std::vector<std::vector<std::uint32_t>> block_;  // for each term, its rows in this block
  std::uint32_t rows_ = 0;
  BulkInsert insert_;
};

}  // namespace selvane
