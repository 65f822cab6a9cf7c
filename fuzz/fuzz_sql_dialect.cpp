#include <sqlite3.h>

#include "data/database.h"
#include "data/database_error.h"
#include "data/recordset.h"
#include "fuzzing.h"

using namespace selvane;

namespace {

int thousands_left = 0;  // of steps of the engine, for the input that runs

Database MakeDatabase(const std::filesystem::path& path) {
  Database database = Database::Create(path);
  const Field all[] = {{"INDEX", FieldType::kInt16}, {"a b", FieldType::kText, 9}, {"r", FieldType::kSingle}};
  database.CreateTable("t", all);
  database.Execute("INSERT INTO t VALUES (1,'C.23',0.5), (2,'D',1e30), (-3,'',-1)");
  sqlite3* const handle = database.connection()->handle.get();
  sqlite3_progress_handler(
      handle, 1000, [](void*) { return --thousands_left < 0 ? 1 : 0; }, nullptr);
  sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, 1'000'000);
  return database;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ScratchFolder kScratch;
  static Database database = MakeDatabase(kScratch.path / "x.mdb");
  const std::string_view sql = TextOf(data, size).substr(0, 512);
  thousands_left = 100;
  const Transaction undone_at_the_end(database);
  try {
    Require(SqlDialect::Translate(sql).text == SqlDialect::Translate(sql).text);
    Recordset rows = database.OpenRecordset(sql);
    for (int i = 0; i < 50 && !rows.AtEnd(); ++i, rows.MoveNext()) {
      for (int column = 0; column < rows.FieldCount(); ++column) rows.Value(column).ToText();
    }
  } catch (const InputError&) {
  } catch (const DatabaseError&) {
  }
  return 0;
}
