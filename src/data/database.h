// One database file: opened exclusively, driven by the system's SQL texts.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "data/table_definition.h"

namespace selvane {

class BulkInsert;
class Recordset;
class Statement;
struct Connection;
struct TranslatedSql;

// kShared: to read, beside others that read. The other modes have the file to themselves.
enum class OpenMode { kReadOnly, kWritable, kShared };

// The locale text of every file that the system creates: general sort order, code page 1252.
inline constexpr std::string_view kGeneralLocale = ";LANGID=0x0409;CP=1252;COUNTRY=0";

// An open database file. While it is open no other opener, in this process or another, can open the file, but
// that those who share it can be many.
// Every operation throws DatabaseError when it fails, with what was complete before left in the file.
class Database {
 public:
  // Makes a new, empty database file. Fails when the file is there already, unless it holds nothing: a file
  // in the making is there before it is a database.
  static Database Create(const std::filesystem::path& path, std::string_view locale = kGeneralLocale);
  // Opens an existing file. Fails when there is none, it is no database, or somebody has it open.
  static Database Open(const std::filesystem::path& path, OpenMode mode);

  // True for a file that is a database, open elsewhere or not.
  static bool IsOne(const std::filesystem::path& path);
  // Opens one whose place another file is to take, and locks it without changing it: what a crash or another
  // program has left in a journal or log beside it is brought in, and these files are gone.
  static Database OpenToReplace(const std::filesystem::path& path);

  Database(Database&&) noexcept;
  Database& operator=(Database&&) noexcept;
  ~Database();
  // Frees the file. Result sets that are still open keep it until they end.
  void Close();
  const std::filesystem::path& path() const;

  // All tables in the order in which they were made; ordinary ones have the attribute word 0.
  std::vector<TableDefinition> Tables() const;
  bool HasTable(std::string_view table) const;
  // The fields in column order. Fails when there is no such table.
  std::vector<Field> Fields(std::string_view table) const;
  long RecordCount(std::string_view table) const;

  // Widths and ranges of the fields are enforced by the file itself. Fields have no default but the empty
  // text.
  void CreateTable(std::string_view table, std::span<const Field> fields);
  // A table of sets (data/set_table_writer.h), and the one that names the terms of all such tables.
  void CreateSetTable(std::string_view table);
  void AddField(std::string_view table, const Field& field);
  void CreateIndex(std::string_view table, std::string_view field);
  void DropIndexes(std::string_view table);

  // Runs a statement that returns no rows.
  void Execute(std::string_view sql);
  // Opens a result over an SQL text, standing on its first row.
  Recordset OpenRecordset(std::string_view sql);
  // The same, for a result of which rows are to be added, changed or removed. Fails unless it is one over
  // columns of one table: distinct rows or a count, for instance, are no rows of a table.
  Recordset OpenEditable(std::string_view sql);
  // For many rows of one table: values go in without an SQL text for each.
  BulkInsert OpenBulkInsert(std::string_view table, std::span<const std::string> fields);
  // Copies all rows of one table into an empty one of the same fields.
  void CopyRows(std::string_view from, std::string_view to);

  // Saved queries: a name and an SQL text kept in the file.
  void CreateQuery(std::string_view name, std::string_view sql = {});
  bool HasQuery(std::string_view name) const;
  void SetQuery(std::string_view name, std::string_view sql);
  std::string QueryText(std::string_view name) const;
  void ExecuteQuery(std::string_view name);

  // What we note of the file itself: a name and a text, in a table of our own that is not listed.
  void SetNote(std::string_view name, std::string_view text);
  std::optional<std::string> FindNote(std::string_view name) const;

  // Low-level access for the classes of this folder.
  const std::shared_ptr<Connection>& connection() const { return connection_; }

 private:
  explicit Database(std::shared_ptr<Connection> connection);
  TranslatedSql Translate(std::string_view sql) const;
  Statement Prepare(std::string_view sql);
  std::shared_ptr<Connection> connection_;
};

// All changes made during its life are kept by Commit, or undone at its end. One at a time for a database.
class Transaction {
 public:
  explicit Transaction(Database& database);
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction();
  void Commit();

 private:
  std::shared_ptr<Connection> connection_;
  bool open_ = true;
};

}  // namespace selvane
