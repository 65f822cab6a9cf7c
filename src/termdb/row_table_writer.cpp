#include "termdb/row_table_writer.h"

#include <fmt/format.h>

#include <array>
#include <unordered_set>

#include "base/error.h"
#include "base/text.h"

namespace selvane {

namespace {

BulkInsert MakeTable(Database& database, std::string_view table, std::span<const std::string> names) {
  std::vector<Field> fields = {{"Index", FieldType::kInt16}};
  std::vector<std::string> columns = {"Index"};
  for (const std::string& name : names) {
    fields.push_back({name, FieldType::kInt16});
    columns.push_back(name);
  }
  database.CreateTable(table, fields);
  return database.OpenBulkInsert(table, columns);
}

}  // namespace

std::string TermTableName(const Clock& clock) {
  const std::tm time = clock.LocalTime();
  std::array<char, 32> text{};
  return std::string(text.data(), std::strftime(text.data(), text.size(), "%H_%M_%d_%m", &time)) +
         "_MESHTERMS";
}

// The engine takes names for equal that differ in capitals only, and would fail in its own words.
void CheckColumnNames(std::span<const std::string> names) {
  std::unordered_set<std::string> seen = {"index"};
  for (const std::string& name : names) {
    if (seen.insert(LowerCase(name)).second) continue;
    throw InputError(
        fmt::format("the term \"{}\" cannot be a column: there is a column of that name already, "
                    "capitals apart; prune the term or its category and build again",
                    name));
  }
}

RowTableWriter::RowTableWriter(Database& database, std::string_view table, std::span<const std::string> names)
    : insert_(MakeTable(database, table, names)) {
  // Values stay set from row to row.
  for (std::size_t i = 0; i < names.size(); ++i) insert_.Set(static_cast<int>(i) + 1, std::int64_t{0});
}

void RowTableWriter::AddRow(std::span<const std::uint32_t> terms) {
  // Only what the last row has set is set back, since a row holds few of the columns.
  for (const std::uint32_t term : set_) insert_.Set(static_cast<int>(term) + 1, std::int64_t{0});
  set_.assign(terms.begin(), terms.end());
  insert_.Set(0, ++rows_);
  for (const std::uint32_t term : set_) insert_.Set(static_cast<int>(term) + 1, std::int64_t{1});
  insert_.Insert();
}

}  // namespace selvane
