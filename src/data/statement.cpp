#include "data/statement.h"

#include <sqlite3.h>

#include <new>
#include <system_error>
#include <utility>

#include "base/shown_text.h"
#include "data/database_error.h"

namespace selvane {

void SqliteCloser::operator()(sqlite3* connection) const noexcept {
  sqlite3_close_v2(connection);
}

void StatementFinalizer::operator()(sqlite3_stmt* statement) const noexcept {
  sqlite3_finalize(statement);
}

StatementHandle StatementCache::Take(std::string_view text) {
  const auto found = by_text_.find(text);
  if (found == by_text_.end()) return nullptr;
  // It leaves the cache, so that two results over one text never share a statement.
  StatementHandle statement = std::move(found->second->statement);
  entries_.erase(found->second);
  by_text_.erase(found);
  return statement;
}

// Given by destructors, which must not fail: without memory for the entry the statement is let go.
void StatementCache::Give(std::string_view text, StatementHandle statement) noexcept {
  if (by_text_.contains(text)) return;  // a second one of the same text is not worth keeping
  bool is_entered = false;
  try {
    entries_.push_front({std::string(text), std::move(statement)});
    is_entered = true;
    by_text_.emplace(entries_.front().text, entries_.begin());
  } catch (const std::bad_alloc&) {
    if (is_entered) entries_.pop_front();
    return;
  }
  if (entries_.size() > capacity_) {
    by_text_.erase(entries_.back().text);
    entries_.pop_back();
  }
}

void StatementCache::Clear() {
  by_text_.clear();
  entries_.clear();
}

namespace {

// The words of the system for what it refused last, in brackets and with a blank before them.
std::string SystemWords(sqlite3* connection) {
  const int error = sqlite3_system_errno(connection);
  return error == 0 ? std::string() : " (" + std::error_code(error, std::generic_category()).message() + ")";
}

// The engine's words end in the name of the check that failed, which for ours is that of the column.
std::string ReasonOfConstraint(std::string_view words) {
  constexpr std::string_view kFailed = "failed: ";
  const std::size_t found = words.find(kFailed);
  const std::string column =
      found == std::string_view::npos ? "" : " for " + Shortened(words.substr(found + kFailed.size()));
  return "a value" + column + " is too long, out of range or there already; correct it and try again";
}

// What is wrong and what to do about it. The engine's own words stay for what a user cannot do anything
// about.
std::string ReasonOf(sqlite3* connection) {
  const std::string words = Shortened(sqlite3_errmsg(connection));
  switch (sqlite3_errcode(connection) & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return "the file is open elsewhere; close the other program or window and try again";
    case SQLITE_NOTADB:
      return "the file is not a database; choose another one";
    case SQLITE_CORRUPT:
      return "the file is damaged; use a copy, or make it anew";
    case SQLITE_FULL:
      return "the disk is full; make room and try again";
    case SQLITE_READONLY:
      if (sqlite3_extended_errcode(connection) == SQLITE_READONLY_ROLLBACK) {
        return "a program was stopped while it changed the file; let somebody open it once who may write to "
               "it";
      }
      return "the file or its folder is write-protected; copy the file to a folder of your own";
    case SQLITE_CANTOPEN:
      return "the file, or the journal beside it, cannot be opened" + SystemWords(connection) +
             "; check the permissions of the file and of its folder";
    case SQLITE_IOERR:
      return "reading or writing the file failed" + SystemWords(connection) +
             "; check the disk and try again";
    case SQLITE_TOOBIG:
      return "a value is larger than 64 MB; the file is damaged, or another program made it";
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
      return ReasonOfConstraint(sqlite3_errmsg(connection));
    case SQLITE_ERROR:
      return "the file does not hold what is looked for (" + words + "); choose another one, or make it anew";
    default:
      return "the file cannot be used (" + words + "); use a copy, or make it anew";
  }
}

}  // namespace

void Connection::Fail(std::string_view statement) {
  if (stopped_by) std::rethrow_exception(std::exchange(stopped_by, nullptr));
  const int code = sqlite3_extended_errcode(handle.get());
  if (code == SQLITE_IOERR_NOMEM || (code & 0xFF) == SQLITE_NOMEM) throw std::bad_alloc();
  throw DatabaseError(path, ReasonOf(handle.get()), statement);
}

void Connection::Run(const char* sql, std::string_view shown) {
  if (sqlite3_exec(handle.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) Fail(shown);
}

Statement::Statement(std::shared_ptr<Connection> connection, std::string_view text, std::string_view shown)
    : connection_(std::move(connection)), text_(text), shown_(shown.empty() ? text : shown) {
  handle_ = connection_->cache.Take(text_);
  if (handle_) return;
  sqlite3_stmt* raw = nullptr;
  const char* tail = nullptr;
  const int status =
      sqlite3_prepare_v3(connection_->handle.get(), text_.c_str(), static_cast<int>(text_.size() + 1),
                         SQLITE_PREPARE_PERSISTENT, &raw, &tail);
  handle_.reset(raw);
  if (status != SQLITE_OK) connection_->Fail(shown_);
  if (raw == nullptr) throw DatabaseError(connection_->path, "the SQL text is empty", shown_);
  if (!Trimmed(tail).empty() && Trimmed(tail) != ";") {
    throw DatabaseError(connection_->path, "the SQL text holds more than one statement", shown_);
  }
}

// A statement that is kept must hold neither a lock on its table nor the values of a row.
Statement::~Statement() {
  if (!handle_) return;
  sqlite3_reset(handle_.get());
  sqlite3_clear_bindings(handle_.get());
  connection_->cache.Give(text_, std::move(handle_));
}

void Statement::Bind(int parameter, const Variant& value) {
  if (const auto* text = value.AsText()) return BindText(parameter, *text);
  if (const auto* integer = value.AsInteger()) return BindInteger(parameter, *integer);
  const auto* real = value.AsReal();
  const int status = real != nullptr ? sqlite3_bind_double(handle_.get(), parameter + 1, *real)
                                     : sqlite3_bind_null(handle_.get(), parameter + 1);
  if (status != SQLITE_OK) connection_->Fail(shown_);
}

void Statement::BindText(int parameter, std::string_view text) {
  // An empty view may point nowhere, which the engine would bind as null.
  if (sqlite3_bind_text64(handle_.get(), parameter + 1, text.empty() ? "" : text.data(), text.size(),
                          SQLITE_TRANSIENT, SQLITE_UTF8) != SQLITE_OK) {
    connection_->Fail(shown_);
  }
}

void Statement::BindInteger(int parameter, std::int64_t value) {
  if (sqlite3_bind_int64(handle_.get(), parameter + 1, value) != SQLITE_OK) connection_->Fail(shown_);
}

void Statement::BindBytes(int parameter, std::string_view bytes) {
  if (sqlite3_bind_blob64(handle_.get(), parameter + 1, bytes.empty() ? "" : bytes.data(), bytes.size(),
                          SQLITE_TRANSIENT) != SQLITE_OK) {
    connection_->Fail(shown_);
  }
}

bool Statement::Step() {
  const int status = sqlite3_step(handle_.get());
  if (status == SQLITE_ROW) return true;
  if (status != SQLITE_DONE) connection_->Fail(shown_);
  return false;
}

void Statement::Execute() {
  while (Step()) {
  }
  Reset();
}

void Statement::Reset() {
  sqlite3_reset(handle_.get());
}

int Statement::ColumnCount() const {
  return sqlite3_column_count(handle_.get());
}

std::string Statement::ColumnName(int column) const {
  const char* const name = sqlite3_column_name(handle_.get(), column);
  if (name == nullptr) throw std::bad_alloc();
  return name;
}

Variant Statement::Column(int column) const {
  switch (sqlite3_column_type(handle_.get(), column)) {
    case SQLITE_NULL:
      return {};
    case SQLITE_INTEGER:
      return ColumnInteger(column);
    case SQLITE_FLOAT:
      return sqlite3_column_double(handle_.get(), column);
    default:
      return ColumnText(column);
  }
}

std::string_view Statement::ColumnText(int column) const {
  const unsigned char* text = sqlite3_column_text(handle_.get(), column);
  if (text == nullptr) {
    // Null, or a number for whose text there was no memory.
    if (sqlite3_errcode(connection_->handle.get()) == SQLITE_NOMEM) throw std::bad_alloc();
    return {};
  }
  const auto length = static_cast<std::size_t>(sqlite3_column_bytes(handle_.get(), column));
  return {reinterpret_cast<const char*>(text), length};
}

std::int64_t Statement::ColumnInteger(int column) const {
  return sqlite3_column_int64(handle_.get(), column);
}

// Asking for them as text would convert them to the encoding of the file.
std::string_view Statement::ColumnBytes(int column) const {
  const void* bytes = sqlite3_column_blob(handle_.get(), column);
  if (bytes == nullptr) return {};
  const auto length = static_cast<std::size_t>(sqlite3_column_bytes(handle_.get(), column));
  return {static_cast<const char*>(bytes), length};
}

// Asks for each value once and converts nothing that is a small integer already, as nearly all values are.
int Statement::AppendInt16s(int first, std::vector<std::uint32_t>& values) const {
  const int columns = ColumnCount();
  for (int column = first; column < columns; ++column) {
    sqlite3_value* const value = sqlite3_column_value(handle_.get(), column);
    if (sqlite3_value_type(value) != SQLITE_INTEGER) return column;
    const std::int64_t wide = sqlite3_value_int64(value);
    const auto narrow = static_cast<std::int16_t>(wide);
    if (narrow != wide) return column;
    values.push_back(static_cast<std::uint32_t>(narrow));
  }
  return columns;
}

// The comparisons are those of the engine's = without its conversions: 1 and 1.0 are a number one, '01' is
// not the text '1', and null is nothing.
void Statement::FindOnes(int first, const std::vector<bool>& is_text,
                         std::vector<std::size_t>& places) const {
  for (std::size_t i = 0; i < is_text.size(); ++i) {
    sqlite3_value* const value = sqlite3_column_value(handle_.get(), first + static_cast<int>(i));
    bool is_one = false;
    switch (sqlite3_value_type(value)) {
      case SQLITE_INTEGER:
        is_one = !is_text[i] && sqlite3_value_int64(value) == 1;
        break;
      case SQLITE_FLOAT:
        is_one = !is_text[i] && sqlite3_value_double(value) == 1.0;
        break;
      case SQLITE_TEXT:
        is_one = is_text[i] && sqlite3_value_bytes(value) == 1 && *sqlite3_value_text(value) == '1';
        break;
      default:
        break;
    }
    if (is_one) places.push_back(i);
  }
}

}  // namespace selvane
