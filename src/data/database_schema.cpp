// The part of Database that knows tables, fields, indexes and saved queries.
#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "base/text.h"
#include "data/database.h"
#include "data/database_error.h"
#include "data/statement.h"

namespace selvane {

namespace {

// Our own tables, which users are not to see. By their whole names: a table of theirs may begin like one.
constexpr std::array kOwnTables = std::to_array<std::string_view>({
    "sys_Locale",
    "sys_Queries",
    "sys_Notes",
    "sys_Sets",
    "sys_Documents",
    "sys_Texts",
    "sys_Marks",
    "sys_MarkTerms",
    "sys_Headings",
    "sys_EntryTerms",
    "sys_Supplementary",
});

// The declared type and the check that the file itself makes on every row, whoever writes it.
std::string Declaration(const Field& field) {
  const std::string name = DoubleQuoted(field.name);
  switch (field.type) {
    case FieldType::kInt16:
      return fmt::format("{0} SMALLINT CHECK ({0} BETWEEN -32768 AND 32767)", name);
    case FieldType::kInt32:
      return fmt::format("{0} INTEGER CHECK ({0} BETWEEN -2147483648 AND 2147483647)", name);
    case FieldType::kSingle:
      return fmt::format("{0} REAL CHECK ({0} BETWEEN -3.4028235e38 AND 3.4028235e38)", name);
    case FieldType::kBytes:
      return name + " BLOB";
    default:
      // An empty text is compared first: it is the common value of a wide table and costs no function call.
      return fmt::format("{0} VARCHAR({1}) DEFAULT '' CHECK ({0} = '' OR length({0}) <= {1})", name,
                         field.size);
  }
}

// Other programs declare what they like, and the engine takes any word for a type. As it does, the first part
// that is known decides, in this order: a SMALLINT is also an INT.
Field FieldOf(std::string name, std::string_view declared) {
  const std::string type = LowerCase(declared);
  const auto is = [&type](std::string_view part) { return type.find(part) != std::string::npos; };
  Field field{std::move(name), FieldType::kUnknown, 0};
  if (is("smallint") || is("int2")) {
    field.type = FieldType::kInt16;
  } else if (is("int")) {
    field.type = FieldType::kInt32;
  } else if (is("char") || is("text") || is("clob")) {
    field.type = FieldType::kText;
    const std::size_t open = type.find('(');
    const std::size_t close = type.find(')');
    if (open < close && close != std::string::npos) {
      field.size = Int32Of(type.substr(open + 1, close - open - 1)).value_or(0);
    }
  } else if (is("real") || is("floa") || is("doub") || is("num") || is("dec") || is("bool")) {
    field.type = FieldType::kSingle;
  }
  return field;
}

std::uint32_t AttributesOf(std::string_view name, std::string_view kind) {
  const bool is_own = std::find(kOwnTables.begin(), kOwnTables.end(), name) != kOwnTables.end();
  if (name.starts_with("sqlite_") || is_own) return kSystemTable;
  if (kind == "view" || kind == "virtual") return kLinkedTable;
  return kind == "shadow" ? kHiddenTable : 0;
}

}  // namespace

std::vector<TableDefinition> Database::Tables() const {
  Statement list(connection_,
                 "SELECT s.name, l.type FROM sqlite_schema s JOIN pragma_table_list l ON l.name = s.name "
                 "WHERE l.schema = 'main' AND s.type IN ('table', 'view') ORDER BY s.rowid");
  std::vector<TableDefinition> tables;
  while (list.Step()) {
    tables.push_back({std::string(list.ColumnText(0)), AttributesOf(list.ColumnText(0), list.ColumnText(1))});
  }
  return tables;
}

bool Database::HasTable(std::string_view table) const {
  Statement find(connection_,
                 "SELECT 1 FROM sqlite_schema WHERE type IN ('table', 'view') AND name = ? COLLATE NOCASE");
  find.BindText(0, table);
  return find.Step();
}

std::vector<Field> Database::Fields(std::string_view table) const {
  // With generated columns, which a result over all columns holds too.
  Statement list(connection_, "SELECT name, type FROM pragma_table_xinfo(?) WHERE hidden <> 1");
  list.BindText(0, table);
  std::vector<Field> fields;
  while (list.Step()) fields.push_back(FieldOf(std::string(list.ColumnText(0)), list.ColumnText(1)));
  if (fields.empty()) throw DatabaseError(path(), fmt::format("there is no table \"{}\"", table));
  return fields;
}

long Database::RecordCount(std::string_view table) const {
  // With a condition, as the engine's counting without one cannot be stopped.
  Statement count(connection_, fmt::format("SELECT count(*) FROM {} WHERE 1", DoubleQuoted(table)));
  count.Step();
  return static_cast<long>(count.ColumnInteger(0));
}

void Database::CreateTable(std::string_view table, std::span<const Field> fields) {
  std::string columns;
  for (const Field& field : fields) columns += (columns.empty() ? "" : ", ") + Declaration(field);
  // Not through the cache: a change of the schema is made once, and every kept statement is compiled anew
  // after it.
  connection_->Run(fmt::format("CREATE TABLE {} ({})", DoubleQuoted(table), columns).c_str());
}

// The key puts the sets of a block side by side, in the order in which a stream of rows gives them; a term
// whose name differs in capitals only is another term.
void Database::CreateSetTable(std::string_view table) {
  connection_->Run(fmt::format("CREATE TABLE {} (\"Block\" INTEGER NOT NULL, \"Term\" INTEGER NOT NULL, "
                               "\"Rows\" BLOB NOT NULL, PRIMARY KEY (\"Block\", \"Term\")) WITHOUT ROWID",
                               DoubleQuoted(table))
                       .c_str());
  connection_->Run(
      "CREATE TABLE IF NOT EXISTS \"sys_Sets\" (\"Table\" TEXT COLLATE NOCASE, \"Term\" INTEGER, "
      "\"Name\" TEXT NOT NULL, \"Rows\" INTEGER NOT NULL, PRIMARY KEY (\"Table\", \"Term\")) WITHOUT ROWID");
}

void Database::AddField(std::string_view table, const Field& field) {
  connection_->Run(
      fmt::format("ALTER TABLE {} ADD COLUMN {}", DoubleQuoted(table), Declaration(field)).c_str());
}

void Database::CreateIndex(std::string_view table, std::string_view field) {
  const std::string index = DoubleQuoted(fmt::format("{}_{}", table, field));
  connection_->Run(
      fmt::format("CREATE INDEX IF NOT EXISTS {} ON {} ({})", index, DoubleQuoted(table), DoubleQuoted(field))
          .c_str());
}

void Database::DropIndexes(std::string_view table) {
  // An index cannot be dropped while the list of indexes is being read.
  std::vector<std::string> names;
  {
    Statement list(connection_, "SELECT name FROM pragma_index_list(?) WHERE origin = 'c'");
    list.BindText(0, table);
    while (list.Step()) names.emplace_back(list.ColumnText(0));
  }
  for (const std::string& name : names) connection_->Run(("DROP INDEX " + DoubleQuoted(name)).c_str());
}

void Database::CopyRows(std::string_view from, std::string_view to) {
  connection_->Run(
      fmt::format("INSERT INTO {} SELECT * FROM {}", DoubleQuoted(to), DoubleQuoted(from)).c_str());
}

void Database::CreateQuery(std::string_view name, std::string_view sql) {
  Statement insert(connection_, "INSERT INTO \"sys_Queries\" VALUES (?, ?)");
  insert.BindText(0, name);
  insert.BindText(1, sql);
  insert.Execute();
}

bool Database::HasQuery(std::string_view name) const {
  if (!HasTable("sys_Queries")) return false;
  Statement find(connection_, "SELECT 1 FROM \"sys_Queries\" WHERE \"Name\" = ?");
  find.BindText(0, name);
  return find.Step();
}

void Database::SetQuery(std::string_view name, std::string_view sql) {
  Statement update(connection_, "UPDATE \"sys_Queries\" SET \"Sql\" = ? WHERE \"Name\" = ?");
  update.BindText(0, sql);
  update.BindText(1, name);
  update.Execute();
}

std::string Database::QueryText(std::string_view name) const {
  Statement find(connection_, "SELECT \"Sql\" FROM \"sys_Queries\" WHERE \"Name\" = ?");
  find.BindText(0, name);
  if (!find.Step()) throw DatabaseError(path(), fmt::format("there is no saved query \"{}\"", name));
  return std::string(find.ColumnText(0));
}

void Database::ExecuteQuery(std::string_view name) {
  Execute(QueryText(name));
}

void Database::SetNote(std::string_view name, std::string_view text) {
  connection_->Run(
      "CREATE TABLE IF NOT EXISTS \"sys_Notes\" (\"Name\" TEXT PRIMARY KEY, \"Text\" TEXT) WITHOUT ROWID");
  Statement insert(connection_, "INSERT OR REPLACE INTO \"sys_Notes\" VALUES (?, ?)");
  insert.BindText(0, name);
  insert.BindText(1, text);
  insert.Execute();
}

std::optional<std::string> Database::FindNote(std::string_view name) const {
  if (!HasTable("sys_Notes")) return std::nullopt;
  Statement find(connection_, "SELECT \"Text\" FROM \"sys_Notes\" WHERE \"Name\" = ?");
  find.BindText(0, name);
  if (!find.Step()) return std::nullopt;
  return std::string(find.ColumnText(0));
}

}  // namespace selvane
