#include "data/database.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/file.h>

#include <system_error>

#include "base/file.h"
#include "base/new_file.h"
#include "data/bulk_insert.h"
#include "data/database_error.h"
#include "data/recordset.h"
#include "data/sql_dialect.h"
#include "data/statement.h"

namespace selvane {

namespace {

constexpr std::string_view kNoName = "no file was named; choose a database file and try again";

// An open connection, with the lock of a file that cannot be written to and so cannot be locked by the
// engine.
struct LockedConnection : Connection {
  FileDescriptor read_only_lock;
};

constexpr int kLargestValue = 64 << 20;  // bytes

// What a file brings along in its schema does nothing: no trigger runs, no view is read, and no function with
// an effect beyond its value is called. A name in double quotes that is no column is an error, never a text.
void Restrain(sqlite3* connection) {
  sqlite3_db_config(connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  for (const int option : {SQLITE_DBCONFIG_TRUSTED_SCHEMA, SQLITE_DBCONFIG_ENABLE_TRIGGER,
                           SQLITE_DBCONFIG_ENABLE_VIEW, SQLITE_DBCONFIG_DQS_DML, SQLITE_DBCONFIG_DQS_DDL}) {
    sqlite3_db_config(connection, option, 0, nullptr);
  }
  sqlite3_limit(connection, SQLITE_LIMIT_ATTACHED, 0);  // no SQL text reaches, or makes, another file
  sqlite3_limit(connection, SQLITE_LIMIT_LENGTH, kLargestValue);
  sqlite3_limit(connection, SQLITE_LIMIT_EXPR_DEPTH, 100);
  sqlite3_limit(connection, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 4096);
}

// The engine would take some names for something else: file:x for an address with options, :memory: for no
// file at all. Below a folder every name is a plain one.
std::filesystem::path PlainName(const std::filesystem::path& path) {
  return path.is_absolute() ? path : "." / path;
}

std::shared_ptr<LockedConnection> Connect(const std::filesystem::path& path, int flags) {
  auto connection = std::make_shared<LockedConnection>();
  connection->path = path;
  sqlite3* raw = nullptr;
  const int status = sqlite3_open_v2(PlainName(path).c_str(), &raw, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  connection->handle.reset(raw);
  if (status != SQLITE_OK) connection->Fail({});
  sqlite3_extended_result_codes(raw, 1);
  Restrain(raw);
  return connection;
}

// On a file that cannot be written to, the engine's lock keeps nobody out; this one keeps out our own
// programs.
void LockReadOnlyFile(LockedConnection& connection, int kind) {
  if (sqlite3_db_readonly(connection.handle.get(), "main") == 0) return;
  connection.read_only_lock =
      FileDescriptor(::open(PlainName(connection.path).c_str(), O_RDONLY | O_CLOEXEC));
  if (connection.read_only_lock.IsOpen() && ::flock(connection.read_only_lock.get(), kind | LOCK_NB) != 0) {
    throw DatabaseError(connection.path,
                        "the file is open elsewhere; close the other program or window and try again");
  }
}

// Takes the whole file for this connection until it is closed.
void LockWholeFile(LockedConnection& connection) {
  connection.Run("PRAGMA locking_mode=EXCLUSIVE; PRAGMA cache_size=-65536;", {});
  connection.Run("SELECT count(*) FROM sqlite_schema", {});
  if (sqlite3_db_readonly(connection.handle.get(), "main") == 0) {
    connection.Run("BEGIN EXCLUSIVE; COMMIT;", {});
  }
  LockReadOnlyFile(connection, LOCK_EX);
}

// Keeps writers out until the connection is closed: its one transaction reads, and never ends before.
void LockToRead(LockedConnection& connection) {
  // Somebody may be looking whether the file is free, or another reader be undoing what a crash has left.
  constexpr int kPatience = 500;  // milliseconds
  sqlite3_busy_timeout(connection.handle.get(), kPatience);
  connection.Run("PRAGMA cache_size=-65536; PRAGMA query_only=ON; BEGIN;", {});
  connection.Run("SELECT count(*) FROM sqlite_schema", {});
  LockReadOnlyFile(connection, LOCK_SH);
}

bool IsEmptyFile(const std::filesystem::path& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(std::filesystem::symlink_status(path, error)) &&
         std::filesystem::file_size(path, error) == 0;
}

}  // namespace

Database::Database(std::shared_ptr<Connection> connection) : connection_(std::move(connection)) {}
Database::Database(Database&&) noexcept = default;
Database& Database::operator=(Database&&) noexcept = default;
Database::~Database() = default;

void Database::Close() {
  connection_.reset();
}

const std::filesystem::path& Database::path() const {
  return connection_->path;
}

Database Database::Create(const std::filesystem::path& path, std::string_view locale) {
  if (path.empty()) throw DatabaseError(path, kNoName);
  if (IsTaken(path) && !IsEmptyFile(path)) throw DatabaseError(path, kTakenReason);
  // The engine says no more than that it cannot open the file.
  const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
  if (!std::filesystem::is_directory(folder)) {
    throw DatabaseError(path, "there is no such folder; make it first, or choose another one");
  }
  auto connection = Connect(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  // A new file needs no protection against a crash: its maker removes it when it is not complete.
  connection->Run("PRAGMA journal_mode=MEMORY; PRAGMA synchronous=OFF; PRAGMA encoding='UTF-8';");
  LockWholeFile(*connection);
  Database database(std::move(connection));
  database.connection_->Run(
      "CREATE TABLE \"sys_Locale\" (\"Locale\" TEXT);"
      "CREATE TABLE \"sys_Queries\" (\"Name\" TEXT PRIMARY KEY, \"Sql\" TEXT) WITHOUT ROWID;");
  Statement insert(database.connection_, "INSERT INTO \"sys_Locale\" VALUES (?)");
  insert.BindText(0, locale);
  insert.Execute();
  return database;
}

Database Database::Open(const std::filesystem::path& path, OpenMode mode) {
  if (path.empty()) throw DatabaseError(path, kNoName);
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) {
    throw DatabaseError(path, "there is no such file; check the name and the folder");
  }
  if (std::filesystem::is_directory(path, ignored)) {
    throw DatabaseError(path, "this is a folder; choose a database file");
  }
  // The engine would take an empty file for a new database and write to it.
  if (std::filesystem::file_size(path, ignored) == 0) {
    throw DatabaseError(path, "the file is empty, so it is not a database; choose another one");
  }
  // Also to read, as what a crash has left in a journal has to be undone first.
  auto connection = Connect(path, SQLITE_OPEN_READWRITE);
  if (mode == OpenMode::kShared) {
    LockToRead(*connection);
    return Database(std::move(connection));
  }
  LockWholeFile(*connection);
  if (mode == OpenMode::kReadOnly) {
    connection->Run("PRAGMA query_only=ON");
  } else if (sqlite3_db_readonly(connection->handle.get(), "main") != 0) {
    throw DatabaseError(path,
                        "the file is write-protected; copy it to a folder of your own and use the copy");
  }
  return Database(std::move(connection));
}

// Asked of the engine: were the file read beside it, closing it would free the locks that the engine holds on
// it for this process.
bool Database::IsOne(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error) || IsEmptyFile(path)) return false;
  const std::shared_ptr<LockedConnection> connection = Connect(path, SQLITE_OPEN_READONLY);
  sqlite3_exec(connection->handle.get(), "SELECT count(*) FROM sqlite_schema", nullptr, nullptr, nullptr);
  return sqlite3_errcode(connection->handle.get()) != SQLITE_NOTADB;
}

Database Database::OpenToReplace(const std::filesystem::path& path) {
  auto connection = Connect(path, SQLITE_OPEN_READWRITE);
  // In the engine's ordinary locking mode, as in the exclusive one a journal outlives its transaction.
  // Nothing is written, so the transaction makes no journal of its own.
  connection->Run("SELECT count(*) FROM sqlite_schema; PRAGMA journal_mode=DELETE; BEGIN EXCLUSIVE;", {});
  return Database(std::move(connection));
}

TranslatedSql Database::Translate(std::string_view sql) const {
  try {
    return SqlDialect::Translate(sql);
  } catch (const InputError& error) {
    throw DatabaseError(path(), error.what(), sql);
  }
}

Statement Database::Prepare(std::string_view sql) {
  const TranslatedSql translated = Translate(sql);
  Statement statement(connection_, translated.text, sql);
  for (std::size_t i = 0; i < translated.values.size(); ++i) {
    statement.Bind(static_cast<int>(i), translated.values[i]);
  }
  return statement;
}

void Database::Execute(std::string_view sql) {
  Prepare(sql).Execute();
}

Recordset Database::OpenRecordset(std::string_view sql) {
  return {connection_, Prepare(sql)};
}

Recordset Database::OpenEditable(std::string_view sql) {
  return Recordset::OpenEditable(connection_, Translate(sql));
}

BulkInsert Database::OpenBulkInsert(std::string_view table, std::span<const std::string> fields) {
  return BulkInsert(connection_, table, fields);
}

Transaction::Transaction(Database& database) : connection_(database.connection()) {
  connection_->Run("BEGIN");
}

Transaction::~Transaction() {
  // The engine may have undone everything by itself, on a full disk for one.
  if (open_ && sqlite3_get_autocommit(connection_->handle.get()) == 0) {
    sqlite3_exec(connection_->handle.get(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
}

void Transaction::Commit() {
  connection_->Run("COMMIT", {});
  open_ = false;
}

}  // namespace selvane
