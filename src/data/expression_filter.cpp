#include "data/expression_filter.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include "base/error.h"
#include "base/text.h"
#include "data/database_error.h"

namespace selvane {

namespace {

// Reading the columns and calling the engine's own functions is all that an expression may do: no other
// table, no pragma, nothing that writes, whatever it smuggles in behind a bracket.
int Allow(void*, int action, const char* first, const char* second, const char*, const char*) {
  switch (action) {
    case SQLITE_SELECT:
      return SQLITE_OK;
    case SQLITE_READ:
      return first != nullptr && std::string_view(first) == "Figures" ? SQLITE_OK : SQLITE_DENY;
    case SQLITE_FUNCTION:
      return second != nullptr && std::string_view(second) != "load_extension" ? SQLITE_OK : SQLITE_DENY;
    default:
      return SQLITE_DENY;
  }
}

constexpr int kMostSteps = 100'000'000;  // of the engine's machine; an expression takes some tens a row

int StopEndless(void* rounds) {
  return ++*static_cast<int*>(rounds) > 1000 ? 1 : 0;
}

}  // namespace

ExpressionFilter::ExpressionFilter(std::span<const std::string> columns)
    : connection_(std::make_shared<Connection>()), columns_(columns.begin(), columns.end()) {
  sqlite3* raw = nullptr;
  const int status = sqlite3_open_v2(":memory:", &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
  connection_->handle.reset(raw);
  if (status != SQLITE_OK) connection_->Fail({});
  sqlite3_db_config(raw, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
  sqlite3_limit(raw, SQLITE_LIMIT_ATTACHED, 0);
  // A single function call counts as one step however many bytes it makes.
  sqlite3_limit(raw, SQLITE_LIMIT_LENGTH, 1'000'000);
  std::string fields;
  std::string marks;
  for (const std::string& column : columns_) {
    fields += "," + DoubleQuoted(column);
    marks += ",?";
  }
  connection_->Run(fmt::format("CREATE TABLE Figures(\"row number\" INTEGER PRIMARY KEY{})", fields).c_str(),
                   {});
  connection_->Run("BEGIN", {});
  insert_ = std::make_unique<Statement>(connection_, fmt::format("INSERT INTO Figures VALUES(?{})", marks));
}

void ExpressionFilter::AddRow(std::span<const Variant> values) {
  insert_->BindInteger(0, rows_++);
  for (std::size_t i = 0; i < values.size(); ++i) insert_->Bind(static_cast<int>(i) + 1, values[i]);
  insert_->Execute();
}

std::vector<std::size_t> ExpressionFilter::RowsWhere(std::string_view expression) {
  sqlite3* const raw = connection_->handle.get();
  int rounds = 0;
  sqlite3_set_authorizer(raw, Allow, nullptr);
  sqlite3_progress_handler(raw, kMostSteps / 1000, StopEndless, &rounds);
  try {
    // The line end keeps a comment in the expression from swallowing the bracket.
    Statement select(connection_,
                     fmt::format("SELECT \"row number\" FROM Figures WHERE ({}\n) ORDER BY 1", expression));
    std::vector<std::size_t> rows;
    while (select.Step()) rows.push_back(static_cast<std::size_t>(select.ColumnInteger(0)));
    return rows;
  } catch (const DatabaseError&) {
    // The engine's own words: there is no file that the error could speak of.
    throw InputError(fmt::format("\"{}\" cannot be tested: {}; the names it may hold are {}", expression,
                                 sqlite3_errmsg(raw), fmt::join(columns_, ", ")));
  }
}

}  // namespace selvane
