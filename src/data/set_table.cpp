#include "data/set_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_set>

#include "base/error.h"
#include "base/text.h"
#include "data/database_error.h"
#include "data/row_set.h"

namespace selvane {

namespace {

// Columns are named in brackets throughout: the engine takes a name in double quotes that is no column for a
// text.
Statement FindSet(const Database& database, std::string_view table) {
  return {database.connection(),
          fmt::format(R"(SELECT [Rows] FROM {} WHERE [Block] = ? AND [Term] = ?)", DoubleQuoted(table))};
}

bool IsNamed(const Database& database, std::string_view table) {
  if (!database.HasTable("sys_Sets")) return false;
  Statement find(database.connection(), R"(SELECT 1 FROM "sys_Sets" WHERE [Table] = ? COLLATE NOCASE)");
  find.BindText(0, table);
  return find.Step();
}

// A set is looked up for each term and block; without the key each would be a walk over the table.
bool HasKey(const Database& database, std::string_view table) {
  Statement list(database.connection(), "SELECT name FROM pragma_table_info(?) WHERE pk > 0 ORDER BY pk");
  list.BindText(0, table);
  std::string names;
  while (list.Step()) names.append(LowerCase(list.ColumnText(0))).append(" ");
  return names == "block term ";
}

}  // namespace

bool SetTable::IsOne(const Database& database, std::string_view table) {
  if (IsNamed(database, table)) return true;
  if (!database.HasTable(table)) return false;
  std::string names;
  for (const Field& field : database.Fields(table)) names.append(LowerCase(field.name)).append(" ");
  return names == "block term rows ";
}

SetTable::SetTable(const Database& database, std::string_view table)
    : connection_(database.connection()), table_(table), find_set_(FindSet(database, table)) {
  if (!IsNamed(database, table)) Fail("the table sys_Sets, which names its terms, does not name them");
  if (!HasKey(database, table)) Fail("its primary key must be of the columns Block and Term");
  ReadNames();
  CheckBlocks();
}

void SetTable::Fail(std::string_view reason) const {
  throw DatabaseError(
      connection_->path,
      fmt::format("table {} is damaged: {}; use a copy of the file, or build it again", table_, reason));
}

void SetTable::ReadNames() {
  Statement list(connection_, R"(SELECT [Term], [Name], [Rows] FROM "sys_Sets"
                                 WHERE [Table] = ? COLLATE NOCASE ORDER BY [Term])");
  list.BindText(0, table_);
  std::unordered_set<std::string> seen;
  for (std::int64_t position = 0; list.Step(); ++position) {
    if (list.ColumnInteger(0) != position) Fail(fmt::format("sys_Sets does not name term {}", position));
    const std::int64_t rows = list.ColumnInteger(2);
    if (rows < 0 || rows > (position == 0 ? std::int64_t{kMostSetRows} : rows_)) {
      Fail(fmt::format("sys_Sets gives term {} {} rows", position, rows));
    }
    if (position == 0) {
      rows_ = static_cast<std::uint32_t>(rows);
      continue;
    }
    std::string name(list.ColumnText(1));
    if (!seen.insert(name).second) Fail(fmt::format("sys_Sets names the term \"{}\" twice", name));
    names_.push_back(std::move(name));
    counts_.push_back(static_cast<std::uint32_t>(rows));
  }
}

std::uint32_t SetTable::BlockCount() const {
  return rows_ / kRowsOfBlock + 1;
}

// Blocks that are never asked for would be rows lost.
void SetTable::CheckBlocks() const {
  Statement ends(connection_,
                 fmt::format(R"(SELECT (SELECT min([Block]) FROM {0}), (SELECT max([Block]) FROM {0}))",
                             DoubleQuoted(table_)));
  ends.Step();
  if (ends.ColumnInteger(0) >= 0 && ends.ColumnInteger(1) < BlockCount()) return;
  Fail(fmt::format("it has rows outside of 1..{}", rows_));
}

void SetTable::AppendSet(std::string_view bytes, std::uint32_t block, std::size_t position,
                         std::vector<std::uint32_t>& rows) const {
  const std::size_t before = rows.size();
  const std::string& name = names_[position - 1];
  try {
    AppendRows(bytes, block, rows);
  } catch (const InputError& error) {
    Fail(fmt::format("term \"{}\", block {}: {}", name, block, error.what()));
  }
  // They ascend.
  for (const std::uint32_t row : {rows[before], rows.back()}) {
    if (row == 0 || row > rows_)
      Fail(fmt::format("term \"{}\" has row {}, outside of 1..{}", name, row, rows_));
  }
}

void SetTable::RowsOf(std::uint32_t position, std::vector<std::uint32_t>& rows) const {
  rows.clear();
  for (std::uint32_t block = 0; block < BlockCount(); ++block) {
    find_set_.BindInteger(0, block);
    find_set_.BindInteger(1, position);
    if (find_set_.Step()) AppendSet(find_set_.ColumnBytes(0), block, position, rows);
    find_set_.Reset();
  }
  const std::uint32_t stated = counts_[position - 1];
  if (rows.size() != stated) {
    Fail(fmt::format("term \"{}\" has {} rows, and sys_Sets states {}", names_[position - 1], rows.size(),
                     stated));
  }
}

void SetTable::TermsOf(std::uint32_t block, std::vector<std::vector<std::uint32_t>>& terms) const {
  terms.resize(kRowsOfBlock);
  for (std::vector<std::uint32_t>& row : terms) row.clear();
  Statement sets(connection_,
                 fmt::format(R"(SELECT [Term], [Rows] FROM {} WHERE [Block] = ? ORDER BY [Term])",
                             DoubleQuoted(table_)));
  sets.BindInteger(0, block);
  std::vector<std::uint32_t> rows;
  while (sets.Step()) {
    const std::int64_t position = sets.ColumnInteger(0);
    if (position < 1 || position > static_cast<std::int64_t>(names_.size())) {
      Fail(fmt::format("it has a set of term {}, which sys_Sets does not name", position));
    }
    rows.clear();
    AppendSet(sets.ColumnBytes(1), block, static_cast<std::size_t>(position), rows);
    for (const std::uint32_t row : rows)
      terms[row % kRowsOfBlock].push_back(static_cast<std::uint32_t>(position));
  }
}

bool SetTableRows::Next(std::vector<std::uint32_t>& values) {
  if (row_ == table_->rows()) return false;
  ++row_;
  if (block_.empty() || row_ % kRowsOfBlock == 0) table_->TermsOf(row_ / kRowsOfBlock, block_);
  values.assign(table_->names().size() + 1, 0);
  values[0] = row_;
  for (const std::uint32_t position : block_[row_ % kRowsOfBlock]) values[position] = 1;
  return true;
}

}  // namespace selvane
