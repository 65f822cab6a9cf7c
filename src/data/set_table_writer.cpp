#include "data/set_table_writer.h"

#include <fmt/format.h>

#include <unordered_set>

#include "base/error.h"
#include "base/text.h"
#include "data/row_set.h"

namespace selvane {

namespace {

std::vector<std::string> Checked(std::span<const std::string> names) {
  std::unordered_set<std::string_view> seen;
  for (const std::string& name : names) {
    if (seen.insert(name).second) continue;
    throw InputError(
        fmt::format("the term \"{}\" stands twice among the terms of the table; prune it or its category and "
                    "build again",
                    name));
  }
  return {names.begin(), names.end()};
}

BulkInsert MakeTable(Database& database, const std::string& table) {
  database.CreateSetTable(table);
  return database.OpenBulkInsert(table, std::vector<std::string>{"Block", "Term", "Rows"});
}

}  // namespace

SetTableWriter::SetTableWriter(Database& database, std::string_view table, std::span<const std::string> terms)
    : database_(database),
      table_(table),
      names_(Checked(terms)),
      counts_(terms.size(), 0),
      block_(terms.size()),
      insert_(MakeTable(database, table_)) {}

void SetTableWriter::AddRow(std::span<const std::uint32_t> terms) {
  if (rows_ == kMostSetRows) {
    throw InputError(fmt::format(
        "a term table of sets holds {} rows; choose fewer files, or build several databases", kMostSetRows));
  }
  if (++rows_ % kRowsOfBlock == 0) WriteBlock();
  for (const std::uint32_t term : terms) {
    std::vector<std::uint32_t>& rows = block_[term];
    if (!rows.empty() && rows.back() == rows_) continue;  // it stands twice in the list
    rows.push_back(rows_);
    ++counts_[term];
  }
}

// Called when the first row behind the block comes, or there is none.
void SetTableWriter::WriteBlock() {
  for (std::size_t term = 0; term < block_.size(); ++term) {
    std::vector<std::uint32_t>& rows = block_[term];
    if (rows.empty()) continue;
    insert_.Set(0, static_cast<std::int64_t>(rows.front() / kRowsOfBlock));
    insert_.Set(1, static_cast<std::int64_t>(term) + 1);
    insert_.SetBytes(2, EncodeRows(rows));
    insert_.Insert();
    rows.clear();
  }
}

void SetTableWriter::Finish() {
  WriteBlock();
  BulkInsert names =
      database_.OpenBulkInsert("sys_Sets", std::vector<std::string>{"Table", "Term", "Name", "Rows"});
  const auto add = [&](std::int64_t position, std::string_view name, std::uint32_t rows) {
    names.Set(0, table_);
    names.Set(1, position);
    names.Set(2, name);
    names.Set(3, std::int64_t{rows});
    names.Insert();
  };
  add(0, "Index", rows_);
  for (std::size_t term = 0; term < names_.size(); ++term) {
    add(static_cast<std::int64_t>(term) + 1, names_[term], counts_[term]);
  }
}

}  // namespace selvane
