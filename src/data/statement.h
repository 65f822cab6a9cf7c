// Compiled statements and the cache that keeps them. Used by this folder only.
#pragma once

#include <chrono>
#include <exception>
#include <filesystem>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/progress.h"
#include "base/text.h"
#include "data/variant.h"

struct sqlite3;
struct sqlite3_stmt;

namespace selvane {

struct SqliteCloser {
  void operator()(sqlite3* connection) const noexcept;
};
struct StatementFinalizer {
  void operator()(sqlite3_stmt* statement) const noexcept;
};
using ConnectionHandle = std::unique_ptr<sqlite3, SqliteCloser>;
using StatementHandle = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

// Keeps the statements that are not in use, by their text; the longest unused goes first.
class StatementCache {
 public:
  explicit StatementCache(std::size_t capacity = 64) : capacity_(capacity) {}
  // The kept statement of this text, now owned by the caller; empty when there is none.
  StatementHandle Take(std::string_view text);
  void Give(std::string_view text, StatementHandle statement) noexcept;
  void Clear();

 private:
  struct Entry {
    std::string text;
    StatementHandle statement;
  };
  std::size_t capacity_;
  std::list<Entry> entries_;  // most recently given first
  TextMap<std::list<Entry>::iterator> by_text_;
};

// An open connection with its cache and its path for messages; shared by a Database and what it handed out.
struct Connection {
  std::filesystem::path path;
  ConnectionHandle handle;
  StatementCache cache;
  // Of the innermost PulseScope: whom to ask, when that was done last, and what it threw in answer.
  Progress* progress = nullptr;
  std::chrono::steady_clock::time_point last_pulse;
  std::exception_ptr stopped_by;

  ~Connection() { cache.Clear(); }
  // Throws what a Progress has stopped a statement by, or else DatabaseError for the engine's latest failure;
  // std::bad_alloc when it had no memory.
  [[noreturn]] void Fail(std::string_view statement);
  // Runs SQL of the engine's own dialect, any number of statements. Throws DatabaseError.
  void Run(const char* sql) { Run(sql, sql); }
  // The same with another text, or none, for the message: what the user did not ask for is not shown.
  void Run(const char* sql, std::string_view shown);
};

// A statement borrowed from a connection, given back to the cache at the end of its life.
class Statement {
 public:
  // `text` is in the engine's dialect. Throws DatabaseError when it cannot be compiled.
  Statement(std::shared_ptr<Connection> connection, std::string_view text, std::string_view shown = {});
  Statement(Statement&&) noexcept = default;
  Statement& operator=(Statement&&) noexcept = default;
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement();

  // Parameters and columns are counted from 0. Bound text is copied.
  void Bind(int parameter, const Variant& value);
  void BindText(int parameter, std::string_view text);
  void BindInteger(int parameter, std::int64_t value);
  void BindBytes(int parameter, std::string_view bytes);
  // Moves to the next row; false at the end. Throws DatabaseError.
  bool Step();
  // Runs to the end and makes ready for the next run.
  void Execute();
  void Reset();
  int ColumnCount() const;
  std::string ColumnName(int column) const;
  Variant Column(int column) const;
  std::string_view ColumnText(int column) const;  // valid until the next step
  std::int64_t ColumnInteger(int column) const;
  std::string_view ColumnBytes(int column) const;  // of a BLOB, as they are; valid until the next step
  // Appends the values of the columns from `first` on while they are 16-bit integers, each widened with its
  // sign; returns the first column that is not, or the number of columns. Called for every row of a term
  // table.
  int AppendInt16s(int first, std::vector<std::uint32_t>& values) const;
  // Appends the places of the columns from `first` on, as many as `is_text` has entries, that are 1 or, where
  // they are text, exactly '1'.
  void FindOnes(int first, const std::vector<bool>& is_text, std::vector<std::size_t>& places) const;

 private:
  std::shared_ptr<Connection> connection_;
  std::string text_;
  std::string shown_;
  StatementHandle handle_;
};

}  // namespace selvane
