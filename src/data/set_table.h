// Reads term tables of sets (docs/formats/term-database.md). Used by TransactionSource.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "data/database.h"
#include "data/statement.h"

namespace selvane {

// A table of sets with its names. Whatever a file holds is checked when it is read, against what the table
// says of itself too, so that a block that is missing is told of and not taken for absent terms. Every
// operation throws DatabaseError.
class SetTable {
 public:
  // True for a table that sys_Sets names, and for one that looks like it: opening that says what is missing.
  static bool IsOne(const Database& database, std::string_view table);

  SetTable(const Database& database, std::string_view table);

  // Rows are numbered from 1 on without a gap; terms by their positions, from 1 on: the name of position p is
  // at place p - 1.
  std::uint32_t rows() const { return rows_; }
  const std::vector<std::string>& names() const { return names_; }

  // Replaces `rows` by the rows that hold the term, in ascending order.
  void RowsOf(std::uint32_t position, std::vector<std::uint32_t>& rows) const;
  // Replaces the entries of `terms` by the positions of the terms of each row of the block, ascending. There
  // are as many entries as a block has rows.
  void TermsOf(std::uint32_t block, std::vector<std::vector<std::uint32_t>>& terms) const;
  std::uint32_t BlockCount() const;

 private:
  void ReadNames();
  void CheckBlocks() const;
  void AppendSet(std::string_view bytes, std::uint32_t block, std::size_t position,
                 std::vector<std::uint32_t>& rows) const;
  [[noreturn]] void Fail(std::string_view reason) const;

  std::shared_ptr<Connection> connection_;
  std::string table_;
  std::uint32_t rows_ = 0;
  std::vector<std::string> names_;
  std::vector<std::uint32_t> counts_;  // for each name, the rows that sys_Sets states
  mutable Statement find_set_;
};

// The rows of a table of sets as values, one after the other.
class SetTableRows {
 public:
  explicit SetTableRows(std::shared_ptr<const SetTable> table) : table_(std::move(table)) {}
  // Replaces `values` by the number of the next row and a 1 or 0 for each term; false behind the last row.
  bool Next(std::vector<std::uint32_t>& values);

 private:
  std::shared_ptr<const SetTable> table_;
  std::uint32_t row_ = 0;
  std::vector<std::vector<std::uint32_t>> block_;
};

}  // namespace selvane
